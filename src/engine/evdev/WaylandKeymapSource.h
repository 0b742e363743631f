#pragma once

#include "KeymapSource.h"

#include <QObject>
#include <QString>
#include <memory>
#include <optional>

class GnomeInputSources;
struct wl_keyboard;
struct wl_registry;
struct wl_seat;
struct xkb_context;

// The session's keymap in a Wayland session, where no client can ask the compositor for
// another client's keyboard: the keymap that the compositor hands every client of a seat with a
// keyboard (wl_keyboard.keymap), taken on a Wayland connection of our own whose descriptor is
// watched on the main thread. The compositor sends it again whenever the user changes layouts.
//
// Without a compositor that offers one, the system's keyboard configuration is used:
// XKB_DEFAULT_LAYOUT (with _MODEL, _VARIANT, _OPTIONS) when set, otherwise
// /etc/default/keyboard, otherwise xkbcommon's default. A layout the user chose in the
// Preferences window comes before all of them.
//
// The active group: the compositor reports it with wl_keyboard.modifiers, but only while one
// of our windows has the keyboard focus; KDE Plasma also announces it on the session bus
// (org.kde.keyboard), and GNOME keeps it in its input-source settings (GnomeInputSources); both
// are followed, and so is sway's own report (SwayLayoutWatch). Where nothing reports it, the
// key monitor follows the keys that switch groups; reportedGroup() says whether anything did.
class WaylandKeymapSource : public QObject, public KeymapSource {
    Q_OBJECT
public:
    enum class Origin { Compositor, SystemConfiguration, Chosen };

    explicit WaylandKeymapSource(QObject* parent = nullptr);
    ~WaylandKeymapSource() override;

    // Connects to the compositor (`display` as WAYLAND_DISPLAY takes it: a name in
    // XDG_RUNTIME_DIR or an absolute path; empty for WAYLAND_DISPLAY itself) and waits for its
    // first keymap. False when no compositor answers; the fallbacks apply then.
    bool connectToCompositor(const QString& display = {});
    // Follows KDE Plasma's layout switches on the session bus and GNOME's in its settings
    // (nothing happens elsewhere).
    void followDesktopLayoutSwitches();

    // Where the system's keyboard configuration is read (tests use their own file).
    void setSystemConfigurationFile(const QString& path);
    // A layout chosen by the user, as xkb-data names it ("de", "de(nodeadkeys)"); empty:
    // automatic. False when it does not compile; the previous choice stays then.
    bool setChosenLayout(const QString& name);

    // A keymap handed over by the compositor, as the text of its wl_keyboard.keymap event.
    bool takeCompositorKeymap(const QByteArray& text);

    xkb_keymap* currentKeymap() override;
    uint32_t currentGroup() override;
    // The group last reported by the compositor or a desktop service; nothing before any
    // report (the first layout is a report like any other).
    std::optional<uint32_t> reportedGroup();

    Origin origin() const;
    // The layout in use, as xkb-data describes it ("German", "English (US)").
    QString layoutName();

public slots:
    // The group the compositor or the desktop reports as active.
    void setCompositorGroup(uint group);

signals:
    // Another keymap or group is in force.
    void changed();

private:
    struct Wayland;
    void disconnect();
    xkb_keymap* systemKeymap();

    xkb_context* m_context = nullptr;
    xkb_keymap* m_compositorKeymap = nullptr;
    xkb_keymap* m_systemKeymap = nullptr;
    xkb_keymap* m_chosenKeymap = nullptr;
    uint32_t m_group = 0;
    bool m_groupReported = false;
    QString m_systemFile = QStringLiteral("/etc/default/keyboard");
    std::unique_ptr<Wayland> m_wayland;
    GnomeInputSources* m_gnome = nullptr;
};
