#include "X11KeyboardOutput.h"

#include "Diagnostics.h"
#include "X11KeymapSource.h"

#include <QThread>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

X11KeyboardOutput::X11KeyboardOutput(X11KeymapSource& keymaps, QObject* parent)
    : QObject(parent), m_keymaps(keymaps) {
    m_restoreTimer.setSingleShot(true);
    m_restoreTimer.setInterval(restoreDelayMs);
    connect(&m_restoreTimer, &QTimer::timeout, this, [this] { restoreSpareKeyCodes(); });
}

X11KeyboardOutput::~X11KeyboardOutput() {
    restoreSpareKeyCodes();
    if (m_display)
        XCloseDisplay(m_display);
}

bool X11KeyboardOutput::open() {
    if (m_display)
        return true;
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return false;
    XKeysymToKeycode(m_display, XK_BackSpace); // fetches and caches the core mapping
    m_keymaps.currentKeymap();
    return true;
}

void X11KeyboardOutput::tap(uint32_t keyCode) {
    XTestFakeKeyEvent(m_display, keyCode, True, CurrentTime);
    XTestFakeKeyEvent(m_display, keyCode, False, CurrentTime);
}

QList<uint32_t> X11KeyboardOutput::releaseHeldModifiers() {
    QList<uint32_t> released;
    char keys[32] = {};
    XQueryKeymap(m_display, keys);
    XModifierKeymap* modifiers = XGetModifierMapping(m_display);
    if (!modifiers)
        return released;
    for (int i = 0; i < 8 * modifiers->max_keypermod; ++i) {
        const KeyCode code = modifiers->modifiermap[i];
        // Lock keys (Caps Lock, Num Lock) are latched, not held: releasing them changes nothing.
        if (code == 0 || i / modifiers->max_keypermod == LockMapIndex || released.contains(code))
            continue;
        if (keys[code / 8] & (1 << (code % 8))) {
            XTestFakeKeyEvent(m_display, code, False, CurrentTime);
            released.append(code);
        }
    }
    XFreeModifiermap(modifiers);
    return released;
}

void X11KeyboardOutput::pressAgain(const QList<uint32_t>& keyCodes) {
    for (const uint32_t code : keyCodes)
        XTestFakeKeyEvent(m_display, code, True, CurrentTime);
}

void X11KeyboardOutput::deleteCharacters(int count) {
    if (!open())
        return;
    const KeyCode backspace = XKeysymToKeycode(m_display, XK_BackSpace);
    if (backspace == 0)
        return;
    const QList<uint32_t> held = releaseHeldModifiers();
    for (int i = 0; i < count; ++i)
        tap(backspace); // X clients expect a release for every press
    pressAgain(held);
    XSync(m_display, False);
    m_lastPost.start();
}

void X11KeyboardOutput::waitBeforeRebinding() {
    if (!m_lastPost.isValid())
        return;
    const qint64 needed = settleBaseMs + qint64(settlePerKeyMs * m_keysInLastBatch);
    const qint64 waited = m_lastPost.elapsed();
    if (waited < needed)
        QThread::msleep(static_cast<unsigned long>(needed - waited));
}

void X11KeyboardOutput::bind(const QList<KeystrokePlanner::Binding>& bindings) {
    if (bindings.isEmpty())
        return;
    const bool rebinds = std::any_of(bindings.cbegin(), bindings.cend(),
                                     [](const auto& b) { return b.rebinds; });
    if (rebinds)
        waitBeforeRebinding();
    for (const auto& binding : bindings) {
        // A plain slot alone is written on both levels, so Caps Lock cannot change it.
        KeySym syms[2] = {binding.keysyms[0],
                          binding.keysyms[1] ? binding.keysyms[1] : binding.keysyms[0]};
        XChangeKeyboardMapping(m_display, static_cast<int>(binding.keyCode), 2, syms, 1);
    }
    // Confirmed on the server before any key that uses the new bindings is posted.
    XSync(m_display, False);
}

void X11KeyboardOutput::insertText(const QString& text) {
    if (!open())
        return;
    m_restoreTimer.stop();
    // Always the server's keymap as it is now: the monitor may not have seen the latest
    // change yet, and a stale map could make us press a key that now types something else.
    m_keymaps.keymapChanged();
    xkb_keymap* keymap = m_keymaps.currentKeymap();
    if (!keymap)
        return;
    m_planner.reconcile(keymap);
    const KeystrokePlanner::Plan plan = m_planner.plan(keymap, m_keymaps.currentGroup(), text);
    // Which characters were skipped reveals snippet text, so it is named only with typed-key
    // diagnostics on; otherwise the count alone says that something was left out.
    for (const char32_t codePoint : plan.skipped)
        Diagnostics::typed(QStringLiteral("Skipped a character that no key can type: U+") +
                           QString::number(uint(codePoint), 16).toUpper().rightJustified(4, u'0'));
    if (!plan.skipped.empty() && !Diagnostics::typedEnabled())
        Diagnostics::line(QStringLiteral("Skipped %1 character(s) that no key can type")
                              .arg(plan.skipped.size()));

    const QList<uint32_t> held = releaseHeldModifiers();
    for (const auto& batch : plan.batches) {
        bind(batch.bindings);
        bool shiftDown = false;
        for (const auto& stroke : batch.strokes) {
            if (stroke.shift != shiftDown) {
                XTestFakeKeyEvent(m_display, plan.shiftKeyCode, stroke.shift, CurrentTime);
                shiftDown = stroke.shift;
            }
            tap(stroke.keyCode);
        }
        if (shiftDown)
            XTestFakeKeyEvent(m_display, plan.shiftKeyCode, False, CurrentTime);
        XSync(m_display, False);
        m_lastPost.start();
        m_keysInLastBatch = int(batch.strokes.size());
    }
    pressAgain(held);
    XSync(m_display, False);
    if (!m_planner.boundKeyCodes().isEmpty())
        m_restoreTimer.start();
}

void X11KeyboardOutput::restoreSpareKeyCodes() {
    m_restoreTimer.stop();
    const QList<uint32_t> bound = m_planner.boundKeyCodes();
    if (!m_display || bound.isEmpty())
        return;
    for (const uint32_t code : bound) {
        KeySym none[2] = {NoSymbol, NoSymbol};
        XChangeKeyboardMapping(m_display, static_cast<int>(code), 2, none, 1);
    }
    XSync(m_display, False);
    m_planner.forgetBindings();
}
