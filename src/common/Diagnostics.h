#pragma once

#include <QString>
#include <functional>

// Plain diagnostic lines on standard output: no prefix, no level, no timestamp.
//
// Lines that reveal what the user typed (keys, buffer contents, matched snippet text) go
// through typed(); they are written only when TYPOLET_DIAGNOSTICS=1 is in the environment,
// so by default nothing the user typed ever reaches a log.
class Diagnostics {
public:
    // Writes the line always.
    static void line(const QString& text);

    // Writes the line only when typed-key diagnostics are switched on.
    static void typed(const QString& text);

    // Whether typed() lines are written. Read from the environment on first use.
    static bool typedEnabled();
    static void setTypedEnabled(bool enabled);

    // Redirects every written line (tests capture them this way). An empty sink restores
    // standard output.
    using Sink = std::function<void(const QString&)>;
    static void setSink(Sink sink);
};
