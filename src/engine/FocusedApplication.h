#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

// Which application and window have the keyboard focus: the user can keep Typolet out of some
// applications, and an erase goes only to the window whose text it is meant for.
class FocusedApplication {
public:
    virtual ~FocusedApplication() = default;

    // The focused window's application class (on X11 the class part of WM_CLASS, such as
    // "XTerm" or "firefox"); empty when it cannot be told.
    virtual QString name() = 0;

    // Every name the focused window's application goes by (on X11 both parts of WM_CLASS, as
    // `xprop WM_CLASS` shows them: "xterm", "XTerm"); empty when it cannot be told.
    virtual QStringList names() {
        const QString known = name();
        return known.isEmpty() ? QStringList() : QStringList{known};
    }

    // The window that has the keyboard focus now, as a number that differs between windows;
    // 0 where the platform cannot tell (an undo then trusts the keys alone).
    virtual quint64 window() { return 0; }
};
