#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>


// Typolet's own windows, hidden all at once for "Run in Background" (only the tray icon is
// left, and snippets keep expanding) and shown again by "Open Typolet" or a second launch:
// the windows that were open, and the main window in any case; a window the user had closed
// stays closed.
class AppWindows {
public:
    bool inBackground() const { return m_inBackground; }

    // Hides every window of the application.
    void hideAll();

    // Shows the windows that were open when they were hidden (or, out of the background, those
    // open now) and the main window, and brings them to the front.
    void showAll();
    // The window "Open Typolet" always brings back.
    void setMainWindow(QWidget* window) { m_mainWindow = window; }

    // Shows `window` (restored if it was minimised) in front of the others, with the keyboard.
    static void bringForward(QWidget* window);

    // The application's own windows, in creation order: top-level, parentless windows and
    // dialogs that have been shown or hidden at least once. Menus, tooltips, transient child
    // dialogs, the tray icon's embedded window and widgets that were never meant to be
    // windows are left out.
    static QList<QWidget*> list();

private:
    bool m_inBackground = false;
    QList<QPointer<QWidget>> m_wereOpen;
    QPointer<QWidget> m_mainWindow;
};
