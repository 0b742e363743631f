#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

// Where a small window that serves the application the user types in opens (the insert
// window, and any form it leads to): just below the text cursor when its place is known, so
// that the eyes need not leave the line being written; otherwise in the middle of the screen
// that holds that application's window. Always whole on that screen.
class WindowPlacement {
public:
    // The top-left corner for a window of `size`. `around`: the frame of the window the user
    // was typing in; when it is empty or on no screen, the primary screen is used. `caret`: the
    // text cursor in that window, empty when unknown; one outside `around` is taken for a
    // stale report about another window and left aside.
    static QPoint topLeft(QSize size, const QRect& around, const QRect& caret = {});
    // The same within `screen` (a screen's available area): centred, moved and cut to fit.
    static QPoint topLeftWithin(QSize size, const QRect& screen);
    // Below `caret`, left edges aligned; above it where the screen's bottom leaves no room;
    // centred on `screen` where neither side does. Moved sideways to stay on `screen`.
    static QPoint topLeftBeside(QSize size, const QRect& caret, const QRect& screen);

    // The space between the text cursor and the window, so that the line stays readable.
    static constexpr int caretGap = 4;
};
