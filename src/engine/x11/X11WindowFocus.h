#pragma once

#include "WindowFocus.h"

typedef struct _XDisplay Display;

// The X input focus, on a connection of its own (opened at the first question). Focus goes
// back through the window manager where one runs (_NET_ACTIVE_WINDOW, which also raises the
// window) and directly with XSetInputFocus, which is all there is without one.
class X11WindowFocus : public WindowFocus {
public:
    ~X11WindowFocus() override;
    quint64 focusedWindow() override;
    QRect frameOf(quint64 window) override;
    void focus(quint64 window) override;

private:
    bool connect();
    // The window the window manager knows (the one with WM_STATE) at or above `window`; 0 if none.
    unsigned long managedWindow(unsigned long window);

    Display* m_display = nullptr;
};
