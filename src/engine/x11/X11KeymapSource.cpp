#include "X11KeymapSource.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

X11KeymapSource::X11KeymapSource() = default;

X11KeymapSource::~X11KeymapSource() {
    xkb_keymap_unref(m_keymap);
    xkb_context_unref(m_context);
    if (m_connection)
        xcb_disconnect(m_connection);
}

bool X11KeymapSource::connect() {
    if (m_connection && !xcb_connection_has_error(m_connection))
        return m_deviceId >= 0;
    if (m_connection)
        xcb_disconnect(m_connection);
    m_deviceId = -1;
    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection))
        return false;
    if (!xkb_x11_setup_xkb_extension(m_connection, XKB_X11_MIN_MAJOR_XKB_VERSION,
                                     XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS,
                                     nullptr, nullptr, nullptr, nullptr))
        return false;
    m_deviceId = xkb_x11_get_core_keyboard_device_id(m_connection);
    if (!m_context)
        m_context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    return m_deviceId >= 0 && m_context;
}

void X11KeymapSource::fetch() {
    xkb_keymap_unref(m_keymap);
    m_keymap = nullptr;
    if (!connect())
        return;
    m_keymap = xkb_x11_keymap_new_from_device(m_context, m_connection, m_deviceId,
                                              XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!m_keymap)
        return;
    ++m_fetches;
    m_stale = false;
    // The group as it is now; state events keep it current from here.
    if (xkb_state* state = xkb_x11_state_new_from_device(m_keymap, m_connection, m_deviceId)) {
        m_group = xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE);
        xkb_state_unref(state);
    }
}

xkb_keymap* X11KeymapSource::currentKeymap() {
    if (m_stale || !m_keymap)
        fetch();
    return m_keymap;
}

uint32_t X11KeymapSource::currentGroup() {
    if (m_stale || !m_keymap)
        fetch();
    return m_group;
}
