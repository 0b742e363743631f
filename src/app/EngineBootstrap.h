#pragma once

#include <QString>
#include <memory>

class ConsolePermissionAlert;
class MessageBoxPermissionAlert;
class X11KeyMonitor;
class X11KeyboardOutput;
class X11KeymapSource;
class X11PermissionProbe;
class KeyTranslator;

// Puts the expansion engine together on X11: the permission probe, the keymap source, the key
// monitor and the keyboard output, then the shared engine over them, then the start-up
// permission guidance. The pieces live as long as this object, which lives as long as the
// application.
class EngineBootstrap {
public:
    // `withWindows` is false when there is no display: the guidance then goes to the terminal.
    explicit EngineBootstrap(bool withWindows);
    ~EngineBootstrap();

    // Creates TextExpander::shared and runs the permission check. True when the engine listens.
    bool start(const QString& executablePath);

    // Empties the spare keycodes the output bound (at quit).
    void restoreKeyboardMapping();

private:
    std::unique_ptr<X11PermissionProbe> m_permissions;
    std::unique_ptr<X11KeymapSource> m_keymaps;
    std::unique_ptr<KeyTranslator> m_translator;
    std::unique_ptr<X11KeyMonitor> m_monitor;
    std::unique_ptr<X11KeyboardOutput> m_output;
    std::unique_ptr<MessageBoxPermissionAlert> m_windowAlert;
    std::unique_ptr<ConsolePermissionAlert> m_consoleAlert;
};
