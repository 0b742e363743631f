#pragma once

#include "KeyMonitor.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class DeviceHotplugSource;
class EvdevKeyboardFinder;
class InputDeviceAccess;
class KeymapSource;
class QSocketNotifier;
struct input_event;
struct xkb_keymap;
struct xkb_state;

// Watches the keys typed on every keyboard the kernel offers, from the keyboards' evdev nodes,
// read on the main thread when a node has events. Keyboards plugged in or taken away while
// Typolet runs come and go through the hot-plug source.
//
// The nodes are never grabbed: every key reaches the compositor unchanged, and Typolet only
// reads a copy. So the keys cannot be held during an expansion either: holdKeys() answers that
// it is not holding and keys go on being reported as they come.
//
// Events arrive in frames closed by SYN_REPORT and are taken a whole frame at a time. When the
// kernel's queue for a node overflowed (SYN_DROPPED), the rest of that frame is thrown away and
// the keys held down are read again from the device.
//
// The modifier and lock state a key is read with comes from an xkb state fed with the keys of
// every keyboard, as the compositor combines them into one seat: Shift held on one keyboard
// shifts the letters of another. Lock lights that the compositor switches correct the locks, where
// the keymap says the light shows that lock. Group switches made with keys are followed the
// same way; a group that the desktop reports (setGroupReport) sets the group whenever it changes.
//
// While the user's session is not the active one (another user at the seat), no keyboard is
// read: every node is closed, and they are opened again when the session is back.
class EvdevKeyMonitor : public QObject, public KeyMonitor {
    Q_OBJECT
public:
    EvdevKeyMonitor(KeymapSource& keymaps, InputDeviceAccess& access,
                    const EvdevKeyboardFinder& keyboards, DeviceHotplugSource* hotplug = nullptr,
                    QObject* parent = nullptr);
    ~EvdevKeyMonitor() override;

    bool start(KeyHandler handler) override;
    HoldResult holdKeys(HeldKeyFilter onHeld) override;
    bool canHoldKeys() const override { return false; }
    void releaseKeys() override {}
    void setPointerPressHandler(std::function<void()> handler) override {
        m_pointerPressed = std::move(handler);
    }

    // Reads the keyboard behind `fd` from now on (the monitor closes it when done). `path` is
    // its node, for when the hot-plug source says it went away.
    void addKeyboard(int fd, const QString& name, const QString& path = {});
    // The keyboards read now, by name.
    QStringList keyboardNames() const;
    // The group that a desktop service or the compositor last reported as active; nothing
    // when none did (the keys' own group switches are followed then).
    void setGroupReport(std::function<std::optional<uint32_t>()> report);
    // Whether the user's session is the active one at the seat. While it is not, the keys at
    // the seat are another user's: every keyboard is closed, and reopened when it is again.
    void setSessionActive(bool active);
    bool sessionActive() const { return m_sessionActive; }
    static constexpr int reopenAgainMs = 1000;
    // The modifiers held and locked on the user's keyboards now, and the active group (the
    // virtual keyboard types with them in mind).
    KeyboardState currentState();

private:
    struct Keyboard {
        int fd = -1;
        QString name;
        QString path;
        std::unique_ptr<QSocketNotifier> notifier;
        QByteArray unread;           // the start of a record not yet complete
        QList<input_event> frame;    // events since the last SYN_REPORT
        bool dropping = false;       // events were lost: skip to the end of the frame
        QSet<uint16_t> down;         // key codes held on this keyboard
        uint16_t repeatingCode = 0;  // the key the kernel repeats, 0 for none
        int repeats = 0;
        KeyStroke repeatingStroke;
    };

    void openKeyboards();
    void deviceChanged(const QString& path, bool added);
    void read(Keyboard* keyboard);
    // False when the device's state was read again: what is left of the read is already in it.
    bool handle(Keyboard& keyboard, const input_event& event);
    void applyFrame(Keyboard& keyboard);
    void key(Keyboard& keyboard, uint16_t code, int value);
    void lockLight(uint16_t led, bool on);
    void resynchronise(Keyboard& keyboard);
    void stopRepeating(Keyboard& keyboard);
    void feed(uint16_t code, bool down);
    void remove(Keyboard* keyboard, bool vanished);
    bool ensureState();
    void followGroupReport();
    void report(const KeyStroke& stroke);

    KeymapSource& m_keymaps;
    InputDeviceAccess& m_access;
    const EvdevKeyboardFinder& m_finder;
    DeviceHotplugSource* m_hotplug;
    std::vector<std::unique_ptr<Keyboard>> m_keyboards;
    KeyHandler m_keyDown;
    std::function<void()> m_pointerPressed;
    bool m_started = false;
    bool m_sessionActive = true;
    std::function<std::optional<uint32_t>()> m_groupReport;
    std::optional<uint32_t> m_lastGroupReport;
    xkb_keymap* m_keymap = nullptr; // our reference to the keymap m_state was made for
    xkb_state* m_state = nullptr;
};
