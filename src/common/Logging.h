#pragma once

#include <QLoggingCategory>

// Typolet's logging categories. Lines go through Qt's message handler (standard error),
// prefixed with their category.
//
// typolet.keys carries what the user typed (keys, buffer, matched snippet text). It is off
// unless TYPOLET_DIAGNOSTICS=1 is set or QT_LOGGING_RULES switches it on
// ("typolet.keys.info=true"), so by default nothing typed ever reaches a log.
Q_DECLARE_LOGGING_CATEGORY(lcEngine) // typolet.engine: the keyboard engine's state
Q_DECLARE_LOGGING_CATEGORY(lcKeys)   // typolet.keys: typed text, off by default
Q_DECLARE_LOGGING_CATEGORY(lcStore)  // typolet.store: loading and saving the library
Q_DECLARE_LOGGING_CATEGORY(lcApp)    // typolet.app: the application shell
Q_DECLARE_LOGGING_CATEGORY(lcStartup) // typolet.startup: how long each start-up step took, off by default

namespace Logging {
// Applies TYPOLET_DIAGNOSTICS and the message pattern; call once at start-up.
void configure();
// Switches the typed-text lines on or off from code (tests).
void setKeysEnabled(bool enabled);
// One line in typolet.startup (QT_LOGGING_RULES="typolet.startup.info=true"): `step`, with the
// monotonic clock in ms (the clock bench/startup_probe gives its exec time in) and the CPU
// time of the whole process so far.
void markStartup(const char* step);
} // namespace Logging
