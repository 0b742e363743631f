#pragma once

#include <QStringList>

// The windows open on the desktop now, for offering their applications by name (a category
// limited to some applications).
class OpenWindows {
public:
    virtual ~OpenWindows() = default;

    // The window class of each application with a window open (on X11 the class part of
    // WM_CLASS), each once, in alphabetical order.
    virtual QStringList windowClasses() = 0;
};
