#include "EvdevKeyMonitor.h"

#include "DeviceHotplugSource.h"
#include "EvdevKeyboardFinder.h"
#include "InputDeviceAccess.h"
#include "KeymapSource.h"
#include "Logging.h"

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/input.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace {
// xkbcommon numbers keys as X does: the kernel's code plus 8.
constexpr uint32_t xkbOffset = 8;

// Codes that keyboards report but that are buttons, not keys: pointer buttons on keyboards with
// a built-in touchpad or trackpoint, joystick and gamepad buttons.
bool isButton(uint16_t code) {
    return (code >= BTN_MISC && code < KEY_OK) ||
           (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT) || code >= BTN_TRIGGER_HAPPY;
}

// The pointer buttons that put the caret somewhere else (the wheel is not a button here).
bool movesCaret(uint16_t code) { return code >= BTN_LEFT && code <= BTN_TASK; }
} // namespace

EvdevKeyMonitor::EvdevKeyMonitor(KeymapSource& keymaps, InputDeviceAccess& access,
                                 const EvdevKeyboardFinder& keyboards,
                                 DeviceHotplugSource* hotplug, QObject* parent)
    : QObject(parent), m_keymaps(keymaps), m_access(access), m_finder(keyboards),
      m_hotplug(hotplug) {}

EvdevKeyMonitor::~EvdevKeyMonitor() {
    for (const auto& keyboard : m_keyboards) {
        keyboard->notifier.reset();
        ::close(keyboard->fd);
    }
    if (m_state)
        xkb_state_unref(m_state);
    if (m_keymap)
        xkb_keymap_unref(m_keymap);
}

bool EvdevKeyMonitor::start(KeyHandler handler) {
    if (m_started)
        return false; // started once already
    m_started = true;
    m_keyDown = std::move(handler);
    openKeyboards();
    const bool hotplugging =
        m_hotplug && m_hotplug->start([this](const QString& path, bool added) {
            deviceChanged(path, added);
        });
    // With no keyboard yet, one plugged in later is enough to be worth waiting for.
    return !m_keyboards.empty() || hotplugging;
}

void EvdevKeyMonitor::openKeyboards() {
    for (const EvdevKeyboardFinder::Node& node : m_finder.scan()) {
        const bool known =
            std::any_of(m_keyboards.begin(), m_keyboards.end(),
                        [&node](const auto& keyboard) { return keyboard->path == node.path; });
        if (known || !node.usable())
            continue;
        QString name;
        const int fd = m_finder.openKeyboard(node.path, &name);
        if (fd >= 0)
            addKeyboard(fd, name, node.path);
    }
}

void EvdevKeyMonitor::setGroupReport(std::function<std::optional<uint32_t>()> report) {
    m_groupReport = std::move(report);
}

void EvdevKeyMonitor::setSessionActive(bool active) {
    if (active == m_sessionActive)
        return;
    m_sessionActive = active;
    if (!active) {
        // logind takes the nodes' access away from an inactive session, but a descriptor
        // opened before goes on reading: it is closed here, so another user's keys never are.
        while (!m_keyboards.empty())
            remove(m_keyboards.back().get(), false);
        qCInfo(lcEngine).noquote()
            << QStringLiteral("The session is no longer the active one; the keyboards are closed");
        return;
    }
    qCInfo(lcEngine).noquote()
        << QStringLiteral("The session is the active one again; reading the keyboards");
    if (!m_started)
        return;
    openKeyboards();
    // logind gives the nodes' access back as it switches sessions, which may be just after it
    // announces the session active: a second look finds those that were not readable yet.
    QTimer::singleShot(reopenAgainMs, this, [this] {
        if (m_sessionActive)
            openKeyboards();
    });
}

KeyMonitor::HoldResult EvdevKeyMonitor::holdKeys(HeldKeyFilter onHeld) {
    (void)onHeld;
    // Reading a device node takes nothing from the compositor, and grabbing the node would
    // take every key from it, the compositor's own shortcuts included: the keys go on reaching
    // the application while Typolet types, and are reported as they come.
    return {};
}

