#include "X11GlobalKey.h"

#include <QSocketNotifier>
#include <X11/Xlib.h>
#include <X11/keysym.h>

namespace {
// Whether a grab was refused since the flag was last cleared; Xlib reports it asynchronously.
bool grabRefused = false;
int noteRefusal(Display*, XErrorEvent* error) {
    if (error->error_code == BadAccess)
        grabRefused = true;
    return 0;
}

// The grab must hold whatever locks are on: Caps Lock and Num Lock are modifiers too.
constexpr unsigned int lockVariants[] = {0, LockMask, Mod2Mask, LockMask | Mod2Mask};

KeySym keySymOf(Qt::Key key) {
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return XK_F1 + (key - Qt::Key_F1);
    if (key == Qt::Key_Space)
        return XK_space;
    if (key >= Qt::Key_A && key <= Qt::Key_Z)
        return XK_a + (key - Qt::Key_A);
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return XK_0 + (key - Qt::Key_0);
    // Punctuation (Period for the insert window): Qt's codes and X's keysyms are both Latin-1.
    if (key >= Qt::Key_Exclam && key <= Qt::Key_AsciiTilde)
        return KeySym(key);
    return NoSymbol;
}
} // namespace

X11GlobalKey::X11GlobalKey(QObject* parent) : QObject(parent) {}

X11GlobalKey::~X11GlobalKey() {
    ungrab();
    if (m_display)
        XCloseDisplay(m_display);
}

bool X11GlobalKey::grab(QKeyCombination combination) {
    ungrab();
    if (!m_display && !(m_display = XOpenDisplay(nullptr)))
        return false;
    const KeySym symbol = keySymOf(combination.key());
    m_keyCode = symbol == NoSymbol ? 0 : XKeysymToKeycode(m_display, symbol);
    if (m_keyCode == 0)
        return false;
    const Qt::KeyboardModifiers modifiers = combination.keyboardModifiers();
    m_modifiers = (modifiers & Qt::ControlModifier ? ControlMask : 0) |
                  (modifiers & Qt::AltModifier ? Mod1Mask : 0) |
                  (modifiers & Qt::ShiftModifier ? ShiftMask : 0) |
                  (modifiers & Qt::MetaModifier ? Mod4Mask : 0);

    const Window root = DefaultRootWindow(m_display);
    grabRefused = false;
    XSync(m_display, False);
    const auto previous = XSetErrorHandler(noteRefusal);
    for (const unsigned int locks : lockVariants)
        XGrabKey(m_display, m_keyCode, m_modifiers | locks, root, True, GrabModeAsync,
                 GrabModeAsync);
    XSync(m_display, False);
    XSetErrorHandler(previous);
    if (grabRefused) {
        ungrab();
        return false;
    }
    m_notifier = new QSocketNotifier(ConnectionNumber(m_display), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &X11GlobalKey::readEvents);
    return true;
}

void X11GlobalKey::ungrab() {
    delete m_notifier;
    m_notifier = nullptr;
    if (!m_display || m_keyCode == 0)
        return;
    for (const unsigned int locks : lockVariants)
        XUngrabKey(m_display, m_keyCode, m_modifiers | locks, DefaultRootWindow(m_display));
    XSync(m_display, False);
    m_keyCode = 0;
}

void X11GlobalKey::readEvents() {
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == KeyPress && int(event.xkey.keycode) == m_keyCode)
            emit pressed();
    }
}
