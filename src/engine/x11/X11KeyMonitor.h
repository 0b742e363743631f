#pragma once

#include "KeyMonitor.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;
union _XEvent;
typedef union _XEvent XEvent;

// Watches key presses in every application through XInput2 raw key events on its own Xlib
// connection, read on the main thread when the connection's socket has data. Outside an
// expansion nothing is grabbed: every key reaches the focused application unchanged.
//
// Raw events carry no auto-repeat, but the application receives the repeats of a held key;
// they are recovered from the press and release times and the device's repeat rate, and
// reported when the key stops repeating.
//
// Each key is read with the modifier and lock state of its master keyboard, which the XKB
// state events on the same connection keep current, in the order the server sent them.
//
// While an expansion runs, every keyboard except Typolet's own XTEST device is grabbed: the
// other slaves of the core keyboard (a grabbed slave is detached from its master, so the
// user's keys neither reach applications nor change the modifiers Typolet types with), and
// any other master keyboard whole (a floated slave of another master can leave that master
// with stale keys). The keys are queued and replayed through XTEST afterwards, one key-down per
// turn of the event loop, each reported after it reached the application; the hold's stages are
// drawn in docs/engine.md. Events of Typolet's XTEST device are not reported while it is typing
// or replaying, and only then:
// other programs type through the same device (xdotool, on-screen keyboards, VNC servers),
// and their keys are the user's, also while a command waits for its word to end.
class X11KeyMonitor : public QObject, public KeyMonitor {
    Q_OBJECT
public:
    explicit X11KeyMonitor(QObject* parent = nullptr);
    ~X11KeyMonitor() override;

    bool start(KeyHandler handler) override;
    HoldResult holdKeys(HeldKeyFilter onHeld) override;
    void releaseKeys() override;
    void ownTypingStarts() override { m_stage = HoldStage::OwnTyping; }
    void heldKeysFollowFocus() override;
    void setFocusChangeHandler(std::function<void()> handler) override {
        m_focusChanged = std::move(handler);
    }
    void setPointerPressHandler(std::function<void()> handler) override {
        m_pointerPressed = std::move(handler);
    }

    void setKeymapChangedHandler(std::function<void()> handler);
    void setGroupChangedHandler(std::function<void(uint32_t)> handler);

    // Keys that Typolet's XTEST device was left holding (modifiers pressed again for the user):
    // released through it as soon as the user lets go of them, so the device never keeps a key
    // down that the user no longer holds.
    void noteSyntheticKeysDown(const QList<uint32_t>& keyCodes);

private:
    struct RepeatControls {
        bool enabled = false;
        int delayMs = 660;
        int intervalMs = 40;
        QSet<uint32_t> repeatingKeys;
    };
    struct Repeating {
        uint32_t keyCode = 0;
        unsigned long since = 0;
        KeyStroke stroke;
    };
    struct HeldEvent {
        bool press = false;
        KeyStroke stroke;
    };

    void readEvents();
    // Events Xlib has read from the socket already (a round trip reads them).
    void processQueued();
    void process(XEvent& event);
    void rawKey(int master, int source, uint32_t keyCode, unsigned long time, bool press);
    void heldKey(const void* deviceEvent, bool press);
    void report(const KeyStroke& stroke);
    // A focus change or a click: told at once, or once holdKeys() is done when seen inside it
    // (the engine is in the middle of an expansion's start then).
    void notify(const std::function<void()>& handler);
    void stopRepeating(int source, unsigned long time);
    const RepeatControls& controlsOf(int device);
    void scanDevices();
    // Held events go out through XTEST up to and including the next key-down, which is then
    // reported; false when none is left.
    bool replayNextPress();
    void scheduleReplay();
    // One turn of letting the held keys go, run from the event loop.
    void replayStep();
    void dropHeldPresses();
    unsigned long inputFocus();
    void endOwnOutput();
    // Watches the window that has the keyboard focus now, so that its losing the focus is
    // seen in order with the keys, whoever moved it (a window manager or any program).
    void followFocus();
    // Whether a key of this server time is read well after it was typed.
    bool arrivedLate(unsigned long serverTime);

    Display* m_display = nullptr;
    int m_xiOpcode = 0;
    int m_xkbEventType = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    KeyHandler m_keyDown;
    std::function<void()> m_keymapChanged;
    std::function<void()> m_pointerPressed;
    std::function<void()> m_focusChanged;
    unsigned long m_activeWindowAtom = 0;
    unsigned long m_focusWindow = 0; // the window whose focus events we watch
    std::function<void(uint32_t)> m_groupChanged;

    int m_coreKeyboard = -1;
    int m_ownXtestKeyboard = -1;
    QList<int> m_userKeyboards; // slave keyboards that are not ours
    QHash<int, KeyboardState> m_stateOfMaster;
    QHash<int, RepeatControls> m_controls;
    QHash<int, Repeating> m_repeating; // by source device

    // Free: nothing held. Holding: the engine asked to hold the keys (grabbed when
    // m_keysGrabbed). OwnTyping: its output types through XTEST, whose keys are ours now.
    // Releasing: the held keys are replayed through XTEST, one per turn of the event loop; a
    // hold asked for meanwhile turns it back to OwnTyping and the rest wait.
    enum class HoldStage { Free, Holding, OwnTyping, Releasing };
    HoldStage m_stage = HoldStage::Free;
    bool ownOutput() const {
        return m_stage == HoldStage::OwnTyping || m_stage == HoldStage::Releasing;
    }
    bool m_keysGrabbed = false;
    bool m_replayScheduled = false;
    QList<int> m_grabbed;
    QList<HeldEvent> m_held;
    unsigned long m_focusWhenHeld = 0; // where the held keys were typed
    QSet<uint32_t> m_droppedPresses; // held key-downs the engine kept from the application
    HeldKeyFilter m_onHeld;
    QList<KeyStroke>* m_slipped = nullptr; // while a hold begins or ends: where keys are reported
    // While a hold begins: raw key-downs of grabbed keyboards (key code and server time), by
    // their place in *m_slipped, until their grabbed twin shows they were held (-1 then).
    QHash<QPair<uint32_t, unsigned long>, qsizetype> m_rawWhileGrabbing;
    QSet<uint32_t> m_syntheticDown;
    QSet<uint32_t> m_replayedDown;

    // The server's clock against ours: the least gap between a key's server time and the
    // moment we read it is the gap of a key read at once.
    QElapsedTimer m_clock;
    qint64 m_leastGap = 0;
    qint64 m_leastGapAt = -1;
};
