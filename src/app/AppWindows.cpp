#include "AppWindows.h"

#include <QApplication>
#include <QWidget>

QList<QWidget*> AppWindows::list() {
    QList<QWidget*> windows;
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    for (QWidget* widget : topLevels) {
        if (widget->parentWidget() != nullptr)
            continue;
        const Qt::WindowType type = widget->windowType();
        if (type != Qt::Window && type != Qt::Dialog)
            continue;
        // Never shown nor hidden on purpose: not a window the user has seen.
        if (!widget->testAttribute(Qt::WA_WState_ExplicitShowHide))
            continue;
        // Windows the window manager never sees, such as the tray icon's own window, which
        // lives embedded in the panel: hiding it would take the icon out of the tray, and
        // showing it on its own would put a stray window on screen.
        if (widget->windowFlags().testAnyFlags(Qt::BypassWindowManagerHint |
                                               Qt::X11BypassWindowManagerHint) ||
            widget->inherits("QSystemTrayIconSys"))
            continue;
        windows.append(widget);
    }
    return windows;
}

void AppWindows::hideAll() {
    m_inBackground = true;
    const QList<QWidget*> windows = list();
    for (QWidget* window : windows)
        window->hide();
}

void AppWindows::showAll() {
    m_inBackground = false;
    const QList<QWidget*> windows = list();
    for (QWidget* window : windows) {
        if (window->isMinimized())
            window->showNormal();
        else
            window->show();
        window->raise();
        window->activateWindow();
    }
}
