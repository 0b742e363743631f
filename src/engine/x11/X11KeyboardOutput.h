#pragma once

#include "KeyboardOutput.h"
#include "KeystrokePlanner.h"
#include "PasteKeys.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <optional>

class FocusedApplication;
class X11ClipboardLender;
class X11KeymapSource;
typedef struct _XDisplay Display;

// Types into the focused application with XTest on its own Xlib connection.
//
// Backspaces are BackSpace press/release pairs, caret moves Left pairs. Text is typed with the
// layout's own keys where it has them, otherwise with spare keycodes bound to the characters'
// keysyms (see KeystrokePlanner). The content arrives as stored whatever the user holds or has
// locked: held modifiers are released and pressed again afterwards, latched and locked modifiers
// (Caps Lock, Num Lock, level-3/5 locks) are cleared and restored, and text is typed on the
// group in force.
//
// Long text goes out a chunk per event-loop turn, so Typolet's windows stay responsive, a
// cancel takes effect within a chunk, and a new layout loaded meanwhile is used from the next
// chunk on. Waiting before a spare keycode may be rebound is a timer, never a sleep. Each chunk
// goes out under a server grab, checked against the keymap in force: a layout loaded by another
// client cannot slip in between reading the keymap and the keys' arrival.
//
// Spare keycodes keep their bindings for a while after typing (clients may still be reading
// the events that used them) and are emptied again when Typolet has been idle for
// `restoreDelayMs`, and when this object is destroyed.
//
// A text to paste is lent to the clipboard, and the keys that the focused application pastes
// with are pressed (see PasteKeys); the next step waits until the application has taken the
// text or the clipboard lender gave up waiting. Where there are no paste keys, or the
// clipboard cannot be lent, the text is typed like any other.
class X11KeyboardOutput : public QObject, public KeyboardOutput {
    Q_OBJECT
public:
    explicit X11KeyboardOutput(X11KeymapSource& keymaps, QObject* parent = nullptr);
    ~X11KeyboardOutput() override;

    // Opens the connection and loads the keyboard mapping now, so the first expansion does
    // not pay for it between the user's keys. False without a display.
    bool open();

    void perform(const Expansion& actions, std::function<void()> finished) override;
    void cancel() override;

    // Empties every spare keycode we bound.
    void restoreSpareKeyCodes();

    // Pasting needs both; without them every text is typed.
    void setPasting(X11ClipboardLender* clipboard, FocusedApplication* focus);

    // Told which modifier keys were pressed again for the user once an expansion is done.
    void setKeysLeftDownHandler(std::function<void(const QList<uint32_t>&)> handler);

    // How long a rebinding waits after the last key that may still be unread (clients handle
    // the MappingNotify and refetch the mapping only when they reach it in their queue).
    static constexpr int settleBaseMs = 150;
    static constexpr double settlePerKeyMs = 2.0;
    static constexpr int restoreDelayMs = 10000;
    // Characters typed per event-loop turn.
    static constexpr int chunkLength = 64;

private:
    struct Job : KeyboardOutput::Job {
        qsizetype textPosition = 0;
        std::optional<KeystrokePlanner::Plan> plan;
        qsizetype chunkEnd = 0;
        qsizetype batch = 0;
        QList<uint32_t> releasedModifiers;
        unsigned int lockedMods = 0, latchedMods = 0;
        int latchedGroup = 0;
        uint32_t group = 0;
        quint64 id = 0;
        bool typingPaste = false; // the paste action is typed after all
    };

    void begin();
    void step();
    bool typeChunk(); // false when it has to wait before going on
    void finish();
    // False when the text cannot be pasted here; otherwise the lender calls back.
    bool startPaste(const QString& text);
    void pressPasteKeys(PasteKeys::Keys keys);
    // Lets go of every key held down; returns the modifiers, to press again afterwards.
    QList<uint32_t> releaseHeldKeys();
    void bind(const QList<KeystrokePlanner::Binding>& bindings);
    qint64 msBeforeRebinding() const;
    void tap(uint32_t keyCode);
    // False when the keymap kept changing under us; then no grab is held.
    bool grabServerWithCurrentKeymap();
    bool takeKeymapChanges();

    X11KeymapSource& m_keymaps;
    Display* m_display = nullptr;
    int m_xkbEventType = -1;
    KeystrokePlanner m_planner;
    QElapsedTimer m_lastPost;
    int m_keysInLastBatch = 0;
    QTimer m_restoreTimer;
    QTimer m_stepTimer;
    std::optional<Job> m_job;
    quint64 m_jobs = 0;
    X11ClipboardLender* m_clipboard = nullptr;
    FocusedApplication* m_focus = nullptr;
    std::function<void(const QList<uint32_t>&)> m_keysLeftDown;
};