void EvdevKeyMonitor::addKeyboard(int fd, const QString& name, const QString& path) {
    auto keyboard = std::make_unique<Keyboard>();
    keyboard->fd = fd;
    keyboard->name = name;
    keyboard->path = path;
    keyboard->notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    Keyboard* raw = keyboard.get();
    connect(keyboard->notifier.get(), &QSocketNotifier::activated, this, [this, raw] { read(raw); });
    m_keyboards.push_back(std::move(keyboard));
    // A lock switched on before Typolet started shows only in the lights.
    if (const auto info = m_access.describe(fd))
        for (const uint16_t led : info->lightsOn)
            lockLight(led, true);
    qCInfo(lcEngine).noquote() << QStringLiteral("Reading the keyboard \"%1\"").arg(name);
}

QStringList EvdevKeyMonitor::keyboardNames() const {
    QStringList names;
    for (const auto& keyboard : m_keyboards)
        names.append(keyboard->name);
    return names;
}

void EvdevKeyMonitor::deviceChanged(const QString& path, bool added) {
    if (!m_sessionActive || !m_finder.isDeviceNode(path))
        return;
    const auto known = std::find_if(m_keyboards.begin(), m_keyboards.end(),
                                    [&path](const auto& keyboard) { return keyboard->path == path; });
    if (!added) {
        if (known != m_keyboards.end())
            remove(known->get(), true);
        return;
    }
    if (known != m_keyboards.end())
        return; // already read (found while starting, and announced again)
    QString name;
    const int fd = m_finder.openKeyboard(path, &name);
    if (fd >= 0)
        addKeyboard(fd, name, path);
}

void EvdevKeyMonitor::read(Keyboard* keyboard) {
    // evdev hands out whole records; a socket may not, so a record's start waits for the rest.
    char buffer[64 * sizeof(input_event)];
    for (;;) {
        const ssize_t got = ::read(keyboard->fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        if (got <= 0) {
            remove(keyboard, true); // unplugged (ENODEV) or closed
            return;
        }
        keyboard->unread.append(buffer, got);
        const qsizetype whole = keyboard->unread.size() / qsizetype(sizeof(input_event));
        for (qsizetype i = 0; i < whole; ++i) {
            input_event event;
            std::memcpy(&event, keyboard->unread.constData() + i * sizeof(input_event),
                        sizeof event);
            // After the keys were read again, the rest of this read is already in what the
            // device answered, and the kernel dropped the key events still queued behind it:
            // applying the rest would press keys whose release is gone (a Shift held forever).
            if (!handle(*keyboard, event))
                break;
        }
        keyboard->unread.remove(0, whole * qsizetype(sizeof(input_event)));
    }
}

bool EvdevKeyMonitor::handle(Keyboard& keyboard, const input_event& event) {
    if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        // The keys already reported stand; the counted repeats are what the kernel sent.
        stopRepeating(keyboard);
        keyboard.frame.clear();
        keyboard.dropping = true;
        return true;
    }
    if (event.type == EV_SYN && event.code == SYN_REPORT) {
        if (keyboard.dropping) {
            keyboard.dropping = false;
            resynchronise(keyboard);
            return false;
        }
        applyFrame(keyboard);
        return true;
    }
    if (!keyboard.dropping && (event.type == EV_KEY || event.type == EV_LED))
        keyboard.frame.append(event);
    return true;
}

void EvdevKeyMonitor::applyFrame(Keyboard& keyboard) {
    const QList<input_event> frame = std::exchange(keyboard.frame, {});
    for (const input_event& event : frame) {
        if (event.type == EV_LED)
            lockLight(event.code, event.value != 0);
        else
            key(keyboard, event.code, event.value);
    }
}

