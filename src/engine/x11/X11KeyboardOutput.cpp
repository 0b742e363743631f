#include "X11KeyboardOutput.h"

#include "FocusedApplication.h"
#include "Logging.h"
#include "X11ClipboardLender.h"
#include "X11KeymapSource.h"

#include <QSet>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

X11KeyboardOutput::X11KeyboardOutput(X11KeymapSource& keymaps, QObject* parent)
    : QObject(parent), m_keymaps(keymaps) {
    m_restoreTimer.setSingleShot(true);
    m_restoreTimer.setInterval(restoreDelayMs);
    connect(&m_restoreTimer, &QTimer::timeout, this, [this] { restoreSpareKeyCodes(); });
    m_stepTimer.setSingleShot(true);
    connect(&m_stepTimer, &QTimer::timeout, this, [this] { step(); });
}

X11KeyboardOutput::~X11KeyboardOutput() {
    if (m_job && m_clipboard)
        m_clipboard->giveBack(); // a paste under way: the user's clipboard comes back now
    if (m_job) {
        m_job->cancelled = true;
        m_job->finished = nullptr;
        finish();
    }
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
    int opcode = 0, error = 0, major = XkbMajorVersion, minor = XkbMinorVersion;
    if (XkbQueryExtension(m_display, &opcode, &m_xkbEventType, &error, &major, &minor)) {
        const unsigned int changes = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
        XkbSelectEvents(m_display, XkbUseCoreKbd, changes, changes);
    }
    m_keymaps.currentKeymap();
    return true;
}

bool X11KeyboardOutput::takeKeymapChanges() {
    bool changed = false;
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.xmapping);
            changed = true;
        } else if (m_xkbEventType >= 0 && event.type == m_xkbEventType) {
            changed = true;
        }
    }
    return changed;
}

bool X11KeyboardOutput::grabServerWithCurrentKeymap() {
    for (int attempt = 0; attempt < 50; ++attempt) {
        m_keymaps.currentKeymap(); // fetched on its own connection: never under our grab
        XGrabServer(m_display);
        // After the round trip every change the server made before the grab is in our queue.
        XSync(m_display, False);
        if (!takeKeymapChanges())
            return true;
        XUngrabServer(m_display);
        XFlush(m_display); // before the fetch on the other connection, which the grab would stall
        m_keymaps.keymapChanged();
    }
    return false;
}

void X11KeyboardOutput::setPasting(X11ClipboardLender* clipboard, FocusedApplication* focus) {
    m_clipboard = clipboard;
    m_focus = focus;
}

void X11KeyboardOutput::setKeysLeftDownHandler(
    std::function<void(const QList<uint32_t>&)> handler) {
    m_keysLeftDown = std::move(handler);
}

void X11KeyboardOutput::tap(uint32_t keyCode) {
    XTestFakeKeyEvent(m_display, keyCode, True, CurrentTime);
    XTestFakeKeyEvent(m_display, keyCode, False, CurrentTime);
}

QList<uint32_t> X11KeyboardOutput::releaseHeldKeys() {
    QList<uint32_t> released;
    char keys[32] = {};
    XQueryKeymap(m_display, keys);
    XModifierKeymap* modifiers = XGetModifierMapping(m_display);
    if (!modifiers)
        return released;
    QSet<uint32_t> modifierCodes;
    for (int i = 0; i < 8 * modifiers->max_keypermod; ++i)
        if (modifiers->modifiermap[i] != 0)
            modifierCodes.insert(modifiers->modifiermap[i]);
    XFreeModifiermap(modifiers);
    for (uint32_t code = 8; code < 256; ++code) {
        if (!(keys[code / 8] & (1 << (code % 8))))
            continue;
        if (modifierCodes.contains(code)) {
            // A lock key held down is left alone: pressing it again would toggle its lock.
            const KeySym keysym = XkbKeycodeToKeysym(m_display, KeyCode(code), 0, 0);
            if (keysym == XK_Caps_Lock || keysym == XK_Shift_Lock || keysym == XK_Num_Lock ||
                keysym == XK_ISO_Level3_Lock || keysym == XK_ISO_Level5_Lock ||
                keysym == XK_ISO_Lock)
                continue;
            released.append(code); // pressed again for the user when the expansion is done
        }
        // Any other key still down on our own device (the command's last key, sent by another
        // XTest client) would be read as a repeat when we press it, and dropped. The server
        // ignores the release for a key that only another device holds.
        XTestFakeKeyEvent(m_display, code, False, CurrentTime);
    }
    return released;
}

void X11KeyboardOutput::perform(const Expansion& actions, std::function<void()> finished) {
    if (m_job) {
        // One expansion at a time; the engine never asks for two.
        cancel();
        finish();
    }
    m_job.emplace();
    m_job->id = ++m_jobs;
    m_job->actions = actions;
    m_job->finished = std::move(finished);
    if (!open()) {
        m_job->cancelled = true;
        finish();
        return;
    }
    begin();
    step();
}

void X11KeyboardOutput::cancel() {
    if (m_job)
        m_job->cancelled = true;
}

