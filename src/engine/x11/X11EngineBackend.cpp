#include "X11EngineBackend.h"

#include "AtSpiPasswordFieldWatch.h"
#include "KeyTranslator.h"
#include "PermissionGuidance.h"
#include "TextExpander.h"
#include "X11ClipboardLender.h"
#include "X11ClipboardReader.h"
#include "X11FocusedApplication.h"
#include "X11GlobalKey.h"
#include "X11KeyMonitor.h"
#include "X11KeyboardOutput.h"
#include "X11KeymapSource.h"
#include "X11PermissionProbe.h"

X11EngineBackend::X11EngineBackend(PermissionAlertPresenter& guidance, QObject* parent)
    : EngineBackend(parent), m_guidance(guidance),
      m_permissions(std::make_unique<X11PermissionProbe>()),
      m_keymaps(std::make_unique<X11KeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_monitor(std::make_unique<X11KeyMonitor>()),
      m_focus(std::make_unique<X11FocusedApplication>()),
      m_passwordField(std::make_unique<AtSpiPasswordFieldWatch>()),
      m_clipboard(std::make_unique<X11ClipboardLender>()),
      m_output(std::make_unique<X11KeyboardOutput>(*m_keymaps)),
      m_clipboardReader(std::make_unique<X11ClipboardReader>(m_clipboard.get())) {
    m_output->setPasting(m_clipboard.get(), m_focus.get());
    X11KeymapSource* keymaps = m_keymaps.get();
    m_monitor->setKeymapChangedHandler([keymaps] { keymaps->keymapChanged(); });
    m_monitor->setGroupChangedHandler([keymaps](uint32_t group) { keymaps->setGroup(group); });
    X11KeyMonitor* monitor = m_monitor.get();
    m_output->setKeysLeftDownHandler(
        [monitor](const QList<uint32_t>& keyCodes) { monitor->noteSyntheticKeysDown(keyCodes); });
}

X11EngineBackend::~X11EngineBackend() = default;

bool X11EngineBackend::start(SnippetStore& store, std::function<bool()> keysIgnored) {
    m_engine = std::make_unique<TextExpander>(
        store, EnginePlatform{m_permissions.get(), m_monitor.get(), m_translator.get(),
                              m_output.get(), m_focus.get(), m_passwordField.get()});
    m_engine->setKeysIgnoredWhen(std::move(keysIgnored));
    m_engine->setFormValues(m_formValues);
    m_engine->setClipboard(m_clipboardReader.get());
    connect(m_engine.get(), &TextExpander::snippetUsed, this, &EngineBackend::snippetUsed);
    const bool listening = m_engine->isMonitoring();
    if (listening) {
        m_output->open();
        m_passwordField->start();
        m_clipboard->open();
    }
    PermissionGuidance(*m_permissions, m_guidance, PermissionGuidance::Backend::X11)
        .checkAndRequestPermissions();
    return listening;
}

void X11EngineBackend::apply(const EngineSettings& settings) {
    if (m_engine)
        m_engine->apply(settings);
}

QString X11EngineBackend::focusedApplication() const { return m_focus->name(); }

OpenWindows* X11EngineBackend::openWindows() const { return m_focus.get(); }

bool X11EngineBackend::grabGlobalKey(GlobalKey which, QKeyCombination keys,
                                     std::function<void()> onPressed) {
    std::unique_ptr<X11GlobalKey>& grab = which == GlobalKey::pause ? m_pauseKey : m_insertKey;
    grab.reset(); // lets go of the previous keys first
    if (keys.key() == Qt::Key(0))
        return false;
    grab = std::make_unique<X11GlobalKey>();
    if (!grab->grab(keys)) {
        grab.reset();
        return false;
    }
    connect(grab.get(), &X11GlobalKey::pressed, grab.get(), std::move(onPressed));
    return true;
}

void X11EngineBackend::setFormValueSource(FormValueSource* source) {
    m_formValues = source;
    if (m_engine)
        m_engine->setFormValues(source);
}

void X11EngineBackend::insert(const Snippet& snippet) {
    if (m_engine)
        m_engine->insert(snippet);
}

WindowFocus* X11EngineBackend::windowFocus() const { return m_focus.get(); }

void X11EngineBackend::restore() { m_output->restoreSpareKeyCodes(); }
