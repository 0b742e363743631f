#include "FakeKeyMonitor.h"

#include "MainQueue.h"

bool FakeKeyMonitor::start(KeyDownHandler handler) {
    ++startCalls;
    if (!m_startSucceeds)
        return false;
    m_handler = std::move(handler);
    return true;
}

void FakeKeyMonitor::discardPendingKeys() {
    ++discardCalls;
    discarded += m_pending;
    m_pending.clear();
}

void FakeKeyMonitor::press(uint32_t keyCode) {
    if (m_handler)
        m_handler(keyCode);
}

void FakeKeyMonitor::arrive(uint32_t keyCode) {
    m_pending.append(keyCode);
    MainQueue::async([this] { deliverPending(); }, this);
}

void FakeKeyMonitor::deliverPending() {
    const QList<uint32_t> keys = std::exchange(m_pending, {});
    for (const uint32_t key : keys)
        press(key);
}
