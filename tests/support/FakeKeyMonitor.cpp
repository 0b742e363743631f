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
        m_releasing = false; // the keys not let go yet wait for this hold
        return {{}, true};
    }
    m_holding = true;
    m_onHeld = std::move(onHeld);
    return {std::exchange(m_slipped, {}), canHold};
}

void FakeKeyMonitor::releaseKeys() {
    m_releasing = true;
    queueStep();
}

void FakeKeyMonitor::queueStep() {
    if (!std::exchange(m_stepQueued, true))
        QMetaObject::invokeMethod(&m_context, [this] { replayStep(); }, Qt::QueuedConnection);
}

void FakeKeyMonitor::replayStep() {
    m_stepQueued = false;
    if (!m_releasing)
        return;
    if (m_held.isEmpty()) {
        m_releasing = m_holding = false;
        return;
    }
    KeyStroke stroke = m_held.takeFirst();
    stroke.replayed = true;
    m_handler(stroke);
    if (m_releasing)
        queueStep();
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
