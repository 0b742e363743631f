#pragma once

#include <QRect>

class QWidget;

// Where Typolet's small windows that serve another application (Insert Snippet, the fill-in
// form) appear: centred on the screen that holds the window the user was typing in, so that
// they open where the eyes are, whatever that window's size.
class WindowPlacement {
public:
    // Moves `window` (at its current size) to the centre of the screen holding `around`'s
    // centre; the primary screen when `around` is empty or off every screen.
    static void centreOnScreenOf(QWidget& window, const QRect& around);
};
