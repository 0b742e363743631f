#include "EvdevEngineBootstrap.h"

#include "AtSpiSecureInputWatch.h"
#include "ConsolePermissionAlert.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "KeyTranslator.h"
#include "KeyboardOutput.h"
#include "KeymapSource.h"
#include "LibevdevDeviceAccess.h"
#include "MessageBoxPermissionAlert.h"
#include "PermissionGuidance.h"
#include "SystemClipboard.h"
#include "TextExpander.h"
#include "UdevHotplugSource.h"

#include <QCoreApplication>
#include <xkbcommon/xkbcommon.h>

namespace {
// The keymap that the XKB_DEFAULT_* variables name (xkbcommon's own defaults otherwise), until
// the keymap the compositor hands its clients is wired in here.
class DefaultKeymapSource : public KeymapSource {
public:
    DefaultKeymapSource() : m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
        if (m_context)
            m_keymap = xkb_keymap_new_from_names(m_context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
    }
    ~DefaultKeymapSource() override {
        xkb_keymap_unref(m_keymap);
        xkb_context_unref(m_context);
    }
    DefaultKeymapSource(const DefaultKeymapSource&) = delete;
    DefaultKeymapSource& operator=(const DefaultKeymapSource&) = delete;
    xkb_keymap* currentKeymap() override { return m_keymap; }
    uint32_t currentGroup() override { return 0; }

private:
    xkb_context* m_context = nullptr;
    xkb_keymap* m_keymap = nullptr;
};
} // namespace

EvdevEngineBootstrap::EvdevEngineBootstrap(bool withWindows, const QString& inputFolder,
                                           const QString& uinputPath)
    : m_access(std::make_unique<LibevdevDeviceAccess>()),
      m_finder(std::make_unique<EvdevKeyboardFinder>(*m_access, inputFolder)),
      m_permissions(std::make_unique<EvdevPermissionProbe>(*m_access, *m_finder, uinputPath)),
      m_keymaps(std::make_unique<DefaultKeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_hotplug(std::make_unique<UdevHotplugSource>()),
      m_monitor(std::make_unique<EvdevKeyMonitor>(*m_keymaps, *m_access, *m_finder,
                                                  m_hotplug.get())),
      m_secureInput(std::make_unique<AtSpiSecureInputWatch>()),
      m_clipboard(std::make_unique<SystemClipboard>()) {
    if (withWindows)
        m_windowAlert = std::make_unique<MessageBoxPermissionAlert>();
    else
        m_consoleAlert = std::make_unique<ConsolePermissionAlert>();
}

EvdevEngineBootstrap::~EvdevEngineBootstrap() {
    // The engine goes first: it may still be typing through the output.
    m_engine.reset();
}

QString EvdevEngineBootstrap::keymapOrigin() const {
    return QCoreApplication::translate("EvdevEngineBootstrap",
                                       "the XKB_DEFAULT_* variables, or xkbcommon's default");
}

bool EvdevEngineBootstrap::start(SnippetStore& store) {
    m_engine = std::make_unique<TextExpander>(
        store, EnginePlatform{m_permissions.get(), m_monitor.get(), m_translator.get(),
                              m_output.get(), nullptr, m_secureInput.get()});
    m_engine->setExcludedApplications(m_excluded);
    m_engine->setKeysIgnoredWhen(m_keysIgnored);
    m_engine->setPaused(m_paused);
    m_engine->setClipboard(m_clipboard.get());
    m_engine->setUndoWithBackspace(m_undoWithBackspace);
    m_engine->setPasteThreshold(m_pasteThreshold);
    const bool listening = m_engine->isMonitoring();
    if (listening)
        m_secureInput->start();

    PermissionAlertPresenter* presenter =
        m_windowAlert ? static_cast<PermissionAlertPresenter*>(m_windowAlert.get())
                      : m_consoleAlert.get();
    PermissionGuidance guidance(*m_permissions, *presenter,
                                PermissionGuidance::Backend::KernelDevices);
    guidance.checkAndRequestPermissions();
    return listening;
}

void EvdevEngineBootstrap::setKeysIgnoredWhen(std::function<bool()> ignored) {
    m_keysIgnored = std::move(ignored);
    if (m_engine)
        m_engine->setKeysIgnoredWhen(m_keysIgnored);
}

void EvdevEngineBootstrap::setExcludedApplications(const QStringList& names) {
    m_excluded = names;
    if (m_engine)
        m_engine->setExcludedApplications(names);
}

void EvdevEngineBootstrap::setPaused(bool paused) {
    m_paused = paused;
    if (m_engine)
        m_engine->setPaused(paused);
}

void EvdevEngineBootstrap::setUndoWithBackspace(bool enabled) {
    m_undoWithBackspace = enabled;
    if (m_engine)
        m_engine->setUndoWithBackspace(enabled);
}

void EvdevEngineBootstrap::setPasteThreshold(int characters) {
    m_pasteThreshold = characters;
    if (m_engine)
        m_engine->setPasteThreshold(characters);
}
