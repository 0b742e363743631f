#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class AtSpiSecureInputWatch;
class ConsolePermissionAlert;
class MessageBoxPermissionAlert;
class SnippetStore;
class SystemClipboard;
class TextExpander;
class QKeySequence;
class X11ClipboardLender;
class X11FocusedApplication;
class X11GlobalKey;
class X11KeyMonitor;
class X11KeyboardOutput;
class X11KeymapSource;
class X11PermissionProbe;
class KeyTranslator;

// Puts the expansion engine together on X11: the permission probe, the keymap source, the key
// monitor, the keyboard output and the password-field watch (AT-SPI), then the engine over them, then the start-up permission
// guidance. It owns every piece; main owns it for the life of the application.
class EngineBootstrap {
public:
    // `withWindows` is false when there is no display: the guidance then goes to the terminal.
    explicit EngineBootstrap(bool withWindows);
    ~EngineBootstrap();

    // Creates the engine over `store` and runs the permission check. True when the engine
    // listens.
    bool start(SnippetStore& store);

    // When typed keys are not looked at (see TextExpander::setKeysIgnoredWhen).
    void setKeysIgnoredWhen(std::function<bool()> ignored);
    // Applications where nothing expands, and the one that has the keyboard focus now.
    void setExcludedApplications(const QStringList& names);
    QString focusedApplication() const;

    // Grabs `keys` for the whole desktop and runs `onPressed` for each press; false when
    // another program holds them.
    bool grabGlobalKey(const QKeySequence& keys, std::function<void()> onPressed);
    static constexpr bool grabsGlobalKeys = true;
    static constexpr bool tellsApplications = true;

    // Whether the user paused expansion.
    void setPaused(bool paused);
    // Whether BackSpace right after an expansion undoes it.
    void setUndoWithBackspace(bool enabled);
    // Contents of at least this many characters are pasted; 0 types every content.
    void setPasteThreshold(int characters);

    // Empties the spare keycodes the output bound (at quit).
    void restoreKeyboardMapping();

private:
    std::unique_ptr<X11PermissionProbe> m_permissions;
    std::unique_ptr<X11KeymapSource> m_keymaps;
    std::unique_ptr<KeyTranslator> m_translator;
    std::unique_ptr<X11KeyMonitor> m_monitor;
    std::unique_ptr<X11FocusedApplication> m_focus;
    std::unique_ptr<AtSpiSecureInputWatch> m_secureInput;
    // Before the output, which pastes through it.
    std::unique_ptr<X11ClipboardLender> m_clipboard;
    std::unique_ptr<X11KeyboardOutput> m_output;
    std::unique_ptr<SystemClipboard> m_clipboardText;
    std::unique_ptr<X11GlobalKey> m_globalKey;
    std::unique_ptr<TextExpander> m_engine;
    std::unique_ptr<MessageBoxPermissionAlert> m_windowAlert;
    std::unique_ptr<ConsolePermissionAlert> m_consoleAlert;
    std::function<bool()> m_keysIgnored;
    bool m_paused = false;
    bool m_undoWithBackspace = true;
    int m_pasteThreshold = 0;
    QStringList m_excluded;
};
