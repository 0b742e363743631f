#pragma once

#include "KeyMonitor.h"

#include <QList>
#include <QObject>

// A key monitor driven by the test. press() is the user typing: outside a hold the key is
// reported at once; while the engine holds the keyboard it is queued (and shown to the engine's
// filter), and when the engine lets go it is reported on a later turn of the event loop, one
// key per turn, as the X11 monitor does. slip() is a key that reached the application just
// before a hold began: the next holdKeys() hands it back.
class FakeKeyMonitor : public KeyMonitor {
public:
    explicit FakeKeyMonitor(bool startSucceeds = true) : m_startSucceeds(startSucceeds) {}

    bool start(KeyHandler handler) override;
    HoldResult holdKeys(HeldKeyFilter onHeld) override;
    void releaseKeys() override;
    void ownTypingStarts() override {}
    void setPointerPressHandler(std::function<void()> handler) override {
        m_pointerPressed = std::move(handler);
    }
    void click() { m_pointerPressed(); }
    void setFocusChangeHandler(std::function<void()> handler) override {
        m_focusChanged = std::move(handler);
    }
    void focusChange() { m_focusChanged(); }

    void press(uint32_t keyCode, KeyboardState state = {}, int repeats = 0,
               bool uncertain = false);
    void slip(uint32_t keyCode);

    bool canHold = true;
    bool holding() const { return m_holding; }
    int startCalls = 0;
    QList<uint32_t> dropped; // held keys the engine kept from the application

private:
    void queueStep();
    void replayStep();

    bool m_startSucceeds;
    bool m_holding = false;
    bool m_releasing = false;
    bool m_stepQueued = false;
    QObject m_context; // where the replay's turns are queued
    KeyHandler m_handler;
    std::function<void()> m_pointerPressed;
    std::function<void()> m_focusChanged;
    HeldKeyFilter m_onHeld;
    QList<KeyStroke> m_held;
    QList<KeyStroke> m_slipped;
};
