#pragma once

#include "EngineSettings.h"

#include <QKeySequence>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

class LibraryFile;

// The user's preferences, kept in the same settings file as the snippets
// ($XDG_CONFIG_HOME/Typolet/Typolet.conf):
//  - startAtLogin: what the start-at-login switch shows; absent reads as false;
//  - hasLaunchedBefore: set once the first-appearance default has been applied;
//  - undoWithBackspace: BackSpace right after an expansion puts the command back; absent
//    reads as true;
//  - pasteLongSnippets, pasteThreshold: contents of at least pasteThreshold characters are
//    pasted through the clipboard rather than typed; absent read as true and 100;
//  - paused: nothing expands until it is switched off again, also after a restart;
//  - excludedApplications: the applications (by window class) where nothing expands;
//  - pauseKeys: the desktop-wide keys that pause and resume, "Ctrl+Alt+Space" when absent;
//  - insertKeys: the desktop-wide keys that open the insert window, "Ctrl+Alt+." when absent;
//  - countUsage: each expansion and insertion is counted per snippet (for the insert window's
//    order and the editor); absent reads as true. The counts live apart from this file (see
//    UsageStore);
//  - saveEditsOnLeave: leaving a snippet with edits not yet saved (another snippet, quitting)
//    saves them without asking; absent reads as false (the editor asks);
//  - lastCategory: the category the editor showed when Typolet last ended (its id); absent or
//    empty: "All Snippets";
//  - keyboardLayout: in a Wayland session, the layout typed keys are read and typed with, as
//    xkb-data names it ("de", "de(nodeadkeys)"); absent or empty: the one the desktop uses;
//  - remoteDesktopToken: what the desktop's remote desktop portal handed back once the user
//    let Typolet type, so that it does not ask again;
//  - syncFolder: the folder the library is synced through; absent or empty: none;
//  - syncComputerId: this computer's id in that folder, 8 random characters made once. These
//    two, like every preference, stay on this computer: only the library goes to the folder.
// Every write goes to disk at once, through the library file's one owner; a change another
// program makes to a preference is announced as if it were made here.
class Preferences : public QObject {
    Q_OBJECT
public:
    // Preferences in the library file that main() owns.
    explicit Preferences(LibraryFile& file, QObject* parent = nullptr);
    // Preferences with a library file of their own, over the given path (tests use their own);
    // an empty path means the user's standard Typolet settings.
    explicit Preferences(const QString& settingsFile = {}, QObject* parent = nullptr);
    ~Preferences() override;

    bool startAtLogin() const;
    // Returns false when the value could not be written to disk (the value in memory still
    // changes, as the switch already shows it).
    bool setStartAtLogin(bool enabled);

    bool hasLaunchedBefore() const;
    bool setHasLaunchedBefore(bool launched);

    bool undoWithBackspace() const;
    bool setUndoWithBackspace(bool enabled);

    bool pasteLongSnippets() const;
    bool setPasteLongSnippets(bool enabled);
    // Always within minimumPasteThreshold..maximumPasteThreshold, whatever the file holds.
    int pasteThreshold() const;
    bool setPasteThreshold(int characters);
    // What the engine is given: the threshold, or 0 when pasting is switched off.
    int effectivePasteThreshold() const { return pasteLongSnippets() ? pasteThreshold() : 0; }

    bool saveEditsOnLeave() const;
    bool setSaveEditsOnLeave(bool enabled);

    QString lastCategory() const;
    bool setLastCategory(const QString& id);

    bool paused() const;
    bool setPaused(bool paused);

    QKeySequence pauseKeys() const;
    bool setPauseKeys(const QKeySequence& keys);

    QKeySequence insertKeys() const;
    bool setInsertKeys(const QKeySequence& keys);

    bool countUsage() const;
    bool setCountUsage(bool enabled);
    // Asks whoever keeps the usage counts to forget them (they are not kept here).
    void clearUsage() { emit usageClearRequested(); }

    QStringList excludedApplications() const;
    bool setExcludedApplications(const QStringList& names);

    QString keyboardLayout() const;
    bool setKeyboardLayout(const QString& layout);

    QString remoteDesktopToken() const;
    bool setRemoteDesktopToken(const QString& token);
    QString syncFolder() const;
    bool setSyncFolder(const QString& folder);
    // Made and kept the first time it is asked for.
    QString syncComputerId();

    // Not stored: the layout in use now, as the engine describes it ("German (from the
    // desktop)"); empty where the layout cannot be chosen (X11 follows the server's).
    QString layoutInUse() const { return m_layoutInUse; }
    void setLayoutInUse(const QString& description);

    // Not stored: what this session lets Typolet do. A Wayland session lets no program take keys
    // from the others nor learn which application has the focus.
    bool canGrabPauseKeys() const { return m_canGrabPauseKeys; }
    bool canTellApplications() const { return m_canTellApplications; }
    void setSessionAbilities(bool grabPauseKeys, bool tellApplications) {
        m_canGrabPauseKeys = grabPauseKeys;
        m_canTellApplications = tellApplications;
    }

    // What the engine is given, all at once.
    EngineSettings engineSettings() const;

    QString settingsPath() const;

    static constexpr const char* startAtLoginKey = "startAtLogin";
    static constexpr const char* hasLaunchedBeforeKey = "hasLaunchedBefore";
    static constexpr const char* undoWithBackspaceKey = "undoWithBackspace";
    static constexpr const char* pasteLongSnippetsKey = "pasteLongSnippets";
    static constexpr const char* pasteThresholdKey = "pasteThreshold";
    static constexpr int defaultPasteThreshold = 100;
    static constexpr int minimumPasteThreshold = 1;
    static constexpr int maximumPasteThreshold = 1000000;
    static constexpr const char* pausedKey = "paused";
    static constexpr const char* lastCategoryKey = "lastCategory";
    static constexpr const char* saveEditsOnLeaveKey = "saveEditsOnLeave";
    static constexpr const char* excludedApplicationsKey = "excludedApplications";
    static constexpr const char* pauseKeysKey = "pauseKeys";
    static constexpr const char* insertKeysKey = "insertKeys";
    static constexpr const char* countUsageKey = "countUsage";
    static constexpr const char* keyboardLayoutKey = "keyboardLayout";
    static constexpr const char* remoteDesktopTokenKey = "remoteDesktopToken";
    static constexpr const char* syncFolderKey = "syncFolder";
    static constexpr const char* syncComputerIdKey = "syncComputerId";

signals:
    void startAtLoginChanged(bool enabled);
    void undoWithBackspaceChanged(bool enabled);
    // Either paste preference changed.
    void pasteChanged();
    void pausedChanged(bool paused);
    void saveEditsOnLeaveChanged(bool enabled);
    void excludedApplicationsChanged(const QStringList& names);
    void pauseKeysChanged(const QKeySequence& keys);
    void insertKeysChanged(const QKeySequence& keys);
    void countUsageChanged(bool enabled);
    void usageClearRequested();
    void keyboardLayoutChanged(const QString& layout);
    void layoutInUseChanged(const QString& description);
    // Anything engineSettings() holds changed.
    void engineSettingsChanged();

private:
    bool write(const char* key, const QVariant& value);
    QVariant stored(const char* key, const QVariant& fallback = {}) const;
    void takeOutsideChanges(const QStringList& keys);

    std::unique_ptr<LibraryFile> m_ownFile;
    LibraryFile* m_file;
    QString m_layoutInUse;
    bool m_canGrabPauseKeys = true;
    bool m_canTellApplications = true;
};
