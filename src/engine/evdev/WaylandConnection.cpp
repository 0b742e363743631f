#include "WaylandConnection.h"

#include <QSocketNotifier>
#include <wayland-client.h>

#include <algorithm>
#include <cstring>

namespace {
void globalRemove(void*, wl_registry*, uint32_t) {}
} // namespace

const wl_registry_listener WaylandConnection::registryListener{WaylandConnection::global,
                                                               globalRemove};

void WaylandConnection::global(void* data, wl_registry* registry, uint32_t name,
                               const char* interface, uint32_t version) {
    auto* self = static_cast<WaylandConnection*>(data);
    if (!self->m_seat && std::strcmp(interface, wl_seat_interface.name) == 0)
        self->m_seat = static_cast<wl_seat*>(
            wl_registry_bind(registry, name, &wl_seat_interface, std::min<uint32_t>(version, 5)));
    else if (self->m_onGlobal)
        self->m_onGlobal(registry, name, interface, version);
}

std::unique_ptr<WaylandConnection> WaylandConnection::open(const QString& display,
                                                           GlobalHandler onGlobal) {
    const QByteArray name = display.toLocal8Bit();
    wl_display* connected = wl_display_connect(name.isEmpty() ? nullptr : name.constData());
    if (!connected)
        return nullptr;
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(connected, std::move(onGlobal)));
}

WaylandConnection::WaylandConnection(wl_display* display, GlobalHandler onGlobal)
    : m_display(display), m_registry(wl_display_get_registry(display)),
      m_onGlobal(std::move(onGlobal)) {
    wl_registry_add_listener(m_registry, &registryListener, this);
}

WaylandConnection::~WaylandConnection() {
    delete m_notifier;
    if (m_seat)
        wl_seat_destroy(m_seat);
    wl_registry_destroy(m_registry);
    // The owner's last requests (destroying what it bound) reach the compositor first.
    wl_display_flush(m_display);
    wl_display_disconnect(m_display);
}

bool WaylandConnection::roundtrip() { return wl_display_roundtrip(m_display) >= 0; }

void WaylandConnection::watch() {
    if (m_notifier)
        return;
    m_notifier = new QSocketNotifier(wl_display_get_fd(m_display), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        if (wl_display_dispatch(m_display) < 0) {
            m_notifier->setEnabled(false);
            emit lost();
            return;
        }
        wl_display_flush(m_display);
    });
}
