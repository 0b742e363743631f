#include "WindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

QPoint WindowPlacement::topLeft(QSize size, const QRect& around) {
    QScreen* screen = around.isEmpty() ? nullptr : QGuiApplication::screenAt(around.center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return {};
    return topLeftWithin(size, screen->availableGeometry());
}

QPoint WindowPlacement::topLeftWithin(QSize size, const QRect& screen) {
    QRect frame(QPoint(), size);
    frame.moveCenter(screen.center());
    // A window larger than the screen keeps its top-left corner, and so its title, in view.
    const int x = std::max(screen.left(), std::min(frame.left(), screen.right() - size.width() + 1));
    const int y = std::max(screen.top(), std::min(frame.top(), screen.bottom() - size.height() + 1));
    return {x, y};
}
