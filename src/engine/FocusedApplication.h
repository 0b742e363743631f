#pragma once

#include <QString>

// Which application has the keyboard focus, so that the user can keep Typolet out of some.
class FocusedApplication {
public:
    virtual ~FocusedApplication() = default;

    // The focused window's application class (on X11 the class part of WM_CLASS, such as
    // "XTerm" or "firefox"); empty when it cannot be told.
    virtual QString name() = 0;
};
