#include "X11KeyMonitor.h"

#include "X11ConnectionLoss.h"
#include "Logging.h"

#include <QSocketNotifier>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>

namespace {
constexpr unsigned int stateComponents =
    XkbModifierStateMask | XkbModifierBaseMask | XkbModifierLatchMask | XkbModifierLockMask |
    XkbGroupStateMask | XkbGroupBaseMask | XkbGroupLatchMask | XkbGroupLockMask;

bool hasKeys(const XIDeviceInfo& device) {
    for (int i = 0; i < device.num_classes; ++i)
        if (device.classes[i]->type == XIKeyClass)
            return true;
    return false;
}
} // namespace

X11KeyMonitor::X11KeyMonitor(QObject* parent) : QObject(parent) {}

X11KeyMonitor::~X11KeyMonitor() {
    m_notifier.reset();
    if (!m_display)
        return;
    for (const int device : std::as_const(m_grabbed))
        XIUngrabDevice(m_display, device, CurrentTime);
    XCloseDisplay(m_display);
}

void X11KeyMonitor::setKeymapChangedHandler(std::function<void()> handler) {
    m_keymapChanged = std::move(handler);
}

void X11KeyMonitor::setGroupChangedHandler(std::function<void(uint32_t)> handler) {
    m_groupChanged = std::move(handler);
}

void X11KeyMonitor::noteSyntheticKeysDown(const QList<uint32_t>& keyCodes) {
    for (const uint32_t code : keyCodes)
        m_syntheticDown.insert(code);
}

