#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QSocketNotifier;
struct wl_display;
struct wl_registry;
struct wl_registry_listener;
struct wl_seat;

// One client connection to the compositor: the display, its registry with the user's seat
// (the first one announced) bound, every other global handed to the owner to bind what it
// needs, and the reading of the compositor's events on the event loop. The owner destroys
// what it made before this goes; this then lets go of the seat, the registry and the display.
class WaylandConnection : public QObject {
    Q_OBJECT
public:
    using GlobalHandler = std::function<void(wl_registry* registry, uint32_t name,
                                             const char* interface, uint32_t version)>;

    // Connects to `display` (as WAYLAND_DISPLAY takes it: a name in XDG_RUNTIME_DIR or an
    // absolute path; empty for WAYLAND_DISPLAY itself) and asks for the globals, which arrive
    // at the next roundtrip(). Null when no compositor answers.
    static std::unique_ptr<WaylandConnection> open(const QString& display,
                                                   GlobalHandler onGlobal = {});
    ~WaylandConnection() override;

    wl_display* display() const { return m_display; }
    // Null until the first roundtrip(), or when the compositor has no seat.
    wl_seat* seat() const { return m_seat; }
    // Waits until the compositor has answered every request so far; false when the
    // connection broke.
    bool roundtrip();
    // From now on the compositor's events are read as they come; lost() says when the
    // connection broke (connect to it queued: the owner cannot drop this from inside it).
    void watch();

signals:
    void lost();

private:
    WaylandConnection(wl_display* display, GlobalHandler onGlobal);
    static void global(void* data, wl_registry* registry, uint32_t name, const char* interface,
                       uint32_t version);
    static const wl_registry_listener registryListener;

    wl_display* m_display;
    wl_registry* m_registry = nullptr;
    wl_seat* m_seat = nullptr;
    GlobalHandler m_onGlobal;
    QSocketNotifier* m_notifier = nullptr; // a child
};
