#pragma once

#include "EngineHost.h"

#include <QString>
#include <functional>
#include <memory>

class AtSpiPasswordFieldWatch;
class KeyTranslator;
class QKeySequence;
class SystemClipboard;
class X11ClipboardLender;
class X11ClipboardReader;
class X11FocusedApplication;
class X11GlobalKey;
class X11KeyMonitor;
class X11KeyboardOutput;
class X11KeymapSource;
class X11PermissionProbe;

// Puts the expansion engine together on X11: the permission probe, the keymap source, the key
// monitor, the keyboard output with its clipboard lender, and the password-field watch
// (AT-SPI), then the engine over them, then the start-up permission guidance. It owns every
// piece; main owns it for the life of the application.
class EngineBootstrap : public EngineHost {
public:
    // `withWindows` is false when there is no display: the guidance then goes to the terminal.
    explicit EngineBootstrap(bool withWindows);
    ~EngineBootstrap();

    // Creates the engine over `store` and runs the permission check. True when the engine
    // listens.
    bool start(SnippetStore& store);

    // The application that has the keyboard focus now (for excluding it).
    QString focusedApplication() const;
    static constexpr bool tellsApplications = true;

    // Grabs `keys` for the whole desktop and runs `onPressed` for each press; false when
    // another program holds them.
    bool grabGlobalKey(const QKeySequence& keys, std::function<void()> onPressed);
    static constexpr bool grabsGlobalKeys = true;

    // Empties the spare keycodes the output bound (at quit).
    void restoreKeyboardMapping();

private:
    std::unique_ptr<X11PermissionProbe> m_permissions;
    std::unique_ptr<X11KeymapSource> m_keymaps;
    std::unique_ptr<KeyTranslator> m_translator;
    std::unique_ptr<X11KeyMonitor> m_monitor;
    std::unique_ptr<X11FocusedApplication> m_focus;
    std::unique_ptr<AtSpiPasswordFieldWatch> m_passwordField;
    // Before the output, which pastes through it.
    std::unique_ptr<X11ClipboardLender> m_clipboard;
    std::unique_ptr<X11KeyboardOutput> m_output;
    std::unique_ptr<X11ClipboardReader> m_clipboardReader;
    std::unique_ptr<SystemClipboard> m_clipboardText;
    std::unique_ptr<X11GlobalKey> m_globalKey;
};
