#pragma once

#include <QCoreApplication>

#include <QWidget>
#include <memory>

class AboutView;
class Autostart;
class Preferences;
class PreferencesView;
class SyncFolder;

// The Preferences, About and help windows. Each is built the first time it is asked for and kept
// for the life of the process: closing one only hides it, and the next request brings the
// same window back with its state.
class ShellWindows {
    Q_DECLARE_TR_FUNCTIONS(ShellWindows)
public:
    ShellWindows(Autostart& autostart, Preferences& preferences);
    ~ShellWindows();

    // The synced folder the Preferences window shows in its "Sync" card; set before the window
    // is first opened.
    void setSyncFolder(SyncFolder* sync) { m_sync = sync; }

    // Shows the Preferences window (500 x 400, "Preferences"), building it on first use, and
    // brings it to the front.
    void openPreferencesWindow();
    // The same for the About window (240 x 220, "About Typolet", only a close button).
    void openAboutWindow();

    // The same for the help page ("Typolet Help").
    void openHelpWindow();

    // Null until first opened.
    QWidget* preferencesWindow() const { return m_preferencesWindow.get(); }
    QWidget* aboutWindow() const { return m_aboutWindow.get(); }
    QWidget* helpWindow() const { return m_helpWindow.get(); }
    PreferencesView* preferencesView() const { return m_preferencesView; }
    AboutView* aboutView() const { return m_aboutView; }

    static constexpr QSize preferencesSize{500, 690};
    static constexpr QSize aboutSize{240, 220};
    static constexpr QSize helpSize{560, 520};

private:
    Autostart& m_autostart;
    Preferences& m_preferences;
    SyncFolder* m_sync = nullptr;
    std::unique_ptr<QWidget> m_preferencesWindow;
    std::unique_ptr<QWidget> m_aboutWindow;
    std::unique_ptr<QWidget> m_helpWindow;
    PreferencesView* m_preferencesView = nullptr;
    AboutView* m_aboutView = nullptr;
};
