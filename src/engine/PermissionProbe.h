#pragma once

#include <QString>

// Asks the system whether the engine may do its two jobs. On X11 there is nothing to grant:
// the answers say whether a display with the needed extensions is there.
class PermissionProbe {
public:
    virtual ~PermissionProbe() = default;

    // Keys typed in other applications can be observed (XInput 2 on X11).
    virtual bool canObserveKeys() = 0;
    // Synthetic keys can be posted to other applications (XTEST on X11).
    virtual bool canPostKeys() = 0;

    // What is missing when the answer above is no, for the log line that says so.
    virtual QString observeProblem() const = 0;
    virtual QString postProblem() const = 0;
};
