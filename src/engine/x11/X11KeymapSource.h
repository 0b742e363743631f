#pragma once

#include "KeymapSource.h"

struct xcb_connection_t;
struct xkb_context;

// The server's keymap, fetched through its own XCB connection and kept until the key monitor
// reports a change (a new layout from setxkbmap, a remapped key); the next request then fetches
// it again. The group follows the monitor's XKB state events.
class X11KeymapSource : public KeymapSource {
public:
    X11KeymapSource();
    ~X11KeymapSource() override;
    X11KeymapSource(const X11KeymapSource&) = delete;
    X11KeymapSource& operator=(const X11KeymapSource&) = delete;

    xkb_keymap* currentKeymap() override;
    uint32_t currentGroup() override;

    // The server's keymap changed; fetch it again when next asked.
    void keymapChanged() { m_stale = true; }
    void setGroup(uint32_t group) { m_group = group; }

    // Counts fetches, so callers can see that a change was picked up.
    int fetchCount() const { return m_fetches; }

private:
    bool connect();
    void fetch();

    xcb_connection_t* m_connection = nullptr;
    int32_t m_deviceId = -1;
    xkb_context* m_context = nullptr;
    xkb_keymap* m_keymap = nullptr;
    bool m_stale = true;
    uint32_t m_group = 0;
    int m_fetches = 0;
};
