#pragma once

#include "EngineBackend.h"

#include <memory>

class AtSpiPasswordFieldWatch;
class KeyTranslator;
class PermissionAlertPresenter;
class TextExpander;
class X11ClipboardLender;
class X11ClipboardReader;
class X11FocusedApplication;
class X11GlobalKey;
class X11KeyMonitor;
class X11KeyboardOutput;
class X11KeymapSource;
class X11PermissionProbe;

// The engine on an X server: the permission probe, the keymap source, the key monitor, the
// keyboard output with its clipboard lender and reader, the password-field watch (AT-SPI) and
// the desktop-wide pause keys; then the engine over them. It owns every piece.
class X11EngineBackend : public EngineBackend {
    Q_OBJECT
public:
    // `guidance` tells the user what is missing, if anything, once the engine started.
    explicit X11EngineBackend(PermissionAlertPresenter& guidance, QObject* parent = nullptr);
    ~X11EngineBackend() override;

    Capabilities capabilities() const override { return {true, true, false}; }
    bool start(SnippetStore& store, std::function<bool()> keysIgnored) override;
    void apply(const EngineSettings& settings) override;
    bool grabGlobalKey(GlobalKey which, QKeyCombination keys,
                       std::function<void()> onPressed) override;
    void insert(const Snippet& snippet) override;
    void setFormValueSource(FormValueSource* source) override;
    WindowFocus* windowFocus() const override;
    OpenWindows* openWindows() const override;
    QString focusedApplication() const override;
    // The server's layout is followed, never chosen here.
    QString layoutInUse() const override { return {}; }
    // Empties the spare keycodes the output bound.
    void restore() override;

private:
    PermissionAlertPresenter& m_guidance;
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
    std::unique_ptr<X11GlobalKey> m_pauseKey;
    std::unique_ptr<X11GlobalKey> m_insertKey;
    // Last: it goes first, as it may still be typing through the output.
    std::unique_ptr<TextExpander> m_engine;
    FormValueSource* m_formValues = nullptr;
};
