#pragma once

#include "KeyStroke.h"

#include <QList>
#include <functional>

// Watches the keys the user presses in every application. Outside an expansion it takes
// nothing: every key reaches the focused application unchanged and is reported afterwards.
//
// For the length of an expansion the engine asks it to hold the user's keys: they are kept
// from every application and reach the focused one, in the order typed, only when released,
// after the expansion's own keys. Typolet's own synthetic keys are never reported.
class KeyMonitor {
public:
    using KeyHandler = std::function<void(const KeyStroke&)>;

    virtual ~KeyMonitor() = default;

    // Starts reporting key-downs to `handler` on the main thread. False when the monitor could
    // not be set up; nothing is reported then.
    virtual bool start(KeyHandler handler) = 0;

    // Starts holding the user's keys (the engine does it through a KeyHold); `onHeld` sees each
    // key-down as it is held (so the engine can notice Escape). Called again while holding, or
    // while held keys are being let go, it holds on (the keys not let go yet stay held) and
    // returns nothing. Returns the key-downs that reached the application after the last
    // reported one but before the hold took effect: they are not reported again. `holding` is
    // false when the keyboard could not be held (keys then go on reaching the application).
    struct HoldResult {
        QList<KeyStroke> slipped;
        bool holding = false;
    };
    // `onHeld` returns false for a key that must not reach the application at all.
    using HeldKeyFilter = std::function<bool(const KeyStroke&)>;
    virtual HoldResult holdKeys(HeldKeyFilter onHeld) = 0;
    // False where keys are only ever read, never taken (holdKeys() then never holds).
    virtual bool canHoldKeys() const { return true; }

    // `handler` runs on the main thread when the user presses a pointer button that can move
    // the caret (not the wheel): what was typed before is then no longer before the caret.
    virtual void setPointerPressHandler(std::function<void()> handler) { (void)handler; }

    // `handler` runs on the main thread when another window may have been given the keyboard
    // focus (on X11 the window manager's active window changed, whoever asked for it): what
    // was typed belongs to the window it was typed in.
    virtual void setFocusChangeHandler(std::function<void()> handler) { (void)handler; }

    // Typolet is about to type (an expansion's output follows at once): where its own keys
    // come back like anyone's, from now until releaseKeys() they are told apart and never
    // reported. Keys of other programs are reported at any other time, also while holding.
    virtual void ownTypingStarts() {}

    // The keys held now, and those held from now on, are for the window that has the focus
    // now: one of Typolet's own windows had the focus while they were held, and gave it back
    // to the window they were typed for.
    virtual void heldKeysFollowFocus() {}

    // Lets the held keys go, from the next turn of the event loop on: each reaches the focused
    // application and is then reported (marked `replayed`), one per turn, never from inside this
    // call. When the report of one starts another expansion (holdKeys() is called meanwhile),
    // the rest stay held until the next releaseKeys().
    virtual void releaseKeys() = 0;
};
