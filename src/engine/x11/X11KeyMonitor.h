#pragma once

#include "KeyMonitor.h"

#include <QObject>
#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;

// Watches key presses in every application through XInput2 raw key events on its own Xlib
// connection, read on the main thread when the connection's socket has data. It is passive:
// nothing is grabbed, every key reaches the focused application unchanged.
//
// The same connection receives the XKB events that say the keymap or the layout group changed;
// they are passed on in the order the server sent them, so each key is read with the group that
// was active when it was pressed.
class X11KeyMonitor : public QObject, public KeyMonitor {
    Q_OBJECT
public:
    explicit X11KeyMonitor(QObject* parent = nullptr);
    ~X11KeyMonitor() override;

    bool start(KeyDownHandler handler) override;
    void discardPendingKeys() override;

    void setKeymapChangedHandler(std::function<void()> handler);
    void setGroupChangedHandler(std::function<void(uint32_t)> handler);

private:
    void readEvents(bool deliverKeys);

    Display* m_display = nullptr;
    int m_xiOpcode = 0;
    int m_xkbEventType = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    KeyDownHandler m_keyDown;
    std::function<void()> m_keymapChanged;
    std::function<void(uint32_t)> m_groupChanged;
};
