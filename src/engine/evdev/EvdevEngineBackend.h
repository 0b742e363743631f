#pragma once

#include "EngineBackend.h"

#include <QString>
#include <functional>
#include <memory>
#include <optional>

class AtSpiPasswordFieldWatch;
class ClipboardSource;
class DeviceHotplugSource;
class EvdevKeyMonitor;
class EvdevKeyboardFinder;
class EvdevPermissionProbe;
class InputDeviceAccess;
class KeyTranslator;
class LogindSessionWatch;
class PermissionAlertPresenter;
class PortalKeyboardOutput;
class SwayLayoutWatch;
class TextExpander;
class UinputDevice;
class UinputKeyboardOutput;
class WaylandKeymapSource;
class WaylandVirtualKeyboardOutput;

// The engine in a Wayland session, on the kernel's input devices: the keyboards under
// /dev/input (and those plugged in later, through udev), the keymap, the virtual keyboard that
// types, and the password-field watch (AT-SPI, which works the same on Wayland); then the
// engine over them. It owns every piece.
//
// Typing goes through the compositor where it offers virtual keyboards (wlroots compositors):
// any character can be typed there, whatever the layout, and /dev/uinput is not needed.
// Elsewhere the desktop's remote desktop portal types once the user allowed it (GNOME, KDE
// Plasma), and a uinput virtual keyboard with the keys of the session's layout until then or
// where there is no portal.
class EvdevEngineBackend : public EngineBackend {
    Q_OBJECT
public:
    // `guidance` tells the user what is missing, if anything, once the engine started;
    // `clipboard` is the desktop's (none: a {{clipboard}} placeholder types nothing).
    // `inputFolder` and `uinputPath` are the device nodes' places.
    explicit EvdevEngineBackend(PermissionAlertPresenter& guidance,
                                ClipboardSource* clipboard = nullptr,
                                const QString& inputFolder = QStringLiteral("/dev/input"),
                                const QString& uinputPath = QStringLiteral("/dev/uinput"),
                                QObject* parent = nullptr);
    ~EvdevEngineBackend() override;

    // Wayland lets no client take keys from the others nor learn which application has the
    // focus; the layout is read here, so the user may choose another.
    Capabilities capabilities() const override { return {false, false, true}; }
    bool start(SnippetStore& store, std::function<bool()> keysIgnored) override;
    void apply(const EngineSettings& settings) override;
    bool grabGlobalKey(GlobalKey, QKeyCombination, std::function<void()>) override {
        return false;
    }
    void insert(const Snippet& snippet) override;
    void setFormValueSource(FormValueSource* source) override;
    // No client may ask where another's window is or move the focus: the compositor hands the
    // focus back when the insert window closes.
    WindowFocus* windowFocus() const override { return nullptr; }
    QString focusedApplication() const override { return {}; }
    QString layoutInUse() const override;
    // The virtual keyboards bind no spare keys: nothing to give back.
    void restore() override {}

    // Where the portal's restore token is kept between runs, so that the user is asked once.
    void setRestoreTokenStore(std::function<QString()> load,
                              std::function<void(const QString&)> save);

    // For `typolet --check-input`.
    const EvdevKeyboardFinder& keyboards() const { return *m_finder; }
    EvdevPermissionProbe& permissions() { return *m_permissions; }
    WaylandKeymapSource& keymaps() { return *m_keymaps; }
    QString keymapOrigin() const;
    enum class Typing { Compositor, Portal, Uinput };
    static QString typingDescription(Typing typing);

private:
    PermissionAlertPresenter& m_guidance;
    ClipboardSource* m_clipboard;
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
    std::unique_ptr<SwayLayoutWatch> m_swayLayouts;
    std::unique_ptr<LogindSessionWatch> m_session;
    QString m_uinputPath;
    // The layout last applied; none before the first settings.
    std::optional<QString> m_chosenLayout;
    // Last: it goes first, as it may still be typing through the output.
    std::unique_ptr<TextExpander> m_engine;
    FormValueSource* m_formValues = nullptr;
};
