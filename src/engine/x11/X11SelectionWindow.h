#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;

// A connection of its own to the X server and an unmapped window on it that receives property
// changes: what a client needs to own a selection or to be handed one, without sharing Qt's
// connection (whose events Qt reads and whose round trips would wait on this thread).
class X11SelectionWindow {
public:
    X11SelectionWindow();
    ~X11SelectionWindow();
    X11SelectionWindow(const X11SelectionWindow&) = delete;
    X11SelectionWindow& operator=(const X11SelectionWindow&) = delete;

    // Connects and makes the window, once; `readable` runs whenever the server sent something.
    // False when the display cannot be opened.
    bool open(std::function<void()> readable);
    Display* display() const { return m_display; }
    unsigned long window() const { return m_window; }

private:
    Display* m_display = nullptr;
    unsigned long m_window = 0;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
