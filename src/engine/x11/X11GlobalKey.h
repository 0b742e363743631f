#pragma once

#include <QObject>

class QSocketNotifier;
typedef struct _XDisplay Display;

// One key combination for the whole desktop (Ctrl+Alt+Space for pausing,
// Ctrl+Alt+Period for the insert window), grabbed on the root
// window through a connection of its own: the application with the focus never sees it.
class X11GlobalKey : public QObject {
    Q_OBJECT
public:
    explicit X11GlobalKey(QObject* parent = nullptr);
    ~X11GlobalKey() override;

    // Takes `keys` (a letter, digit, punctuation, function key or Space with modifiers); false
    // when another program holds it already, or when it cannot be grabbed at all (no display,
    // no such key).
    bool grab(QKeyCombination keys);

signals:
    void pressed();

private:
    void ungrab();
    void readEvents();

    Display* m_display = nullptr;
    QSocketNotifier* m_notifier = nullptr;
    int m_keyCode = 0;
    unsigned int m_modifiers = 0;
};
