#include "X11SelectionWindow.h"

#include <QSocketNotifier>
#include <X11/Xlib.h>

X11SelectionWindow::X11SelectionWindow() = default;

X11SelectionWindow::~X11SelectionWindow() {
    m_notifier.reset();
    if (!m_display)
        return;
    XDestroyWindow(m_display, m_window);
    XCloseDisplay(m_display);
}

bool X11SelectionWindow::open(std::function<void()> readable) {
    if (m_display)
        return true;
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return false;
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask; // transfers in increments go through properties
    m_window = XCreateWindow(m_display, DefaultRootWindow(m_display), -10, -10, 1, 1, 0,
                             CopyFromParent, InputOnly, CopyFromParent, CWEventMask, &attributes);
    XSync(m_display, False);
    m_notifier = std::make_unique<QSocketNotifier>(ConnectionNumber(m_display),
                                                   QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, std::move(readable));
    return true;
}
