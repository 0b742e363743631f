#include "FakeKeyMonitor.h"

bool FakeKeyMonitor::start(KeyHandler handler) {
    ++startCalls;
    if (!m_startSucceeds)
        return false;
    m_handler = std::move(handler);
    return true;
}

KeyMonitor::HoldResult FakeKeyMonitor::holdKeys(HeldKeyFilter onHeld) {
    if (m_holding) {
        m_heldAgain = true;
        return {{}, true};
    }
    m_holding = true;
    m_onHeld = std::move(onHeld);
    return {std::exchange(m_slipped, {}), canHold};
}

void FakeKeyMonitor::releaseKeys() {
    m_heldAgain = false;
    while (!m_held.isEmpty() && !m_heldAgain)
        m_handler(m_held.takeFirst());
    if (!m_heldAgain)
        m_holding = false;
}

void FakeKeyMonitor::press(uint32_t keyCode, KeyboardState state, int repeats, bool uncertain) {
    const KeyStroke stroke{keyCode, state, repeats, uncertain};
    if (!m_holding || !canHold) {
        if (m_handler)
            m_handler(stroke);
        return;
    }
    if (m_onHeld && !m_onHeld(stroke)) {
        dropped.append(keyCode);
        return;
    }
    m_held.append(stroke);
}

void FakeKeyMonitor::slip(uint32_t keyCode) { m_slipped.append(KeyStroke{keyCode, {}, 0, false}); }
