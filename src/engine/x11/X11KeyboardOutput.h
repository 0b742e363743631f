#pragma once

#include "KeyboardOutput.h"
#include "KeystrokePlanner.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class X11KeymapSource;
typedef struct _XDisplay Display;

// Types into the focused application with XTest on its own Xlib connection.
//
// Backspaces are BackSpace press/release pairs. Text is typed character by character in one
// go: with the layout's own keys where it has them, otherwise with spare keycodes bound to the
// characters' keysyms (see KeystrokePlanner). Modifiers the user is holding are released while
// we type and pressed again afterwards, so a held Shift does not change the text. Every call
// ends with a round trip, so when it returns the server has handled all of its events.
//
// Spare keycodes keep their bindings for a while after typing (clients may still be reading
// the events that used them) and are emptied again when Typolet has been idle for
// `restoreDelayMs`, and when this object is destroyed.
class X11KeyboardOutput : public QObject, public KeyboardOutput {
    Q_OBJECT
public:
    explicit X11KeyboardOutput(X11KeymapSource& keymaps, QObject* parent = nullptr);
    ~X11KeyboardOutput() override;

    // Opens the connection and loads the keyboard mapping now, so the first expansion does
    // not pay for it between the user's keys. False without a display.
    bool open();

    void deleteCharacters(int count) override;
    void insertText(const QString& text) override;

    // Empties every spare keycode we bound.
    void restoreSpareKeyCodes();

    // How long a rebinding waits after the last key that may still be unread (clients handle
    // the MappingNotify and refetch the mapping only when they reach it in their queue).
    static constexpr int settleBaseMs = 150;
    static constexpr double settlePerKeyMs = 2.0;
    static constexpr int restoreDelayMs = 10000;

private:
    QList<uint32_t> releaseHeldModifiers();
    void pressAgain(const QList<uint32_t>& keyCodes);
    void bind(const QList<KeystrokePlanner::Binding>& bindings);
    void waitBeforeRebinding();
    void tap(uint32_t keyCode);

    X11KeymapSource& m_keymaps;
    Display* m_display = nullptr;
    KeystrokePlanner m_planner;
    QElapsedTimer m_lastPost;
    int m_keysInLastBatch = 0;
    QTimer m_restoreTimer;
};
