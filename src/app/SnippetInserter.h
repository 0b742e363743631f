#pragma once

#include "FocusReturn.h"
#include "Snippet.h"

#include <QObject>
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

signals:
    // The content went to the clipboard, as the focus did not come back.
    void copiedInstead(const Snippet& snippet);

private:
    void send(const Snippet& snippet);

    InsertSnippetWindow& m_window;
    std::function<void(const Snippet&)> m_send;
    // To the window that had the focus when the insert window opened.
    FocusReturn m_focusReturn;
};
