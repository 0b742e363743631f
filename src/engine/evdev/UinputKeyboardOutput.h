#pragma once

#include "KeyboardOutput.h"
#include "KeyboardState.h"
#include "UinputKeystrokePlanner.h"

#include <QObject>
#include <QTimer>
#include <optional>

class KeymapSource;

// Types into the focused application through a kernel virtual keyboard (uinput): writes
// `struct input_event` records to the device's file descriptor, which the compositor reads
// like any other keyboard, with the session's keymap.
//
// Backspaces are BackSpace presses, caret moves Left presses, text (also text the engine meant
// to paste: no application's paste keys can be known here) the keys (and level keys:
// Shift, AltGr) that the keymap's active group gives for each character (see
// UinputKeystrokePlanner). Lock state is accounted for: with Caps Lock on a lower-case letter
// is typed with Shift. Only when a lock makes part of the text impossible are the locks tapped
// off before typing and on again after.
//
// Modifiers the user holds cannot be let go from here: the kernel passes a release only for a
// key that the same device holds down, and a compositor counts a key as up only once every
// keyboard has released it. Pressing one again afterwards would leave it stuck on our device.
// So typing waits, on a timer, until the user lets go of them (a command is usually typed
// without them). After `heldModifiersWaitMs` it types planned under them when only level keys
// (Shift, AltGr, the level-5 key) are held; with Control, Alt or Super still down every key
// would be a shortcut in the application (BackSpace becomes Ctrl+BackSpace), so the expansion
// is cancelled instead.
//
// Text is typed in the group the user's keyboards are in (the key monitor's state), not the
// group the keymap's source last heard of: compositors tell the active group only to the
// focused client.
//
// Keys go out in batches of at most `eventsPerBatch` events, one batch per timer tick: the
// kernel keeps a queue of 64 events per reader of a keys-only device and drops the rest when a
// compositor falls behind, so a batch must fit in half of it; Typolet's windows stay responsive
// meanwhile.
class UinputKeyboardOutput : public QObject, public KeyboardOutput {
    Q_OBJECT
public:
    explicit UinputKeyboardOutput(KeymapSource& keymaps, QObject* parent = nullptr);
    ~UinputKeyboardOutput() override;

    // Where the events go: the virtual device's descriptor (or a pipe); not owned. -1: nowhere.
    void setDevice(int fd) { m_fd = fd; }
    bool hasDevice() const { return m_fd >= 0; }

    // The state of the user's keyboards now (held and locked modifiers), as the key monitor
    // tracks it. Without it no lock or held modifier is assumed.
    void setKeyboardStateQuery(std::function<KeyboardState()> query);

    // Characters that no key of the layout gives. Without a handler they are skipped and one
    // diagnostic line gives their count. A handler (the paste path) gets each run of them in
    // order and calls `done` once it has put them in; typing then goes on.
    using MissingTextHandler = std::function<void(const QString& text, std::function<void()> done)>;
    void setMissingTextHandler(MissingTextHandler handler);

    void perform(const Expansion& actions, std::function<void()> finished) override;
    void cancel() override;

    // While the user's session is not the active one nothing is typed: an expansion under way
    // stops, and new ones are refused.
    void setSessionActive(bool active);

    static constexpr int eventsPerBatch = 32;
    static constexpr int batchIntervalMs = 8;
    static constexpr int heldModifiersWaitMs = 1500;
    static constexpr int heldModifiersPollMs = 15;

private:
    struct Job : KeyboardOutput::Job {
        qsizetype position = 0; // taps done, or steps of the text's plan done
        std::optional<QList<UinputKeystrokePlanner::Step>> steps;
        bool planned = false;
        bool waitingForPaste = false;
        int waitedMs = 0;
        QList<uint32_t> modifiersDown; // level keys our device holds now
        QList<uint32_t> locksCleared;  // lock keys tapped before typing, tapped again after
    };

    void step();
    bool prepare(); // false while waiting for held modifiers to be let go
    // Missing characters of the job's texts with the planner as it is set up now.
    int missingCount(const UinputKeystrokePlanner& planner) const;
    void runBatch();
    void finish();
    void setModifiers(const QList<uint32_t>& keyCodes);
    void key(uint32_t keyCode, bool down);
    void tap(uint32_t keyCode);
    void writeEvent(uint16_t type, uint16_t code, int32_t value);

    KeymapSource& m_keymaps;
    int m_fd = -1;
    UinputKeystrokePlanner m_planner;
    std::function<KeyboardState()> m_stateQuery;
    MissingTextHandler m_missingText;
    QTimer m_stepTimer;
    std::optional<Job> m_job;
    int m_eventsInBatch = 0;
    bool m_writeFailed = false;
    bool m_sessionActive = true;
};
