#include "EngineBootstrap.h"

#include <QKeySequence>

#include "AtSpiSecureInputWatch.h"
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
#include "X11WindowFocus.h"

EngineBootstrap::EngineBootstrap(bool withWindows)
    : EngineHost(withWindows), m_permissions(std::make_unique<X11PermissionProbe>()),
      m_keymaps(std::make_unique<X11KeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_monitor(std::make_unique<X11KeyMonitor>()),
      m_focus(std::make_unique<X11FocusedApplication>()),
      m_secureInput(std::make_unique<AtSpiSecureInputWatch>()),
      m_clipboard(std::make_unique<X11ClipboardLender>()),
      m_output(std::make_unique<X11KeyboardOutput>(*m_keymaps)),
      m_clipboardReader(std::make_unique<X11ClipboardReader>()),
      m_clipboardText(std::make_unique<SystemClipboard>(m_clipboard.get(), m_clipboardReader.get())),
      m_windowFocus(std::make_unique<X11WindowFocus>()) {
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
                       m_focus.get(), m_secureInput.get()},
        m_clipboardText.get());
    if (listening) {
        m_output->open();
        m_secureInput->start();
        m_clipboard->open();
    }
    guide(*m_permissions, PermissionGuidance::Backend::X11);
    return listening;
}

QString EngineBootstrap::focusedApplication() const {
    return m_focus->name();
}

namespace {
bool grabInto(std::unique_ptr<X11GlobalKey>& slot, const QKeySequence& keys,
              std::function<void()> onPressed) {
    slot.reset(); // lets go of the previous keys first
    slot = std::make_unique<X11GlobalKey>();
    if (keys.isEmpty() || !slot->grab(keys[0])) {
        slot.reset();
        return false;
    }
    QObject::connect(slot.get(), &X11GlobalKey::pressed, slot.get(), std::move(onPressed));
    return true;
}
} // namespace

bool EngineBootstrap::grabGlobalKey(const QKeySequence& keys, std::function<void()> onPressed) {
    return grabInto(m_globalKey, keys, std::move(onPressed));
}

bool EngineBootstrap::grabInsertKey(const QKeySequence& keys, std::function<void()> onPressed) {
    return grabInto(m_insertKey, keys, std::move(onPressed));
}

WindowFocus* EngineBootstrap::windowFocus() const {
    return m_windowFocus.get();
}

void EngineBootstrap::restoreKeyboardMapping() { m_output->restoreSpareKeyCodes(); }
