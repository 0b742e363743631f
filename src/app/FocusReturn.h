#pragma once

#include <QObject>
#include <QRect>
#include <QTimer>
#include <functional>

class WindowFocus;

// Hands the keyboard focus back to the window the user was typing in, once one of Typolet's
// own small windows (Insert Snippet, the fill-in form) is done with it, and says whether it
// came back: text typed into whatever has the focus instead could land anywhere.
class FocusReturn : public QObject {
    Q_OBJECT
public:
    // `focus` may be null (Wayland): the compositor then gives the focus back by itself, and
    // the answer comes after a short pause.
    explicit FocusReturn(WindowFocus* focus, QObject* parent = nullptr);

    // Notes the window that has the focus now, to return to later; stops a return under way.
    void rememberFocused();
    // Where that window is (desktop coordinates); empty when it cannot be told.
    QRect rememberedFrame() const;

    // Asks for the focus to go back; `then` learns whether it did, within a second.
    void giveBack(std::function<void(bool returned)> then);

    // How long the focus may take to come back, and how often it is asked for meanwhile.
    static constexpr int focusPatienceMs = 1000;
    static constexpr int focusRetryMs = 50;
    // Without a way to ask, the time a compositor is given to move the focus back.
    static constexpr int unverifiedFocusMs = 150;

private:
    WindowFocus* m_focus;
    quint64 m_target = 0;
    QTimer m_retry;
    int m_waitedMs = 0;
    std::function<void(bool)> m_then;
};
