#pragma once

#include "KeyMonitor.h"

// The user's keys held back from every application for as long as this object lives (where
// the monitor can hold them): the expansion's own keys go first, and when it goes the monitor
// lets the held keys go, in order, each reported as an ordinary key on a later turn of the
// event loop. A hold asked for while the monitor still lets go of an earlier one's keys takes
// over the keys not yet let go.
class KeyHold {
public:
    KeyHold(KeyMonitor& monitor, KeyMonitor::HeldKeyFilter onHeld);
    ~KeyHold();
    KeyHold(const KeyHold&) = delete;
    KeyHold& operator=(const KeyHold&) = delete;

    // False when the keyboard could not be held: keys go on reaching the application.
    bool holding() const { return m_holding; }
    // The key-downs that reached the application after the last reported one, before the hold
    // began (handed out once).
    QList<KeyStroke> takeSlipped() { return std::exchange(m_slipped, {}); }

private:
    KeyMonitor& m_monitor;
    QList<KeyStroke> m_slipped;
    bool m_holding = false;
};
