#pragma once

#include "EngineHost.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class AtSpiPasswordFieldWatch;
class DeviceHotplugSource;
class EvdevKeyMonitor;
class EvdevKeyboardFinder;
class EvdevPermissionProbe;
class InputDeviceAccess;
class KeyTranslator;
class LogindSessionWatch;
class SwayLayoutWatch;
class UinputDevice;
class UinputKeyboardOutput;
class PortalKeyboardOutput;
class WaylandVirtualKeyboardOutput;
class WaylandKeymapSource;
class QKeySequence;
class SnippetStore;
class SystemClipboard;

// Puts the expansion engine together for a Wayland session, on the kernel's input devices: the
// keyboards under /dev/input (and those plugged in later, through udev), the keymap, the
// virtual keyboard that types, and the password-field watch (AT-SPI, which works the same on
// Wayland); then the engine over them, then the start-up permission guidance. It offers what
// EngineBootstrap offers, so main drives either; it owns every piece.
//
// Typing goes through the compositor where it offers virtual keyboards (wlroots compositors):
// any character can be typed there, whatever the layout, and /dev/uinput is not needed.
// Elsewhere the desktop's remote desktop portal types once the user allowed it (GNOME, KDE
// Plasma), and a uinput virtual keyboard with the keys of the session's layout until then or
// where there is no portal.
class EvdevEngineBootstrap : public EngineHost {
public:
    // `withWindows` is false when no window can be shown: the guidance then goes to the
    // terminal. `inputFolder` and `uinputPath` are the device nodes' places.
    explicit EvdevEngineBootstrap(bool withWindows,
                                  const QString& inputFolder = QStringLiteral("/dev/input"),
                                  const QString& uinputPath = QStringLiteral("/dev/uinput"));
    ~EvdevEngineBootstrap();

    bool start(SnippetStore& store);

    // A Wayland client cannot learn which application has the focus: nothing is excluded.
    QString focusedApplication() const { return {}; }
    // Wayland lets no client take keys from the others: the pause keys cannot be grabbed.
    static constexpr bool grabsGlobalKeys = false;
    static constexpr bool tellsApplications = false;
    bool grabGlobalKey(const QKeySequence&, std::function<void()>) { return false; }

    // The virtual keyboard binds no spare keys: nothing to restore.
    void restoreKeyboardMapping() {}

    // The layout chosen in Preferences ("de", "de(nodeadkeys)"); empty: the desktop's.
    void setKeyboardLayout(const QString& name);
    // Where the portal's restore token is kept between runs.
    void setRemoteDesktopTokenStore(std::function<QString()> load,
                                    std::function<void(const QString&)> save);
    // Told the layout in use now, and again whenever it changes.
    void setLayoutInUseHandler(std::function<void(const QString&)> handler);

    // For `typolet --check-input`.
    const EvdevKeyboardFinder& keyboards() const { return *m_finder; }
    EvdevPermissionProbe& permissions() { return *m_permissions; }
    WaylandKeymapSource& keymaps() { return *m_keymaps; }
    QString keymapOrigin() const;
    // The layout in use and where it comes from, and the way Typolet types, as a person reads it.
    QString layoutInUse() const;
    enum class Typing { Compositor, Portal, Uinput };
    Typing typing() const { return m_typing; }
    static QString typingDescription(Typing typing);

private:
    std::unique_ptr<InputDeviceAccess> m_access;
    std::unique_ptr<EvdevKeyboardFinder> m_finder;
    std::unique_ptr<EvdevPermissionProbe> m_permissions;
    std::unique_ptr<WaylandKeymapSource> m_keymaps;
    std::unique_ptr<KeyTranslator> m_translator;
    std::unique_ptr<DeviceHotplugSource> m_hotplug;
    std::unique_ptr<EvdevKeyMonitor> m_monitor;
    std::unique_ptr<UinputDevice> m_virtualKeyboard; // outlives the output that writes to it
    std::unique_ptr<UinputKeyboardOutput> m_output;
    std::unique_ptr<WaylandVirtualKeyboardOutput> m_compositorOutput;
    std::unique_ptr<PortalKeyboardOutput> m_portalOutput;
    Typing m_typing = Typing::Uinput;
    std::unique_ptr<AtSpiPasswordFieldWatch> m_passwordField;
    std::unique_ptr<SystemClipboard> m_clipboard;
    std::unique_ptr<SwayLayoutWatch> m_swayLayouts;
    std::unique_ptr<LogindSessionWatch> m_session;
    QString m_uinputPath;
    std::function<void(const QString&)> m_layoutInUse;
};
