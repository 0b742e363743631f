#pragma once

#include <QObject>
#include <functional>
#include <memory>

class TrayController;
class Autostart;
class Preferences;
class QMainWindow;
class QWidget;
class SingleInstanceGuard;

// The program as a whole: makes sure it is the only Typolet of this user, then starts the
// pieces in their order: the tray controller, the expansion engine, the permission
// check, the main window, and the controller's launch steps (menu, tray icon).
//
// The engine, the permission check and the main window's content come in as Parts, so the
// shell does not decide how they are made, and tests can run the shell with stand-ins.
class TypoletApp : public QObject {
    Q_OBJECT
public:
    struct Parts {
        // Creates and starts the expansion engine (first use of its single instance).
        std::function<void()> startEngine;
        // Checks the permissions; may schedule the guidance alert on the main queue.
        std::function<void()> checkPermissions;
        // The main window's content, the snippet editor.
        std::function<std::unique_ptr<QWidget>()> makeMainView;
    };

    // `serverName` empty: the per-user single-instance name.
    explicit TypoletApp(Parts parts, Autostart& autostart, Preferences& preferences,
                        const QString& serverName = {}, QObject* parent = nullptr);
    ~TypoletApp() override;

    // Starts everything. Returns false when another Typolet already runs: it has been asked
    // to bring its windows forward, nothing was started here, and the program should exit.
    bool start();

    // Null before start() or when start() returned false.
    TrayController* trayController() const { return m_trayController.get(); }
    QMainWindow* mainWindow() const { return m_mainWindow.get(); }
    // The single-instance channel: what a later launch asks, and what this one is asked.
    SingleInstanceGuard& instanceGuard() const { return *m_guard; }

    // The main window's first size.
    static constexpr int mainWidth = 1100;
    static constexpr int mainHeight = 700;

private:
    Parts m_parts;
    Autostart& m_autostart;
    Preferences& m_preferences;
    std::unique_ptr<SingleInstanceGuard> m_guard;
    std::unique_ptr<TrayController> m_trayController;
    std::unique_ptr<QMainWindow> m_mainWindow;
};
