#include "EngineHost.h"

#include "ConsolePermissionAlert.h"
#include "MessageBoxPermissionAlert.h"
#include "TextExpander.h"

EngineHost::EngineHost(bool withWindows) {
    if (withWindows)
        m_windowAlert = std::make_unique<MessageBoxPermissionAlert>();
    else
        m_consoleAlert = std::make_unique<ConsolePermissionAlert>();
}

EngineHost::~EngineHost() = default;

bool EngineHost::startEngine(SnippetStore& store, const EnginePlatform& platform,
                             ClipboardSource* clipboard) {
    m_engine = std::make_unique<TextExpander>(store, platform);
    m_engine->setExcludedApplications(m_excluded);
    m_engine->setKeysIgnoredWhen(m_keysIgnored);
    m_engine->setPaused(m_paused);
    m_engine->setClipboard(clipboard);
    m_engine->setUndoWithBackspace(m_undoWithBackspace);
    m_engine->setPasteThreshold(m_pasteThreshold);
    QObject::connect(m_engine.get(), &TextExpander::snippetUsed, m_engine.get(),
                     [this](const QUuid& id) {
                         if (m_snippetUsed)
                             m_snippetUsed(id);
                     });
    return m_engine->isMonitoring();
}

void EngineHost::guide(PermissionProbe& permissions, PermissionGuidance::Backend backend) {
    PermissionAlertPresenter* presenter =
        m_windowAlert ? static_cast<PermissionAlertPresenter*>(m_windowAlert.get())
                      : m_consoleAlert.get();
    PermissionGuidance(permissions, *presenter, backend).checkAndRequestPermissions();
}

void EngineHost::setKeysIgnoredWhen(std::function<bool()> ignored) {
    m_keysIgnored = std::move(ignored);
    if (m_engine)
        m_engine->setKeysIgnoredWhen(m_keysIgnored);
}

void EngineHost::setExcludedApplications(const QStringList& names) {
    m_excluded = names;
    if (m_engine)
        m_engine->setExcludedApplications(names);
}

void EngineHost::setPaused(bool paused) {
    m_paused = paused;
    if (m_engine)
        m_engine->setPaused(paused);
}

void EngineHost::setUndoWithBackspace(bool enabled) {
    m_undoWithBackspace = enabled;
    if (m_engine)
        m_engine->setUndoWithBackspace(enabled);
}

void EngineHost::setPasteThreshold(int characters) {
    m_pasteThreshold = characters;
    if (m_engine)
        m_engine->setPasteThreshold(characters);
}

void EngineHost::setSnippetUsedHandler(std::function<void(const QUuid&)> handler) {
    m_snippetUsed = std::move(handler);
}

void EngineHost::insertSnippet(const Snippet& snippet) {
    if (m_engine)
        m_engine->insert(snippet);
}