void EvdevKeyMonitor::key(Keyboard& keyboard, uint16_t code, int value) {
    if (isButton(code)) {
        if (value == 1 && movesCaret(code) && m_pointerPressed)
            m_pointerPressed();
        return;
    }
    if (value == 2) {
        // The kernel repeats the last key pressed; a repeat of another key (one held while
        // events were lost) starts a count of its own.
        if (keyboard.repeatingCode != code) {
            stopRepeating(keyboard);
            keyboard.repeatingCode = code;
            keyboard.repeatingStroke.keyCode = code + xkbOffset;
            keyboard.repeatingStroke.state = currentState();
        }
        ++keyboard.repeats;
        return;
    }
    if (value == 1) {
        stopRepeating(keyboard);
        KeyStroke stroke;
        stroke.keyCode = code + xkbOffset;
        stroke.state = currentState();
        keyboard.repeatingCode = code;
        keyboard.repeatingStroke = stroke;
        keyboard.down.insert(code);
        feed(code, true);
        report(stroke);
        return;
    }
    if (keyboard.repeatingCode == code)
        stopRepeating(keyboard);
    keyboard.down.remove(code);
    feed(code, false);
}

void EvdevKeyMonitor::stopRepeating(Keyboard& keyboard) {
    const int repeats = std::exchange(keyboard.repeats, 0);
    keyboard.repeatingCode = 0;
    if (repeats == 0)
        return;
    KeyStroke stroke = keyboard.repeatingStroke;
    stroke.repeats = repeats;
    // These are the kernel's repeats. On Wayland the applications repeat a held key on their
    // own, at the rate and delay the compositor gives them, which need not be the kernel's: how
    // many characters the application typed is not known for sure.
    stroke.repeatCountUncertain = true;
    report(stroke);
}

void EvdevKeyMonitor::resynchronise(Keyboard& keyboard) {
    const std::optional<QList<uint16_t>> now = m_access.keysDown(keyboard.fd);
    const QSet<uint16_t> downNow = now ? QSet<uint16_t>(now->begin(), now->end()) : QSet<uint16_t>();
    const QSet<uint16_t> letGo = QSet<uint16_t>(keyboard.down).subtract(downNow);
    for (const uint16_t code : letGo)
        feed(code, false);
    // Keys pressed while events were lost reached the application in an order nobody knows:
    // they count for the modifiers they hold, and are not reported as typed.
    const QSet<uint16_t> pressed = QSet<uint16_t>(downNow).subtract(keyboard.down);
    for (const uint16_t code : pressed)
        feed(code, true);
    keyboard.down = downNow;
    qCInfo(lcEngine).noquote()
        << QStringLiteral("Events of the keyboard \"%1\" were lost; its keys were read again")
               .arg(keyboard.name);
    // As after a click: what was typed before may not be what is before the caret now.
    if (m_pointerPressed)
        m_pointerPressed();
}

void EvdevKeyMonitor::remove(Keyboard* keyboard, bool vanished) {
    const auto found = std::find_if(m_keyboards.begin(), m_keyboards.end(),
                                    [keyboard](const auto& known) { return known.get() == keyboard; });
    if (found == m_keyboards.end())
        return;
    std::unique_ptr<Keyboard> gone = std::move(*found);
    m_keyboards.erase(found);
    if (vanished)
        qCInfo(lcEngine).noquote()
            << QStringLiteral("The keyboard \"%1\" went away").arg(gone->name);
    // Its keys can no longer be let go: they stop holding their modifiers now.
    for (const uint16_t code : std::as_const(gone->down))
        feed(code, false);
    // Called from the notifier's own signal: it is deleted once that returns.
    gone->notifier->setEnabled(false);
    gone->notifier.release()->deleteLater();
    ::close(gone->fd);
}