bool X11KeyMonitor::start(KeyHandler handler) {
    if (m_display)
        return false; // started once already
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return false;
    X11ConnectionLoss::installHandlers();

    int event = 0, error = 0;
    // 2.2 delivers raw events to us while another client (or we) hold a grab.
    int major = 2, minor = 2;
    if (!XQueryExtension(m_display, "XInputExtension", &m_xiOpcode, &event, &error) ||
        XIQueryVersion(m_display, &major, &minor) != Success || major < 2) {
        XCloseDisplay(m_display);
        m_display = nullptr;
        return false;
    }

    unsigned char keyMask[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(keyMask, XI_RawKeyPress);
    XISetMask(keyMask, XI_RawKeyRelease);
    XISetMask(keyMask, XI_RawButtonPress);
    unsigned char hierarchyMask[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(hierarchyMask, XI_HierarchyChanged);
    XIEventMask masks[] = {{XIAllMasterDevices, sizeof keyMask, keyMask},
                           {XIAllDevices, sizeof hierarchyMask, hierarchyMask}};
    XISelectEvents(m_display, DefaultRootWindow(m_display), masks, 2);
    // The window manager's active window, and the focus going to or from the root: another
    // window may have the keyboard now.
    m_activeWindowAtom = XInternAtom(m_display, "_NET_ACTIVE_WINDOW", False);
    XSelectInput(m_display, DefaultRootWindow(m_display), PropertyChangeMask | FocusChangeMask);

    int xkbOpcode = 0, xkbError = 0, xkbMajor = XkbMajorVersion, xkbMinor = XkbMinorVersion;
    if (XkbQueryExtension(m_display, &xkbOpcode, &m_xkbEventType, &xkbError, &xkbMajor,
                          &xkbMinor)) {
        const unsigned int wanted =
            XkbNewKeyboardNotifyMask | XkbMapNotifyMask | XkbControlsNotifyMask;
        XkbSelectEvents(m_display, XkbUseCoreKbd, wanted, wanted);
    } else {
        m_xkbEventType = -1;
    }
    scanDevices();
    followFocus();
    XSync(m_display, False);

    m_keyDown = std::move(handler);
    m_notifier = std::make_unique<QSocketNotifier>(ConnectionNumber(m_display),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { readEvents(); });
    // Events read while setting up would not wake the notifier.
    readEvents();
    return true;
}

void X11KeyMonitor::scanDevices() {
    int clientPointer = 0;
    XIGetClientPointer(m_display, None, &clientPointer);
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(m_display, XIAllDevices, &count);
    m_coreKeyboard = -1;
    for (int i = 0; i < count; ++i)
        if (devices[i].deviceid == clientPointer)
            m_coreKeyboard = devices[i].attachment;
    // The server names the XTEST devices after their master: "Virtual core keyboard" has
    // "Virtual core XTEST keyboard". Ours belongs to the master our connection types through.
    QByteArray ownXtestName;
    for (int i = 0; i < count; ++i) {
        if (devices[i].deviceid != m_coreKeyboard)
            continue;
        ownXtestName = QByteArray(devices[i].name);
        if (ownXtestName.endsWith(" keyboard"))
            ownXtestName.chop(9);
        ownXtestName += " XTEST keyboard";
    }
    m_ownXtestKeyboard = -1;
    m_userKeyboards.clear();
    for (int i = 0; i < count; ++i) {
        const XIDeviceInfo& device = devices[i];
        if (device.use == XIMasterKeyboard) {
            if (m_xkbEventType >= 0) {
                XkbSelectEventDetails(m_display, device.deviceid, XkbStateNotify,
                                      stateComponents, stateComponents);
                XkbStateRec state{};
                if (XkbGetState(m_display, device.deviceid, &state) == Success)
                    m_stateOfMaster.insert(device.deviceid,
                                           KeyboardState{state.base_mods, state.latched_mods,
                                                         state.locked_mods, state.group});
            }
        } else if (QByteArray(device.name) == ownXtestName) {
            m_ownXtestKeyboard = device.deviceid;
        } else if ((device.use == XISlaveKeyboard && device.attachment == m_coreKeyboard) ||
                   (device.use == XIFloatingSlave && hasKeys(device))) {
            // Floating ones too: a device we grab floats for the length of the grab.
            m_userKeyboards.append(device.deviceid);
        }
        // Another master keyboard (a second seat) is held whole: our typing does not go
        // through it, and its slaves then never float away from it.
        if (device.use == XIMasterKeyboard && device.deviceid != m_coreKeyboard)
            m_userKeyboards.append(device.deviceid);
    }
    XIFreeDeviceInfo(devices);
    m_controls.clear();
}

const X11KeyMonitor::RepeatControls& X11KeyMonitor::controlsOf(int device) {
    auto found = m_controls.constFind(device);
    if (found != m_controls.cend())
        return *found;
    RepeatControls controls;
    if (m_xkbEventType >= 0) {
        if (XkbDescPtr desc = XkbGetMap(m_display, 0, static_cast<unsigned>(device))) {
            if (XkbGetControls(m_display, XkbAllControlsMask, desc) == Success && desc->ctrls) {
                controls.enabled = desc->ctrls->enabled_ctrls & XkbRepeatKeysMask;
                controls.delayMs = desc->ctrls->repeat_delay;
                controls.intervalMs = std::max<int>(1, desc->ctrls->repeat_interval);
                for (uint32_t code = 8; code < 256; ++code)
                    if (desc->ctrls->per_key_repeat[code / 8] & (1 << (code % 8)))
                        controls.repeatingKeys.insert(code);
            }
            XkbFreeKeyboard(desc, XkbAllComponentsMask, True);
        }
    }
    return *m_controls.insert(device, controls);
}

void X11KeyMonitor::readEvents() {
    // XPending reads the socket, so a dead server surfaces here as an I/O error.
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        process(event);
    }
}

void X11KeyMonitor::process(XEvent& event) {
    if (event.type == GenericEvent && event.xcookie.extension == m_xiOpcode) {
        if (!XGetEventData(m_display, &event.xcookie))
            return;
        const int type = event.xcookie.evtype;
        void* data = event.xcookie.data;
        if (type == XI_RawKeyPress || type == XI_RawKeyRelease) {
            const auto* raw = static_cast<const XIRawEvent*>(data);
            const int master = raw->deviceid, source = raw->sourceid;
            const auto keyCode = static_cast<uint32_t>(raw->detail);
            const unsigned long time = raw->time;
            XFreeEventData(m_display, &event.xcookie);
            rawKey(master, source, keyCode, time, type == XI_RawKeyPress);
            return;
        }
        if (type == XI_RawButtonPress) {
            // Buttons 4 to 7 are the wheel: scrolling leaves the caret where it was.
            const int button = static_cast<const XIRawEvent*>(data)->detail;
            XFreeEventData(m_display, &event.xcookie);
            if (button < 4 || button > 7)
                notify(m_pointerPressed);
            return;
        }
        if (type == XI_KeyPress || type == XI_KeyRelease) {
            heldKey(data, type == XI_KeyPress);
        } else if (type == XI_HierarchyChanged) {
            scanDevices();
        }
        XFreeEventData(m_display, &event.xcookie);
    } else if (m_xkbEventType >= 0 && event.type == m_xkbEventType) {
        const auto& xkb = reinterpret_cast<const XkbEvent&>(event);
        if (xkb.any.xkb_type == XkbStateNotify) {
            const XkbStateNotifyEvent& state = xkb.state;
            m_stateOfMaster.insert(state.device,
                                   KeyboardState{uint32_t(state.base_mods),
                                                 uint32_t(state.latched_mods),
                                                 uint32_t(state.locked_mods),
                                                 uint32_t(state.group)});
            if (state.device == m_coreKeyboard && (state.changed & XkbGroupStateMask) &&
                m_groupChanged)
                m_groupChanged(static_cast<uint32_t>(state.group));
        } else if (xkb.any.xkb_type == XkbControlsNotify) {
            m_controls.clear();
        } else if (xkb.any.xkb_type == XkbMapNotify ||
                   xkb.any.xkb_type == XkbNewKeyboardNotify) {
            if (m_keymapChanged)
                m_keymapChanged();
        }
    } else if ((event.type == PropertyNotify && event.xproperty.atom == m_activeWindowAtom) ||
               ((event.type == FocusIn || event.type == FocusOut) &&
                event.xfocus.mode != NotifyGrab && event.xfocus.mode != NotifyUngrab &&
                (event.xfocus.window == DefaultRootWindow(m_display) ||
                 (event.type == FocusOut && event.xfocus.window == m_focusWindow)))) {
        // A grab (ours while holding keys, a menu's) leaves the focus where it is.
        followFocus();
        notify(m_focusChanged);
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
        if (m_keymapChanged)
            m_keymapChanged();
    }
}

void X11KeyMonitor::rawKey(int master, int source, uint32_t keyCode, unsigned long time,
                           bool press) {
    if (source == m_ownXtestKeyboard && ownOutput())
        return; // Typolet's own typing or replay
    if (m_keysGrabbed && m_grabbed.contains(master)) {
        // Held: it comes again as the grabbed event. While a hold begins, a key-down typed just
        // before the grab took effect has no such twin: it reached the application and counts
        // as slipped, unless its twin turns up (holdKeys() waits for that).
        if (press && m_slipped && !m_rawWhileGrabbing.contains({keyCode, time})) {
            m_rawWhileGrabbing.insert({keyCode, time}, m_slipped->size());
            KeyStroke stroke;
            stroke.keyCode = keyCode;
            stroke.state = m_stateOfMaster.value(master);
            m_slipped->append(stroke);
        }
        return;
    }
    if (!press && source != m_ownXtestKeyboard && m_syntheticDown.remove(keyCode)) {
        // The user let go of a modifier we had pressed again for them: let go of ours too.
        XTestFakeKeyEvent(m_display, keyCode, False, CurrentTime);
        XFlush(m_display);
    }
    const RepeatControls& controls = controlsOf(source);
    const bool repeats = controls.enabled && controls.repeatingKeys.contains(keyCode);
    if (!press) {
        if (m_repeating.value(source).keyCode == keyCode)
            stopRepeating(source, time);
        m_droppedPresses.remove(keyCode); // let go after the hold: nothing more to keep back
        return;
    }
    // The server repeats only the last repeating key pressed on a device.
    if (repeats)
        stopRepeating(source, time);
    KeyStroke stroke;
    stroke.keyCode = keyCode;
    stroke.state = m_stateOfMaster.value(master);
    stroke.late = arrivedLate(time);
    if (repeats)
        m_repeating.insert(source, Repeating{keyCode, time, stroke});
    report(stroke);
}

void X11KeyMonitor::followFocus() {
    const Window focus = inputFocus();
    const Window root = DefaultRootWindow(m_display);
    if (focus == m_focusWindow)
        return;
    // Only our own selection on that window changes; the root keeps what start() chose. A
    // window watched before is left as it is (it may be gone by now): its events are ignored.
    m_focusWindow = focus > PointerRoot && focus != root ? focus : 0;
    if (m_focusWindow != 0)
        XSelectInput(m_display, m_focusWindow, FocusChangeMask);
    XFlush(m_display); // at once: the focus may move on before anything else is sent
}

bool X11KeyMonitor::arrivedLate(unsigned long serverTime) {
    // A key is late when it is read a second or more after the server took it in; reading
    // it as a fresh command would erase wherever the caret has gone since.
    constexpr qint64 lateAfterMs = 1000;
    // Our clock and the server's may drift apart (another machine's server): the least gap is
    // allowed to grow by a millisecond a second.
    constexpr qint64 msPerDriftMs = 1000;
    if (!m_clock.isValid())
        m_clock.start();
    const qint64 now = m_clock.elapsed();
    // Server time is 32 bits of milliseconds and wraps about every 49 days.
    const qint64 gap = now - static_cast<qint64>(static_cast<uint32_t>(serverTime));
    const qint64 allowed =
        m_leastGapAt < 0 ? 0 : m_leastGap + (now - m_leastGapAt) / msPerDriftMs;
    if (m_leastGapAt < 0 || gap <= allowed || gap - allowed > (qint64(1) << 31)) {
        m_leastGap = gap;
        m_leastGapAt = now;
        return false;
    }
    return gap - allowed >= lateAfterMs;
}

void X11KeyMonitor::stopRepeating(int source, unsigned long time) {
    const auto found = m_repeating.constFind(source);
    if (found == m_repeating.cend())
        return;
    const Repeating repeating = *found;
    m_repeating.erase(found);
    const RepeatControls& controls = controlsOf(source);
    const long held = static_cast<long>(time - repeating.since);
    const long afterDelay = held - controls.delayMs;
    if (afterDelay < 0)
        return;
    const int repeats = 1 + static_cast<int>(afterDelay / controls.intervalMs);
    // The server's repeat timer only ever fires late, and more so the longer it runs: a release
    // shortly after a repeat was due may have come before it.
    const long sinceLastDue = afterDelay % controls.intervalMs;
    KeyStroke stroke = repeating.stroke;
    stroke.repeats = repeats;
    stroke.repeatCountUncertain = sinceLastDue <= 5 + 2L * repeats;
    report(stroke);
}

void X11KeyMonitor::report(const KeyStroke& stroke) {
    if (m_slipped)
        m_slipped->append(stroke);
    else if (m_keyDown)
        m_keyDown(stroke);
}

void X11KeyMonitor::notify(const std::function<void()>& handler) {
    if (!handler)
        return;
    if (m_slipped)
        QMetaObject::invokeMethod(this, handler, Qt::QueuedConnection);
    else
        handler();
}

KeyMonitor::HoldResult X11KeyMonitor::holdKeys(HeldKeyFilter onHeld) {
    HoldResult result;
    if (m_keysGrabbed || ownOutput()) {
        // Another expansion while the last one's keys are being let go: hold on.
        if (m_stage == HoldStage::Releasing)
            m_stage = HoldStage::OwnTyping;
        result.holding = m_keysGrabbed;
        return result;
    }
    m_onHeld = std::move(onHeld);
    unsigned char mask[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(mask, XI_KeyPress);
    XISetMask(mask, XI_KeyRelease);
    bool grabbed = true;
    for (const int device : std::as_const(m_userKeyboards)) {
        XIEventMask eventMask{device, sizeof mask, mask};
        // A round trip: when it returns, every key the server handled before is in our queue.
        if (XIGrabDevice(m_display, device, DefaultRootWindow(m_display), CurrentTime, None,
                         XIGrabModeAsync, XIGrabModeAsync, False, &eventMask) != Success) {
            grabbed = false;
            break;
        }
        m_grabbed.append(device);
    }
    if (!grabbed) {
        for (const int device : std::as_const(m_grabbed))
            XIUngrabDevice(m_display, device, CurrentTime);
        m_grabbed.clear();
    }
    m_keysGrabbed = grabbed;
    m_stage = HoldStage::Holding;
    if (grabbed)
        m_focusWhenHeld = inputFocus();
    result.holding = grabbed;
    m_slipped = &result.slipped;
    // The grabs' round trips read every event the server sent before them; one more brings in
    // the grabbed twin of every raw key-down read so far that came after a grab.
    if (grabbed)
        XSync(m_display, False);
    processQueued();
    m_slipped = nullptr;
    m_rawWhileGrabbing.clear();
    result.slipped.removeIf([](const KeyStroke& stroke) { return stroke.keyCode == 0; });
    return result;
}

void X11KeyMonitor::heldKey(const void* deviceEvent, bool press) {
    const auto* event = static_cast<const XIDeviceEvent*>(deviceEvent);
    const auto keyCode = static_cast<uint32_t>(event->detail);
    HeldEvent held;
    held.press = press;
    held.stroke.keyCode = keyCode;
    held.stroke.state = KeyboardState{uint32_t(event->mods.base), uint32_t(event->mods.latched),
                                      uint32_t(event->mods.locked),
                                      uint32_t(event->group.effective)};
    if (!press) {
        // A key let go while held never shows as a raw release: its repeats end here. If it
        // was down long enough to repeat before the hold began, the application got repeats
        // that were never reported, and how many is not known.
        const auto repeating = m_repeating.constFind(event->sourceid);
        if (repeating != m_repeating.cend() && repeating->keyCode == keyCode) {
            KeyStroke stroke = repeating->stroke;
            const long heldMs = static_cast<long>(event->time - repeating->since);
            m_repeating.erase(repeating);
            if (heldMs >= controlsOf(event->sourceid).delayMs) {
                stroke.repeats = 1;
                stroke.repeatCountUncertain = true;
                report(stroke);
            }
        }
    }
    if (press && m_slipped && m_keysGrabbed) {
        // Its raw twin was taken for a key typed before the grab: it is held after all.
        // (Marked with no place where the twin comes first.)
        const qsizetype raw = m_rawWhileGrabbing.value({keyCode, event->time}, -1);
        if (raw >= 0)
            (*m_slipped)[raw].keyCode = 0;
        m_rawWhileGrabbing.insert({keyCode, event->time}, -1);
    }
    if (m_droppedPresses.contains(keyCode)) {
        if (!press)
            m_droppedPresses.remove(keyCode);
        return; // the repeats and the release of a key kept from the application
    }
    if (press && m_onHeld && !m_onHeld(held.stroke)) {
        m_droppedPresses.insert(keyCode);
        return;
    }
    m_held.append(held);
    if (!m_keysGrabbed)
        while (replayNextPress()) {} // it came in just before the grab ended: let it go at once
}

bool X11KeyMonitor::replayNextPress() {
    while (!m_held.isEmpty()) {
        HeldEvent held = m_held.takeFirst();
        XTestFakeKeyEvent(m_display, held.stroke.keyCode, held.press, CurrentTime);
        if (!held.press) {
            m_replayedDown.remove(held.stroke.keyCode);
            continue;
        }
        m_replayedDown.insert(held.stroke.keyCode);
        // In the application before anything the report may make Typolet type.
        XSync(m_display, False);
        held.stroke.replayed = true;
        report(held.stroke);
        return true;
    }
    XFlush(m_display);
    return false;
}

unsigned long X11KeyMonitor::inputFocus() {
    Window focus = None;
    int revertTo = 0;
    XGetInputFocus(m_display, &focus, &revertTo);
    return focus;
}

void X11KeyMonitor::dropHeldPresses() {
    // Releases stay: the application saw those keys go down before the hold.
    QSet<uint32_t> dropped;
    qsizetype presses = 0;
    m_held.removeIf([&](const HeldEvent& held) {
        if (held.press) {
            dropped.insert(held.stroke.keyCode);
            ++presses;
            return true;
        }
        return dropped.remove(held.stroke.keyCode);
    });
    // Still down: their repeats and release, held or not, are kept from the application too.
    m_droppedPresses.unite(dropped);
    if (presses > 0)
        qCInfo(lcEngine).noquote()
            << QStringLiteral("The focus moved while %1 key press(es) were held: they were "
                              "typed for the window left behind and are dropped")
                   .arg(presses);
}

void X11KeyMonitor::heldKeysFollowFocus() {
    if (m_keysGrabbed)
        m_focusWhenHeld = inputFocus();
}

void X11KeyMonitor::releaseKeys() {
    if (m_stage == HoldStage::Free)
        return;
    // The replay goes wherever the focus is now: keys typed for a window the focus has left
    // since would land in another one.
    if (m_keysGrabbed && inputFocus() != m_focusWhenHeld)
        dropHeldPresses();
    m_stage = HoldStage::Releasing; // the replay goes out through XTEST
    scheduleReplay();
}

void X11KeyMonitor::scheduleReplay() {
    // Never from inside releaseKeys(): the engine that lets go is not called back before it
    // is done.
    if (!std::exchange(m_replayScheduled, true))
        QMetaObject::invokeMethod(this, &X11KeyMonitor::replayStep, Qt::QueuedConnection);
}

void X11KeyMonitor::replayStep() {
    m_replayScheduled = false;
    if (m_stage != HoldStage::Releasing)
        return; // held again meanwhile: the rest wait for the next release
    if (m_keysGrabbed) {
        const bool replayed = replayNextPress();
        // Keys that arrived while replaying; read into Xlib's queue already, where the socket
        // notifier does not see them.
        if (!replayed)
            XSync(m_display, False);
        processQueued();
        if (m_stage != HoldStage::Releasing)
            return; // the report started another expansion, which holds on to the rest
        if (replayed || !m_held.isEmpty()) {
            scheduleReplay();
            return;
        }
        for (const int device : std::as_const(m_grabbed))
            XIUngrabDevice(m_display, device, CurrentTime);
        m_grabbed.clear();
        m_keysGrabbed = false;
    }
    endOwnOutput();
}

void X11KeyMonitor::processQueued() {
    while (XEventsQueued(m_display, QueuedAlready) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        process(event);
    }
}

void X11KeyMonitor::endOwnOutput() {
    // Keys replayed and still down: a key the user still holds must not repeat from our device;
    // a modifier stays down for the user until they let go of theirs.
    XModifierKeymap* modifiers = XGetModifierMapping(m_display);
    for (const uint32_t code : std::as_const(m_replayedDown)) {
        bool isModifier = false;
        for (int i = 0; modifiers && i < 8 * modifiers->max_keypermod; ++i)
            isModifier = isModifier || modifiers->modifiermap[i] == code;
        if (isModifier)
            m_syntheticDown.insert(code);
        else
            XTestFakeKeyEvent(m_display, code, False, CurrentTime);
    }
    if (modifiers)
        XFreeModifiermap(modifiers);
    m_replayedDown.clear();
    // Our own keys that the server has handled are in the queue now and are left out; anything
    // else found there is reported once our device counts as the user's again.
    XSync(m_display, False);
    QList<KeyStroke> afterwards;
    m_slipped = &afterwards;
    processQueued();
    m_slipped = nullptr;
    m_stage = HoldStage::Free;
    m_onHeld = {};
    for (const KeyStroke& stroke : std::as_const(afterwards))
        report(stroke);
}
