#include "KeyHold.h"

KeyHold::KeyHold(KeyMonitor& monitor, KeyMonitor::HeldKeyFilter onHeld) : m_monitor(monitor) {
    KeyMonitor::HoldResult result = m_monitor.holdKeys(std::move(onHeld));
    m_slipped = std::move(result.slipped);
    m_holding = result.holding;
}

// Also where the keyboard could not be held: letting go ends Typolet's own typing for the
// monitor too.
KeyHold::~KeyHold() { m_monitor.releaseKeys(); }
