#pragma once

#include <QList>

class QWidget;

// Typolet's own windows, hidden all at once for "Run in Background" (only the tray icon is
// left, and snippets keep expanding) and shown all again by "Open Typolet" or a second launch.
class AppWindows {
public:
    bool inBackground() const { return m_inBackground; }

    // Hides every window of the application.
    void hideAll();

    // Shows every window of the application and brings it to the front, including windows the
    // user had closed (closed windows are only hidden).
    void showAll();

    // The application's own windows, in creation order: top-level, parentless windows and
    // dialogs that have been shown or hidden at least once. Menus, tooltips, transient child
    // dialogs, the tray icon's embedded window and widgets that were never meant to be
    // windows are left out.
    static QList<QWidget*> list();

private:
    bool m_inBackground = false;
};
