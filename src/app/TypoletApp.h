#pragma once

#include <QObject>
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
    ContentView* editor() const { return m_editor; }

    // The main window's first size.
    static constexpr int mainWidth = 1100;
    static constexpr int mainHeight = 700;

private:
    // The preferences reach the engine at once, whoever changes them.
    void connectEngine();
    // Takes the pause keys for the whole desktop; `tellUser`: a window says when they are
    // taken by another program (a change made in Preferences), not only the log.
    void grabPauseKeys(bool tellUser);

    EngineBackend& m_engine;
    SnippetStore& m_store;
    Autostart& m_autostart;
    Preferences& m_preferences;
    std::unique_ptr<SingleInstanceGuard> m_guard;
    std::unique_ptr<TrayController> m_trayController;
    std::unique_ptr<QMainWindow> m_mainWindow;
    ContentView* m_editor = nullptr; // owned by the main window
};
