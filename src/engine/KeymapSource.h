#pragma once

#include <cstdint>

struct xkb_keymap;

// Where the key translator and the typing planner get the keyboard's layout from: the keymap
// that is in force now and the layout group the user has switched to. The X11 source asks the
// server; tests compile layouts by name.
class KeymapSource {
public:
    virtual ~KeymapSource() = default;

    // The current keymap, owned by the source and valid until the next call; null when no
    // keymap can be had.
    virtual xkb_keymap* currentKeymap() = 0;
    // The active layout group (0 is the first layout).
    virtual uint32_t currentGroup() = 0;
};
