#include "WindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

void WindowPlacement::centreOnScreenOf(QWidget& window, const QRect& around) {
    QScreen* screen = around.isEmpty() ? nullptr : QGuiApplication::screenAt(around.center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    QRect frame(QPoint(), window.size());
    frame.moveCenter(screen->availableGeometry().center());
    window.move(frame.topLeft());
}
