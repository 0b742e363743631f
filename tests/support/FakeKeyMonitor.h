#pragma once

#include "KeyMonitor.h"

#include <QList>
#include <QObject>

// A key monitor driven by the test. press() is the user typing: the key is reported at once.
// arrive() is a key the system produced that reaches the monitor a little later, as X events
// do: it is reported from the event loop unless discardPendingKeys() drops it first.
class FakeKeyMonitor : public QObject, public KeyMonitor {
    Q_OBJECT
public:
    explicit FakeKeyMonitor(bool startSucceeds = true) : m_startSucceeds(startSucceeds) {}

    bool start(KeyDownHandler handler) override;
    void discardPendingKeys() override;

    void press(uint32_t keyCode);
    void arrive(uint32_t keyCode);

    bool started() const { return static_cast<bool>(m_handler); }
    int startCalls = 0;
    int discardCalls = 0;
    QList<uint32_t> discarded;

private:
    void deliverPending();

    bool m_startSucceeds;
    KeyDownHandler m_handler;
    QList<uint32_t> m_pending;
};
