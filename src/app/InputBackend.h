#pragma once

#include <QProcessEnvironment>
#include <QString>

// Which platform backend watches and types keys. In an X11 session the X server offers both;
// in a Wayland session one client cannot watch or type into another, so Typolet reads the
// kernel's input devices and types through a virtual keyboard (evdev). TYPOLET_BACKEND=x11 or
// =evdev overrides the choice.
class InputBackend {
public:
    enum class Kind { X11, Evdev };
    struct Choice {
        Kind kind = Kind::X11;
        QString reason; // why, for `typolet --check-input`
    };

    static Choice choose(const QProcessEnvironment& environment =
                             QProcessEnvironment::systemEnvironment());
    static QString name(Kind kind);
};
