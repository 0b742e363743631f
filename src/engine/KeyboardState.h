#pragma once

#include <cstdint>

// The modifier and layout state that a key is read with, as the keyboard's owner reports it:
// the masks use the keymap's real modifiers (Shift, Lock, Control, Mod1..Mod5), the group is
// the effective layout group.
struct KeyboardState {
    uint32_t baseMods = 0;    // held down
    uint32_t latchedMods = 0; // apply to the next key only (sticky keys, ISO level latches)
    uint32_t lockedMods = 0;  // Caps Lock, Num Lock, level locks
    uint32_t group = 0;
    friend bool operator==(const KeyboardState&, const KeyboardState&) = default;
};
