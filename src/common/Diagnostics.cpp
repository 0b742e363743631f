#include "Diagnostics.h"

#include <cstdio>
#include <optional>

namespace {
std::optional<bool>& typedFlag() {
    static std::optional<bool> flag;
    return flag;
}

Diagnostics::Sink& sink() {
    static Diagnostics::Sink s;
    return s;
}
} // namespace

void Diagnostics::line(const QString& text) {
    if (sink()) {
        sink()(text);
        return;
    }
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void Diagnostics::typed(const QString& text) {
    if (typedEnabled())
        line(text);
}

bool Diagnostics::typedEnabled() {
    if (!typedFlag())
        typedFlag() = qEnvironmentVariable("TYPOLET_DIAGNOSTICS") == QLatin1String("1");
    return *typedFlag();
}

void Diagnostics::setTypedEnabled(bool enabled) { typedFlag() = enabled; }

void Diagnostics::setSink(Sink s) { sink() = std::move(s); }
