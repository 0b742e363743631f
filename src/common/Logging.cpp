#include "Logging.h"

#include <ctime>

Q_LOGGING_CATEGORY(lcEngine, "typolet.engine", QtInfoMsg)
Q_LOGGING_CATEGORY(lcKeys, "typolet.keys", QtWarningMsg)
Q_LOGGING_CATEGORY(lcStore, "typolet.store", QtInfoMsg)
Q_LOGGING_CATEGORY(lcApp, "typolet.app", QtInfoMsg)
Q_LOGGING_CATEGORY(lcStartup, "typolet.startup", QtWarningMsg)

namespace Logging {
void configure() {
    if (qEnvironmentVariable("TYPOLET_DIAGNOSTICS") == QLatin1String("1"))
        setKeysEnabled(true);
    if (qEnvironmentVariableIsEmpty("QT_MESSAGE_PATTERN"))
        qSetMessagePattern(QStringLiteral("%{if-category}%{category}: %{endif}%{message}"));
}

void markStartup(const char* step) {
    if (!lcStartup().isInfoEnabled())
        return;
    timespec now{}, cpu{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
    qCInfo(lcStartup, "%.1f ms (CPU %.1f ms): %s", double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6,
           double(cpu.tv_sec) * 1e3 + double(cpu.tv_nsec) / 1e6, step);
}

void setKeysEnabled(bool enabled) {
    // QT_LOGGING_RULES, read after these rules, still has the last word.
    QLoggingCategory::setFilterRules(enabled ? QStringLiteral("typolet.keys.info=true")
                                             : QStringLiteral("typolet.keys.info=false"));
}
} // namespace Logging
