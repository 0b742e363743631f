#pragma once

#include "FocusedApplication.h"
#include "OpenWindows.h"
#include "WindowFocus.h"

typedef struct _XDisplay Display;

// The class of the window that has the X input focus, or of its nearest ancestor that has
// one (toolkits often focus a child of the window the window manager knows). A connection of
// its own, opened at the first question.
//
// It also hands the focus back to a window (after the insert window): through the window
// manager where one runs (_NET_ACTIVE_WINDOW, which also raises the window) and directly with
// XSetInputFocus, which is all there is without one.
//
// It also lists the applications with windows open: the window manager's client list
// (_NET_CLIENT_LIST), or without a window manager the mapped top-level windows.
class X11FocusedApplication : public FocusedApplication, public WindowFocus, public OpenWindows {
public:
    ~X11FocusedApplication() override;
    QString name() override;
    QStringList names() override;
    quint64 window() override;

    quint64 focusedWindow() override { return window(); }
    QRect frameOf(quint64 window) override;
    void focus(quint64 window) override;

    QStringList windowClasses() override;

private:
    bool connect();
    // WM_CLASS of the focused window or of its nearest ancestor that has one: instance, class.
    QStringList focusedClass();
    // The window the window manager knows (the one with WM_STATE) at or above `window`; 0 if none.
    unsigned long managedWindow(unsigned long window);

    Display* m_display = nullptr;
};
