#pragma once

#include "KeyboardState.h"

#include <cstdint>

// One key-down that the focused application received, with the state it was read with.
//
// A key held down repeats in the application; the monitor reports those repeats when the key
// stops repeating, as one stroke whose `repeats` says how many further key-downs there were.
// When the count could be off by one (the key was let go right at a repeat), it is uncertain.
struct KeyStroke {
    uint32_t keyCode = 0;
    KeyboardState state;
    int repeats = 0;
    bool repeatCountUncertain = false;
    // Read well after it was typed (Typolet could not run for a moment): the application has
    // had it, and what came after it, for a while; where the caret is now is not known.
    bool late = false;
    // Held during an expansion and let go after it: it is in the application now, and keys held
    // after it follow on later turns of the event loop.
    bool replayed = false;
};
