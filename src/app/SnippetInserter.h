#pragma once

#include "Snippet.h"

#include <QObject>
#include <QRect>
#include <QTimer>
#include <functional>

class InsertSnippetWindow;
class WindowFocus;

// Opens the insert window over the application the user was typing in, and sends the chosen
// snippet there: the window closes, the focus goes back to the window that had it, and only
// then does the content go out, through the engine's output as an expansion would (nothing is
// erased). Where the focus does not come back within a second, the content goes to the
// clipboard instead and the window opens again to say so. Escape and Ctrl+C give the focus
// back too.
class SnippetInserter : public QObject {
    Q_OBJECT
public:
    // `focus` may be null (Wayland): the compositor then gives the focus back by itself, and
    // the content goes out after a short pause. `send` hands a snippet to the engine.
    SnippetInserter(InsertSnippetWindow& window, WindowFocus* focus,
                    std::function<void(const Snippet&)> send, QObject* parent = nullptr);

    // Shows the window (the global key, the tray entry, `typolet --insert`).
    void open();

    // How long the focus may take to come back, and how often it is asked for meanwhile.
    static constexpr int focusPatienceMs = 1000;
    static constexpr int focusRetryMs = 50;
    // Without a way to ask, the time a compositor is given to move the focus back.
    static constexpr int unverifiedFocusMs = 150;

signals:
    // The content went to the clipboard, as the focus did not come back.
    void copiedInstead(const Snippet& snippet);

private:
    void giveFocusBack(std::function<void(bool returned)> then);
    void send(const Snippet& snippet);

    InsertSnippetWindow& m_window;
    WindowFocus* m_focus;
    std::function<void(const Snippet&)> m_send;
    quint64 m_target = 0; // the window that had the focus when the insert window opened
    QTimer m_retry;
    int m_waitedMs = 0;
    std::function<void(bool)> m_then;
};
