#include "CapturedDiagnostics.h"

#include "Logging.h"

namespace {
CapturedDiagnostics* current = nullptr;
QtMessageHandler fallback = nullptr;

void capture(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (current && context.category && qstrncmp(context.category, "typolet.", 8) == 0)
        current->lines.append(text);
    else if (fallback)
        fallback(type, context, text);
}
} // namespace

CapturedDiagnostics::CapturedDiagnostics(bool typedLines) {
    Logging::setKeysEnabled(typedLines);
    current = this;
    m_previous = qInstallMessageHandler(capture);
    fallback = m_previous;
}

CapturedDiagnostics::~CapturedDiagnostics() {
    qInstallMessageHandler(m_previous);
    current = nullptr;
    Logging::setKeysEnabled(false);
}
