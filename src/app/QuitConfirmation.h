#pragma once

#include <QCoreApplication>
#include <QString>

class AppWindows;
class QMessageBox;
class QWidget;

// The question asked in front of every way of quitting (menus, the window manager, the end of
// the session): quit for good, keep expanding in the background, or carry on as before.
// Quitting by accident would silently stop every snippet, which is why nothing quits without
// this answer.
class QuitConfirmation {
    Q_DECLARE_TR_FUNCTIONS(QuitConfirmation)
public:
    // The alert's answers, in the order of its buttons.
    enum class Response { Quit, RunInBackground, Cancel };

    explicit QuitConfirmation(AppWindows& windows);

    // Shows the alert and acts on the answer: "Run in Background" hides every window. Blocks
    // (in a modal loop) until the user answers; true when the quit may go ahead.
    bool confirmQuit();

    // Shows the alert modally and returns the answer; closing it counts as Cancel.
    static Response ask(QWidget* parent = nullptr);

    // The alert, built but not shown (for ask()). Without a tray, running in the background
    // leaves nothing on screen, so the alert says how to come back (`hasTray` false).
    static QMessageBox* createAlert(QWidget* parent = nullptr, bool hasTray = true);

    static QString messageText();
    static QString informativeText();
    static QString noTrayText();

private:
    AppWindows& m_windows;
};
