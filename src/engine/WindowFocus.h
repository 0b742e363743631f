#pragma once

#include <QRect>
#include <QtGlobal>

// Which window has the keyboard focus, where it is, and a way to hand the focus back to it:
// the insert window takes the focus from the application the user was typing in and must
// return it before the snippet goes out.
class WindowFocus {
public:
    virtual ~WindowFocus() = default;

    // The window with the keyboard focus now; 0 when there is none or it cannot be told.
    virtual quint64 focusedWindow() = 0;
    // Where `window` is on the screen (desktop coordinates); empty when it cannot be told.
    virtual QRect frameOf(quint64 window) = 0;
    // Asks for the focus to go to `window`. It may take a moment, or be refused: ask
    // focusedWindow() to know.
    virtual void focus(quint64 window) = 0;
};
