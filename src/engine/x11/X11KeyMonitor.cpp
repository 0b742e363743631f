#include "X11KeyMonitor.h"

#include "X11ConnectionLoss.h"

#include <QSocketNotifier>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

X11KeyMonitor::X11KeyMonitor(QObject* parent) : QObject(parent) {}

X11KeyMonitor::~X11KeyMonitor() {
    m_notifier.reset();
    if (m_display)
        XCloseDisplay(m_display);
}

void X11KeyMonitor::setKeymapChangedHandler(std::function<void()> handler) {
    m_keymapChanged = std::move(handler);
}

void X11KeyMonitor::setGroupChangedHandler(std::function<void(uint32_t)> handler) {
    m_groupChanged = std::move(handler);
}

bool X11KeyMonitor::start(KeyDownHandler handler) {
    if (m_display)
        return false; // started once already
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return false;
    X11ConnectionLoss::installHandlers();

    int event = 0, error = 0;
    // 2.2 asks for raw events even while another client holds a grab; 2.0 is enough otherwise.
    int major = 2, minor = 2;
    if (!XQueryExtension(m_display, "XInputExtension", &m_xiOpcode, &event, &error) ||
        XIQueryVersion(m_display, &major, &minor) != Success || major < 2) {
        XCloseDisplay(m_display);
        m_display = nullptr;
        return false;
    }

    unsigned char mask[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(mask, XI_RawKeyPress);
    XIEventMask eventMask{XIAllMasterDevices, sizeof mask, mask};
    XISelectEvents(m_display, DefaultRootWindow(m_display), &eventMask, 1);

    int xkbOpcode = 0, xkbError = 0, xkbMajor = XkbMajorVersion, xkbMinor = XkbMinorVersion;
    if (XkbQueryExtension(m_display, &xkbOpcode, &m_xkbEventType, &xkbError, &xkbMajor,
                          &xkbMinor)) {
        XkbSelectEvents(m_display, XkbUseCoreKbd, XkbNewKeyboardNotifyMask | XkbMapNotifyMask,
                        XkbNewKeyboardNotifyMask | XkbMapNotifyMask);
        XkbSelectEventDetails(m_display, XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask,
                              XkbGroupStateMask);
    } else {
        m_xkbEventType = -1;
    }
    XSync(m_display, False);

    m_keyDown = std::move(handler);
    m_notifier = std::make_unique<QSocketNotifier>(ConnectionNumber(m_display),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { readEvents(true); });
    // Events read while setting up would not wake the notifier.
    readEvents(true);
    return true;
}

void X11KeyMonitor::discardPendingKeys() {
    if (!m_display)
        return;
    // The round trip puts every event the server has produced so far into our queue.
    XSync(m_display, False);
    readEvents(false);
}

void X11KeyMonitor::readEvents(bool deliverKeys) {
    // XPending reads the socket, so a dead server surfaces here as an I/O error.
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == GenericEvent && event.xcookie.extension == m_xiOpcode) {
            if (!XGetEventData(m_display, &event.xcookie))
                continue;
            uint32_t keyCode = 0;
            if (event.xcookie.evtype == XI_RawKeyPress)
                keyCode = static_cast<uint32_t>(static_cast<XIRawEvent*>(event.xcookie.data)->detail);
            XFreeEventData(m_display, &event.xcookie);
            if (keyCode != 0 && deliverKeys && m_keyDown)
                m_keyDown(keyCode);
        } else if (m_xkbEventType >= 0 && event.type == m_xkbEventType) {
            const auto& xkb = reinterpret_cast<const XkbEvent&>(event);
            if (xkb.any.xkb_type == XkbStateNotify) {
                if (m_groupChanged)
                    m_groupChanged(static_cast<uint32_t>(xkb.state.group));
            } else if (xkb.any.xkb_type == XkbMapNotify ||
                       xkb.any.xkb_type == XkbNewKeyboardNotify) {
                if (m_keymapChanged)
                    m_keymapChanged();
            }
        } else if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.xmapping);
            if (m_keymapChanged)
                m_keymapChanged();
        }
    }
}
