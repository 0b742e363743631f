#pragma once

#include "AppWindows.h"
#include "QuitConfirmation.h"
#include "ShellWindows.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

class Autostart;
class ContentView;
class Preferences;
class QAction;
class QMainWindow;
class QMenu;
class QSessionManager;
class QSystemTrayIcon;

// Everything the user reaches around the main window: its File, Edit and Help menus, the
// tray icon with its menu, the Preferences and About windows, and the question that stands
// in front of every way of quitting.
//
// Quitting: every termination request (the two Quit entries, Ctrl+Q, a quit request from the
// desktop, the end of the session) goes through confirmQuit(), which asks the
// quit question. Only "Quit" ends the program, once the editor's edits not yet saved are
// saved or discarded (cancelling that question cancels the quit); "Run in Background" hides every window and
// leaves the tray icon and the engine running; "Cancel" leaves everything as it was. Closing
// the main window does not quit either.
class TrayController : public QObject {
    Q_OBJECT
public:
    TrayController(Autostart& autostart, Preferences& preferences,
                QObject* parent = nullptr);
    ~TrayController() override;

    // Once the main window exists: the menus on `mainWindow`'s menu bar and the tray icon.
    // The controller does not keep `mainWindow`.
    void setUp(QMainWindow* mainWindow);

    // Asks the quit question and acts on it; true when the program may end. Also the session
    // manager's question at log-out.
    bool confirmQuit();

    // Menu actions.
    void showPreferences();
    void openApp(); // shows every window again and brings it forward
    void quitApp(); // a termination request, as from "Quit Typolet"
    void showAbout();

    // The tray icon; null when the desktop offers no system tray.
    QSystemTrayIcon* trayIcon() const { return m_trayIcon.get(); }
    QWidget* preferencesWindow() const { return m_windows.preferencesWindow(); }
    QWidget* aboutWindow() const { return m_windows.aboutWindow(); }
    ShellWindows& windows() { return m_windows; }
    AppWindows& appWindows() { return m_appWindows; }

    // The menus, built at launch (the tray menu exists even without a tray, so it can be
    // inspected).
    QMenu* trayMenu() const { return m_trayMenu.get(); }
    QMenu* fileMenu() const { return m_fileMenu; }
    QMenu* editMenu() const { return m_editMenu; }
    QMenu* helpMenu() const { return m_helpMenu; }
    // "Pause Expansion", checked while paused; in the tray menu and the File menu.
    QAction* pauseAction() const { return m_pauseAction; }
    // "Exclude “name”" in the tray menu, for the application in use when the menu opens, which
    // `source` names (empty: none known). Set once the engine runs.
    QAction* excludeAction() const { return m_excludeAction; }
    // Shows the desktop-wide keys that pause, beside "Pause Expansion" (shown, not bound:
    // the keys reach Typolet through their grab, not through the menus).
    void showPauseKeys(const QKeySequence& keys);
    // Puts the library's import and export entries in the File menu, after the New entries.
    void addLibraryActions(const QList<QAction*>& actions);
    // Puts "Insert Snippet…" in the tray menu, last before Quit.
    void addInsertAction(QAction* action);
    void setLastApplicationSource(std::function<QString()> source) {
        m_lastApplication = std::move(source);
    }

    // What the tray icon's tooltip says: "Typolet — expanding" or "Typolet — paused".
    static QString toolTipText(bool paused);
    QMenu* excludedMenu() const { return m_excludedMenu; }

    // Ends the program without asking, for requests nobody can answer (SIGTERM from a
    // service manager or a shutdown script, Ctrl+C in a terminal).
    void terminateWithoutAsking();

signals:
    // The quit question was answered "Quit": the program is about to end.
    void terminating();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setupMainMenu(QMainWindow* mainWindow);
    void setUpTrayIcon();
    void popUpTrayMenu();
    void fillExcludedMenu();
    void commitData(QSessionManager& manager);

    AppWindows m_appWindows;
    QuitConfirmation m_confirmation;
    ShellWindows m_windows;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    std::unique_ptr<QMenu> m_trayMenu;
    QPointer<ContentView> m_editor; // the main window's, whose edits are settled before quitting
    // The menus are owned by the main window's menu bar.
    QMenu* m_fileMenu = nullptr;
    QMenu* m_editMenu = nullptr;
    QMenu* m_helpMenu = nullptr;
    QAction* m_libraryActionsEnd = nullptr; // the separator the library's entries go before
    // Also bound in the Preferences and About windows: Preferences, Quit, Help.
    QList<QAction*> m_windowActions;
    QAction* m_pauseAction = nullptr;
    QAction* m_excludeAction = nullptr;
    QMenu* m_excludedMenu = nullptr; // owned by the tray menu
    QAction* m_quitSeparator = nullptr; // owned by the tray menu
    std::function<QString()> m_lastApplication;
    Preferences& m_preferences;
    bool m_asking = false;
    bool m_terminationApproved = false;
};
