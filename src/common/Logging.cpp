#include "Logging.h"

Q_LOGGING_CATEGORY(lcEngine, "typolet.engine", QtInfoMsg)
Q_LOGGING_CATEGORY(lcKeys, "typolet.keys", QtWarningMsg)
Q_LOGGING_CATEGORY(lcStore, "typolet.store", QtInfoMsg)
Q_LOGGING_CATEGORY(lcApp, "typolet.app", QtInfoMsg)

namespace Logging {
void configure() {
    if (qEnvironmentVariable("TYPOLET_DIAGNOSTICS") == QLatin1String("1"))
        setKeysEnabled(true);
    if (qEnvironmentVariableIsEmpty("QT_MESSAGE_PATTERN"))
        qSetMessagePattern(QStringLiteral("%{if-category}%{category}: %{endif}%{message}"));
}

void setKeysEnabled(bool enabled) {
    // QT_LOGGING_RULES, read after these rules, still has the last word.
    QLoggingCategory::setFilterRules(enabled ? QStringLiteral("typolet.keys.info=true")
                                             : QStringLiteral("typolet.keys.info=false"));
}
} // namespace Logging
