#pragma once

#include "EngineBackend.h"

#include <QKeySequence>
#include <QObject>
#include <functional>
#include <memory>

class Autostart;
class ContentView;
class EngineBackend;
class Preferences;
class QMainWindow;
class SingleInstanceGuard;
class SnippetStore;
class TrayController;

// The program as a whole: makes sure it is the only Typolet of this user, then starts the
// pieces in their order: the tray controller, the expansion engine (with its permission
// check), the main window around the snippet editor, the menus and the tray icon; then keeps
// the engine in step with the preferences.
class TypoletApp : public QObject {
    Q_OBJECT
public:
    // `serverName` empty: the per-user single-instance name.
    TypoletApp(EngineBackend& engine, SnippetStore& store, Autostart& autostart,
               Preferences& preferences, const QString& serverName = {},
               QObject* parent = nullptr);
    ~TypoletApp() override;

    // Starts everything. Returns false when another Typolet already runs: it has been asked
    // to bring its windows forward, nothing was started here, and the program should exit.
    bool start();

    // Null before start() or when start() returned false.
    TrayController* trayController() const { return m_trayController.get(); }
    QMainWindow* mainWindow() const { return m_mainWindow.get(); }
    // The single-instance channel: what a later launch asks, and what this one is asked.
    SingleInstanceGuard& instanceGuard() const { return *m_guard; }
    ContentView* editor() const { return m_editor; }
    // The insert keys taken for the whole desktop; empty when none are (none chosen, taken by
    // another program, or a session that lets no program take keys).
    QKeySequence insertKeysInForce() const { return m_insertKeysInForce; }


    // The main window's first size.
    static constexpr int mainWidth = 1100;
    static constexpr int mainHeight = 700;

signals:
    // The insert keys were pressed, wherever the focus is.
    void insertKeysPressed();
    void insertKeysInForceChanged(const QKeySequence& keys);

private:
    // The preferences reach the engine at once, whoever changes them.
    void connectEngine();
    // Takes the pause keys, or the insert keys, for the whole desktop; `tellUser`: a window
    // says when they are taken by another program (a change made in Preferences), not only
    // the log.
    void grabPauseKeys(bool tellUser);
    void grabInsertKeys(bool tellUser);
    // The keys now in force: `keys` when grabbed, else none; `takenMessage` (with %1 for the
    // keys) says what to do instead when another program holds them.
    QKeySequence grabKeys(EngineBackend::GlobalKey which, const QKeySequence& keys,
                          std::function<void()> onPressed, const QString& takenMessage,
                          bool tellUser);

    EngineBackend& m_engine;
    SnippetStore& m_store;
    Autostart& m_autostart;
    Preferences& m_preferences;
    std::unique_ptr<SingleInstanceGuard> m_guard;
    std::unique_ptr<TrayController> m_trayController;
    std::unique_ptr<QMainWindow> m_mainWindow;
    ContentView* m_editor = nullptr; // owned by the main window
    QKeySequence m_insertKeysInForce;
};
