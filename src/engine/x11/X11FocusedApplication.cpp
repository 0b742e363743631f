#include "X11FocusedApplication.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

X11FocusedApplication::~X11FocusedApplication() {
    if (m_display)
        XCloseDisplay(m_display);
}

bool X11FocusedApplication::connect() {
    return m_display || (m_display = XOpenDisplay(nullptr));
}

quint64 X11FocusedApplication::window() {
    if (!connect())
        return 0;
    Window window = 0;
    int revertTo = 0;
    XGetInputFocus(m_display, &window, &revertTo);
    return window > PointerRoot ? window : 0;
}

QString X11FocusedApplication::name() {
    if (!connect())
        return {};
    Window window = 0;
    int revertTo = 0;
    XGetInputFocus(m_display, &window, &revertTo);
    // Up from the focused window to the first one with a class; the root has none of interest.
    for (int depth = 0; window > PointerRoot && depth < 32; ++depth) {
        XClassHint hint{};
        if (XGetClassHint(m_display, window, &hint)) {
            const QString result = QString::fromLocal8Bit(hint.res_class);
            XFree(hint.res_name);
            XFree(hint.res_class);
            return result;
        }
        Window root = 0, parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(m_display, window, &root, &parent, &children, &count))
            return {};
        if (children)
            XFree(children);
        if (parent == root)
            return {};
        window = parent;
    }
    return {};
}
