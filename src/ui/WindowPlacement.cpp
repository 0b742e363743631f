#include "WindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace {
// The nearest start along one axis that keeps `length` within [low, high]; a window larger
// than the screen keeps its start, and so its title or search field, in view.
int keptWithin(int start, int length, int low, int high) {
    return std::max(low, std::min(start, high - length + 1));
}
} // namespace

QPoint WindowPlacement::topLeft(QSize size, const QRect& around, const QRect& caret) {
    const bool caretKnown = !caret.isEmpty() && (around.isEmpty() || around.intersects(caret));
    const QPoint anchor = caretKnown ? caret.center() : around.center();
    QScreen* screen = caretKnown || !around.isEmpty() ? QGuiApplication::screenAt(anchor) : nullptr;
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    const QRect area = screen->availableGeometry();
    if (caretKnown && area.intersects(caret))
        return topLeftBeside(size, caret, area);
    return topLeftWithin(size, area);
}

QPoint WindowPlacement::topLeftWithin(QSize size, const QRect& screen) {
    QRect frame(QPoint(), size);
    frame.moveCenter(screen.center());
    return {keptWithin(frame.left(), size.width(), screen.left(), screen.right()),
            keptWithin(frame.top(), size.height(), screen.top(), screen.bottom())};
}

QPoint WindowPlacement::topLeftBeside(QSize size, const QRect& caret, const QRect& screen) {
    const int x = keptWithin(caret.left(), size.width(), screen.left(), screen.right());
    const int below = caret.bottom() + 1 + caretGap;
    if (below + size.height() - 1 <= screen.bottom())
        return {x, below};
    const int above = caret.top() - caretGap - size.height();
    if (above >= screen.top())
        return {x, above};
    // Too tall for either side: it covers the cursor's line either way, so it goes where it
    // would without a cursor.
    return {x, topLeftWithin(size, screen).y()};
}
