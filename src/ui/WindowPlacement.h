#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

// Where a small window that serves the application the user types in opens (the insert
// window, and any form it leads to): in the middle of the screen that holds that application's
// window, and whole on that screen.
class WindowPlacement {
public:
    // The top-left corner for a window of `size`. `around`: the frame of the window the user
    // was typing in; when it is empty or on no screen, the primary screen is used.
    static QPoint topLeft(QSize size, const QRect& around);
    // The same within `screen` (a screen's available area): centred, moved and cut to fit.
    static QPoint topLeftWithin(QSize size, const QRect& screen);
};
