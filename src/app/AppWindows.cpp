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
    m_wereOpen.clear();
    const QList<QWidget*> windows = list();
    for (QWidget* window : windows) {
        if (window->isVisible())
            m_wereOpen.append(window);
        window->hide();
    }
}

void AppWindows::showAll() {
    QList<QPointer<QWidget>> windows = m_wereOpen;
    if (!m_inBackground) {
        windows.clear();
        const QList<QWidget*> all = list();
        for (QWidget* window : all)
            if (window->isVisible())
                windows.append(window);
    }
    m_inBackground = false;
    m_wereOpen.clear();
    if (m_mainWindow && !windows.contains(m_mainWindow))
        windows.prepend(m_mainWindow);
    for (QWidget* window : std::as_const(windows)) {
        if (window)
            bringForward(window);
    }
}

void AppWindows::bringForward(QWidget* window) {
    if (window->isMinimized())
        window->showNormal();
    else
        window->show();
    window->raise();
    window->activateWindow();
}