void X11KeyboardOutput::begin() {
    m_restoreTimer.stop();
    // Always the server's keymap as it is now: the monitor may not have seen the latest
    // change yet, and a stale map could make us press a key that now types something else.
    m_keymaps.keymapChanged();

    XkbStateRec state{};
    XkbGetState(m_display, XkbUseCoreKbd, &state);
    m_job->lockedMods = state.locked_mods;
    m_job->latchedMods = state.latched_mods;
    m_job->latchedGroup = state.latched_group;
    // Locks and latches would change what our keys type (Caps Lock, Num Lock, a latched
    // level-3 shift): clear them for now, restore them when done.
    if (state.latched_mods)
        XkbLatchModifiers(m_display, XkbUseCoreKbd, state.latched_mods, 0);
    if (state.locked_mods)
        XkbLockModifiers(m_display, XkbUseCoreKbd, state.locked_mods, 0);
    if (state.latched_group)
        XkbLatchGroup(m_display, XkbUseCoreKbd, 0);
    m_job->releasedModifiers = releaseHeldKeys();
    // The group the user has locked stays: we type with that group's keys.
    m_job->group = static_cast<uint32_t>(state.base_group + state.locked_group);
    XSync(m_display, False);
}

void X11KeyboardOutput::step() {
    if (!m_job)
        return;
    Job& job = *m_job;
    while (!job.cancelled && job.action < job.actions.size()) {
        const ExpansionAction& action = job.actions[job.action];
        if (action.kind == ExpansionAction::Kind::Erase ||
            action.kind == ExpansionAction::Kind::MoveLeft) {
            // Locks are cleared meanwhile, so neither key reads as a keypad digit.
            const KeyCode key = XKeysymToKeycode(
                m_display, action.kind == ExpansionAction::Kind::Erase ? XK_BackSpace : XK_Left);
            for (int i = 0; key != 0 && i < action.count; ++i)
                tap(key); // X clients expect a release for every press
            XSync(m_display, False);
            m_lastPost.start();
            ++job.action;
            continue;
        }
        if (action.kind == ExpansionAction::Kind::Paste && !job.typingPaste &&
            job.textPosition == 0) {
            if (startPaste(action.text))
                return; // the clipboard lender calls back
            job.typingPaste = true;
        }
        if (!typeChunk())
            return; // waiting; the timer goes on
        if (job.textPosition >= action.text.size()) {
            ++job.action;
            job.textPosition = 0;
            job.typingPaste = false;
        }
        if (job.action < job.actions.size() || job.cancelled) {
            // Let the event loop run between chunks: windows repaint, Escape is seen.
            m_stepTimer.start(0);
            return;
        }
    }
    finish();
}

bool X11KeyboardOutput::startPaste(const QString& text) {
    if (!m_clipboard || !m_focus)
        return false;
    const PasteKeys::Keys keys = PasteKeys::forApplication(m_focus->name());
    if (keys == PasteKeys::Keys::NoKeys) {
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Typing instead of pasting: the application has no paste keys");
        return false;
    }
    const quint64 id = m_job->id;
    m_clipboard->lend(
        text,
        [this, id, keys](bool lent) {
            if (!m_job || m_job->id != id) {
                m_clipboard->giveBack();
                return;
            }
            if (!lent) {
                m_job->typingPaste = true;
                step();
            } else if (m_job->cancelled) {
                m_clipboard->giveBack(); // then returned() below ends the job
            } else {
                pressPasteKeys(keys);
            }
        },
        [this, id](bool taken) {
            if (!m_job || m_job->id != id)
                return;
            if (!taken && !m_job->cancelled && !m_job->typingPaste) {
                qCInfo(lcEngine).noquote()
                    << QStringLiteral("Typing instead of pasting: the application did not ask "
                                      "for the text");
                m_job->typingPaste = true;
            }
            if (!m_job->typingPaste) {
                ++m_job->action;
                m_job->textPosition = 0;
            }
            step();
        });
    return true;
}

void X11KeyboardOutput::pressPasteKeys(PasteKeys::Keys keys) {
    const KeyCode control = XKeysymToKeycode(m_display, XK_Control_L);
    const KeyCode shift = XKeysymToKeycode(m_display, XK_Shift_L);
    const KeyCode v = XKeysymToKeycode(m_display, XK_v);
    const bool withShift = keys == PasteKeys::Keys::ControlShiftV;
    if (control == 0 || v == 0 || (withShift && shift == 0)) {
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Typing instead of pasting: the layout has no keys to paste with");
        m_job->typingPaste = true;
        m_clipboard->giveBack();
        return;
    }
    XTestFakeKeyEvent(m_display, control, True, CurrentTime);
    if (withShift)
        XTestFakeKeyEvent(m_display, shift, True, CurrentTime);
    tap(v);
    if (withShift)
        XTestFakeKeyEvent(m_display, shift, False, CurrentTime);
    XTestFakeKeyEvent(m_display, control, False, CurrentTime);
    XSync(m_display, False);
    m_lastPost.start();
    qCInfo(lcEngine).noquote() << (withShift ? QStringLiteral("Pasting with Ctrl+Shift+V")
                                             : QStringLiteral("Pasting with Ctrl+V"));
}

