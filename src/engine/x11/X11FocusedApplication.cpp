#include "X11FocusedApplication.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {
// The window may be gone or not yet mapped again: such a refusal is answered by asking
// focusedWindow() later, not by Xlib's default handler, which would end the program.
int ignoreError(Display*, XErrorEvent*) { return 0; }
} // namespace

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
    return focusedClass().value(1);
}

QStringList X11FocusedApplication::names() {
    QStringList parts = focusedClass();
    parts.removeAll(QString());
    return parts;
}

QStringList X11FocusedApplication::focusedClass() {
    if (!connect())
        return {};
    Window window = 0;
    int revertTo = 0;
    XGetInputFocus(m_display, &window, &revertTo);
    // Up from the focused window to the first one with a class; the root has none of interest.
    for (int depth = 0; window > PointerRoot && depth < 32; ++depth) {
        XClassHint hint{};
        if (XGetClassHint(m_display, window, &hint)) {
            const QStringList result{QString::fromLocal8Bit(hint.res_name),
                                     QString::fromLocal8Bit(hint.res_class)};
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

QRect X11FocusedApplication::frameOf(quint64 window) {
    if (!connect() || window == 0)
        return {};
    const auto previous = XSetErrorHandler(ignoreError);
    XWindowAttributes attributes{};
    Window child = 0;
    int x = 0, y = 0;
    const bool known = XGetWindowAttributes(m_display, window, &attributes) &&
                       XTranslateCoordinates(m_display, window, DefaultRootWindow(m_display), 0,
                                             0, &x, &y, &child);
    XSync(m_display, False);
    XSetErrorHandler(previous);
    return known ? QRect(x, y, attributes.width, attributes.height) : QRect();
}

unsigned long X11FocusedApplication::managedWindow(unsigned long window) {
    const Atom wmState = XInternAtom(m_display, "WM_STATE", False);
    for (int depth = 0; window != 0 && depth < 32; ++depth) {
        Atom type = None;
        int format = 0;
        unsigned long items = 0, after = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(m_display, window, wmState, 0, 0, False, AnyPropertyType, &type,
                               &format, &items, &after, &data) == Success) {
            if (data)
                XFree(data);
            if (type != None)
                return window;
        }
        Window root = 0, parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(m_display, window, &root, &parent, &children, &count))
            return 0;
        if (children)
            XFree(children);
        if (parent == root)
            return 0;
        window = parent;
    }
    return 0;
}

void X11FocusedApplication::focus(quint64 window) {
    if (!connect() || window == 0)
        return;
    const auto previous = XSetErrorHandler(ignoreError);
    const Window root = DefaultRootWindow(m_display);
    const Atom wmCheck = XInternAtom(m_display, "_NET_SUPPORTING_WM_CHECK", True);
    Atom type = None;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    const bool windowManager =
        wmCheck != None &&
        XGetWindowProperty(m_display, root, wmCheck, 0, 1, False, XA_WINDOW, &type, &format,
                           &items, &after, &data) == Success &&
        items == 1;
    if (data)
        XFree(data);
    if (const Window managed = windowManager ? managedWindow(window) : 0) {
        // Source 2: a request on the user's behalf (the insert window is their action).
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = managed;
        event.xclient.message_type = XInternAtom(m_display, "_NET_ACTIVE_WINDOW", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = 2;
        event.xclient.data.l[1] = CurrentTime;
        XSendEvent(m_display, root, False, SubstructureRedirectMask | SubstructureNotifyMask,
                   &event);
    }
    XSetInputFocus(m_display, window, RevertToParent, CurrentTime);
    XSync(m_display, False);
    XSetErrorHandler(previous);
}

QStringList X11FocusedApplication::windowClasses() {
    if (!connect())
        return {};
    const auto previous = XSetErrorHandler(ignoreError); // a window may close meanwhile
    const Window root = DefaultRootWindow(m_display);
    QList<Window> windows;
    const Atom clientList = XInternAtom(m_display, "_NET_CLIENT_LIST", True);
    Atom type = None;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    if (clientList != None &&
        XGetWindowProperty(m_display, root, clientList, 0, 4096, False, XA_WINDOW, &type, &format,
                           &items, &after, &data) == Success &&
        type == XA_WINDOW && format == 32) {
        const auto* listed = reinterpret_cast<const unsigned long*>(data);
        for (unsigned long i = 0; i < items; ++i)
            windows.append(listed[i]);
    }
    if (data)
        XFree(data);
    if (windows.isEmpty()) {
        // No window manager: the top-level windows that are shown.
        Window parent = 0, rootReturn = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (XQueryTree(m_display, root, &rootReturn, &parent, &children, &count)) {
            for (unsigned int i = 0; i < count; ++i) {
                XWindowAttributes attributes{};
                if (XGetWindowAttributes(m_display, children[i], &attributes) &&
                    attributes.map_state == IsViewable && !attributes.override_redirect)
                    windows.append(children[i]);
            }
        }
        if (children)
            XFree(children);
    }
    QStringList classes;
    for (const Window window : std::as_const(windows)) {
        XClassHint hint{};
        if (!XGetClassHint(m_display, window, &hint))
            continue;
        const QString name = QString::fromLocal8Bit(hint.res_class);
        if (!name.isEmpty() && !classes.contains(name))
            classes.append(name);
        XFree(hint.res_name);
        XFree(hint.res_class);
    }
    XSync(m_display, False);
    XSetErrorHandler(previous);
    classes.sort(Qt::CaseInsensitive);
    return classes;
}
