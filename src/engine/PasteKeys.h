#pragma once

#include <QString>

// Which keys make an application paste the clipboard, told by its window class (on X11 the
// class part of WM_CLASS). Most applications paste with Ctrl+V; terminal emulators keep Ctrl+V
// for the program running in them and paste with Ctrl+Shift+V; a few terminals have no paste
// keys for the clipboard at all, and a text is typed there.
class PasteKeys {
public:
    enum class Keys { ControlV, ControlShiftV, NoKeys };

    static Keys forApplication(const QString& windowClass);
};