bool X11KeyboardOutput::typeChunk() {
    Job& job = *m_job;
    const QString& text = job.actions[job.action].text;
    if (!job.plan) {
        qsizetype end = std::min(text.size(), job.textPosition + chunkLength);
        // Never split a surrogate pair or a CR LF line break between chunks.
        if (end < text.size() && (text[end].isLowSurrogate() ||
                                  (text[end] == u'\n' && text[end - 1] == u'\r')))
            ++end;
        if (!grabServerWithCurrentKeymap()) {
            // The layout keeps changing: any key we pressed now could type something else.
            qCWarning(lcEngine).noquote()
                << QStringLiteral("Stopped typing: the keyboard layout kept changing");
            job.cancelled = true;
            return true;
        }
        xkb_keymap* keymap = m_keymaps.currentKeymap();
        if (!keymap) {
            XUngrabServer(m_display);
            XSync(m_display, False);
            job.textPosition = text.size();
            return true;
        }
        m_planner.reconcile(keymap);
        job.plan = m_planner.plan(keymap, job.group,
                                  QStringView(text).mid(job.textPosition, end - job.textPosition));
        job.chunkEnd = end;
        job.batch = 0;
        // Which characters were skipped reveals snippet text, so it is named only with typed-key
        // diagnostics on; otherwise the count alone is written, once the text is done.
        for (const char32_t codePoint : std::as_const(job.plan->skipped))
            qCInfo(lcKeys).noquote() << QStringLiteral("Skipped a character that no key can type: U+") +
                               QString::number(uint(codePoint), 16).toUpper().rightJustified(4, u'0');
        job.skipped += int(job.plan->skipped.size());
    }
    else if (job.batch > 0) {
        XGrabServer(m_display); // resuming after a wait for a rebinding
        XSync(m_display, False);
    }
    const KeystrokePlanner::Plan& plan = *job.plan;
    while (job.batch < plan.batches.size()) {
        if (job.cancelled) {
            XUngrabServer(m_display);
            XSync(m_display, False);
            return true;
        }
        const auto& batch = plan.batches[job.batch];
        const bool rebinds = std::any_of(batch.bindings.cbegin(), batch.bindings.cend(),
                                         [](const auto& b) { return b.rebinds; });
        if (rebinds) {
            const qint64 wait = msBeforeRebinding();
            if (wait > 0) {
                XUngrabServer(m_display);
                XSync(m_display, False);
                m_stepTimer.start(static_cast<int>(wait));
                return false;
            }
        }
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
        ++job.batch;
    }
    XUngrabServer(m_display);
    XSync(m_display, False);
    job.textPosition = job.chunkEnd;
    job.plan.reset();
    return true;
}

qint64 X11KeyboardOutput::msBeforeRebinding() const {
    if (!m_lastPost.isValid())
        return 0;
    const qint64 needed = settleBaseMs + qint64(settlePerKeyMs * m_keysInLastBatch);
    return needed - m_lastPost.elapsed();
}

void X11KeyboardOutput::bind(const QList<KeystrokePlanner::Binding>& bindings) {
    if (bindings.isEmpty())
        return;
    for (const auto& binding : bindings) {
        // A plain slot alone is written on both levels, so Caps Lock cannot change it.
        KeySym syms[2] = {binding.keysyms[0],
                          binding.keysyms[1] ? binding.keysyms[1] : binding.keysyms[0]};
        XChangeKeyboardMapping(m_display, static_cast<int>(binding.keyCode), 2, syms, 1);
    }
    // Confirmed on the server before any key that uses the new bindings is posted.
    XSync(m_display, False);
}

void X11KeyboardOutput::finish() {
    m_stepTimer.stop();
    Job job = std::move(*m_job);
    m_job.reset();
    if (m_display) {
        for (const uint32_t code : std::as_const(job.releasedModifiers))
            XTestFakeKeyEvent(m_display, code, True, CurrentTime);
        if (job.lockedMods)
            XkbLockModifiers(m_display, XkbUseCoreKbd, job.lockedMods, job.lockedMods);
        if (job.latchedMods)
            XkbLatchModifiers(m_display, XkbUseCoreKbd, job.latchedMods, job.latchedMods);
        if (job.latchedGroup)
            XkbLatchGroup(m_display, XkbUseCoreKbd, job.latchedGroup);
        XSync(m_display, False);
    }
    if (job.skipped > 0 && !lcKeys().isInfoEnabled())
        qCInfo(lcEngine).noquote() << QStringLiteral("Skipped %1 character(s) that no key can type")
                              .arg(job.skipped);
    if (m_keysLeftDown && !job.releasedModifiers.isEmpty())
        m_keysLeftDown(job.releasedModifiers);
    if (!m_planner.boundKeyCodes().isEmpty())
        m_restoreTimer.start();
    if (job.finished)
        QMetaObject::invokeMethod(this, job.finished, Qt::QueuedConnection);
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