void EvdevKeyMonitor::lockLight(uint16_t led, bool on) {
    // The compositor lights Caps Lock and Num Lock as its own state says; where ours differs
    // (a lock switched before Typolet started), the light is right.
    if ((led != LED_CAPSL && led != LED_NUML) || !ensureState())
        return;
    const char* name = led == LED_CAPSL ? XKB_MOD_NAME_CAPS : XKB_MOD_NAME_NUM;
    const char* light = led == LED_CAPSL ? XKB_LED_NAME_CAPS : XKB_LED_NAME_NUM;
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(m_keymap, name);
    if (index == XKB_MOD_INVALID || index >= 32 ||
        xkb_keymap_led_get_index(m_keymap, light) == XKB_LED_INVALID)
        return;
    if ((xkb_state_led_name_is_active(m_state, light) > 0) == on)
        return; // our state lights it the same
    const xkb_mod_mask_t bit = 1u << index;
    xkb_mod_mask_t locked = xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED);
    if (bool(locked & bit) == on)
        return;
    locked = on ? locked | bit : locked & ~bit;
    // The keymap decides what a light shows: with an option such as grp_led:caps the Caps Lock
    // light shows the second layout, not the lock. The lock is taken from the light only when
    // switching it would light the light as the compositor did.
    xkb_state* probe = xkb_state_new(m_keymap);
    if (!probe)
        return;
    const auto update = [this, locked](xkb_state* state) {
        xkb_state_update_mask(state, xkb_state_serialize_mods(m_state, XKB_STATE_MODS_DEPRESSED),
                              xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LATCHED), locked,
                              xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_DEPRESSED),
                              xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_LATCHED),
                              xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_LOCKED));
    };
    update(probe);
    const bool showsTheLock = (xkb_state_led_name_is_active(probe, light) > 0) == on;
    xkb_state_unref(probe);
    if (showsTheLock)
        update(m_state);
}

void EvdevKeyMonitor::feed(uint16_t code, bool down) {
    if (ensureState())
        xkb_state_update_key(m_state, code + xkbOffset, down ? XKB_KEY_DOWN : XKB_KEY_UP);
}

bool EvdevKeyMonitor::ensureState() {
    xkb_keymap* keymap = m_keymaps.currentKeymap();
    if (!keymap)
        return m_state != nullptr;
    if (keymap == m_keymap)
        return true;
    // A new keymap (another layout chosen): a fresh state keeps the locks and the keys held.
    xkb_state* state = xkb_state_new(keymap);
    if (!state)
        return m_state != nullptr;
    if (m_state) {
        xkb_state_update_mask(state, 0, 0, xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED),
                              0, 0, xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_LOCKED));
        xkb_state_unref(m_state);
    }
    if (m_keymap)
        xkb_keymap_unref(m_keymap);
    m_state = state;
    m_keymap = xkb_keymap_ref(keymap);
    for (const auto& keyboard : m_keyboards)
        for (const uint16_t code : std::as_const(keyboard->down))
            xkb_state_update_key(m_state, code + xkbOffset, XKB_KEY_DOWN);
    return true;
}

void EvdevKeyMonitor::followGroupReport() {
    // A layout switched through the desktop's own controls, not by keys: a new report sets the
    // group, and keys that switch groups go on from there. The first layout is a report too.
    const std::optional<uint32_t> reported =
        m_groupReport ? m_groupReport() : std::optional<uint32_t>();
    if (reported == m_lastGroupReport)
        return;
    m_lastGroupReport = reported;
    if (!reported)
        return;
    xkb_state_update_mask(m_state, xkb_state_serialize_mods(m_state, XKB_STATE_MODS_DEPRESSED),
                          xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LATCHED),
                          xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED), 0, 0,
                          *reported);
}

KeyboardState EvdevKeyMonitor::currentState() {
    KeyboardState state;
    if (ensureState()) {
        followGroupReport();
        state.baseMods = xkb_state_serialize_mods(m_state, XKB_STATE_MODS_DEPRESSED);
        state.latchedMods = xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LATCHED);
        state.lockedMods = xkb_state_serialize_mods(m_state, XKB_STATE_MODS_LOCKED);
        state.group = xkb_state_serialize_layout(m_state, XKB_STATE_LAYOUT_EFFECTIVE);
    }
    return state;
}

void EvdevKeyMonitor::report(const KeyStroke& stroke) {
    if (m_keyDown)
        m_keyDown(stroke);
}
