#include "EngineBootstrap.h"

#include <QKeySequence>

#include "AtSpiPasswordFieldWatch.h"
#include "KeyTranslator.h"
#include "PermissionGuidance.h"
#include "SystemClipboard.h"
#include "TextExpander.h"
#include "X11ClipboardLender.h"
#include "X11ClipboardReader.h"
#include "X11FocusedApplication.h"
#include "X11GlobalKey.h"
#include "X11KeyMonitor.h"
#include "X11KeyboardOutput.h"
#include "X11KeymapSource.h"
#include "X11PermissionProbe.h"

EngineBootstrap::EngineBootstrap(bool withWindows)
    : EngineHost(withWindows), m_permissions(std::make_unique<X11PermissionProbe>()),
      m_keymaps(std::make_unique<X11KeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_monitor(std::make_unique<X11KeyMonitor>()),
      m_focus(std::make_unique<X11FocusedApplication>()),
      m_passwordField(std::make_unique<AtSpiPasswordFieldWatch>()),
      m_clipboard(std::make_unique<X11ClipboardLender>()),
      m_output(std::make_unique<X11KeyboardOutput>(*m_keymaps)),
      m_clipboardReader(std::make_unique<X11ClipboardReader>()),
      m_clipboardText(std::make_unique<SystemClipboard>(m_clipboard.get(), m_clipboardReader.get())) {
    m_output->setPasting(m_clipboard.get(), m_focus.get());
    X11KeymapSource* keymaps = m_keymaps.get();
    m_monitor->setKeymapChangedHandler([keymaps] { keymaps->keymapChanged(); });
    m_monitor->setGroupChangedHandler([keymaps](uint32_t group) { keymaps->setGroup(group); });
    X11KeyMonitor* monitor = m_monitor.get();
    m_output->setKeysLeftDownHandler(
        [monitor](const QList<uint32_t>& keyCodes) { monitor->noteSyntheticKeysDown(keyCodes); });
}

EngineBootstrap::~EngineBootstrap() {
    // The engine goes first: it may still be typing through the output.
    m_engine.reset();
}

bool EngineBootstrap::start(SnippetStore& store) {
    const bool listening = startEngine(
        store,
        EnginePlatform{m_permissions.get(), m_monitor.get(), m_translator.get(), m_output.get(),
                       m_focus.get(), m_passwordField.get()},
        m_clipboardText.get());
    if (listening) {
        m_output->open();
        m_passwordField->start();
        m_clipboard->open();
    }
    guide(*m_permissions, PermissionGuidance::Backend::X11);
    return listening;
}

QString EngineBootstrap::focusedApplication() const {
    return m_focus->name();
}

bool EngineBootstrap::grabGlobalKey(const QKeySequence& keys, std::function<void()> onPressed) {
    m_globalKey.reset(); // lets go of the previous keys first
    m_globalKey = std::make_unique<X11GlobalKey>();
    if (keys.isEmpty() || !m_globalKey->grab(keys[0])) {
        m_globalKey.reset();
        return false;
    }
    QObject::connect(m_globalKey.get(), &X11GlobalKey::pressed, m_globalKey.get(),
                     std::move(onPressed));
    return true;
}

void EngineBootstrap::restoreKeyboardMapping() { m_output->restoreSpareKeyCodes(); }
