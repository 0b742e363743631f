#pragma once

#include "PermissionGuidance.h"

#include <QStringList>
#include <functional>
#include <memory>

class ClipboardSource;
class ConsolePermissionAlert;
class MessageBoxPermissionAlert;
class SnippetStore;
class TextExpander;
class WindowFocus;
class QUuid;
struct Snippet;
struct EnginePlatform;

// What the engine's set-up shares in every session: the engine itself once started, the
// settings the shell hands it (kept until it exists, so the order of start and settings does
// not matter), and the start-up permission guidance, in a window or on the terminal. Each
// session's set-up builds its platform pieces and starts the engine over them.
class EngineHost {
public:
    void setKeysIgnoredWhen(std::function<bool()> ignored);
    // Applications (by the focused window's class) where nothing expands.
    void setExcludedApplications(const QStringList& names);
    // Whether the user paused expansion.
    void setPaused(bool paused);
    // Whether BackSpace right after an expansion undoes it.
    void setUndoWithBackspace(bool enabled);
    // Contents of at least this many characters are pasted; 0 types every content.
    void setPasteThreshold(int characters);
    // Told the id of each snippet whose content went out (expanded or inserted).
    void setSnippetUsedHandler(std::function<void(const QUuid&)> handler);
    // Sends `snippet` to the focused window without erasing anything (the insert window).
    void insertSnippet(const Snippet& snippet);

protected:
    // `withWindows` is false when no window can be shown: the guidance then goes to the
    // terminal.
    explicit EngineHost(bool withWindows);
    // The set-up that owns the output ends the engine first: it may still be typing through it.
    ~EngineHost();

    // Makes the engine over `platform` and hands it every setting made so far. True when it
    // listens.
    bool startEngine(SnippetStore& store, const EnginePlatform& platform,
                     ClipboardSource* clipboard);
    // Says what is missing, if anything, once the event loop runs.
    void guide(PermissionProbe& permissions, PermissionGuidance::Backend backend);

    std::unique_ptr<TextExpander> m_engine;

private:
    std::unique_ptr<MessageBoxPermissionAlert> m_windowAlert;
    std::unique_ptr<ConsolePermissionAlert> m_consoleAlert;
    std::function<bool()> m_keysIgnored;
    bool m_paused = false;
    bool m_undoWithBackspace = true;
    int m_pasteThreshold = 0;
    QStringList m_excluded;
    std::function<void(const QUuid&)> m_snippetUsed;
};
