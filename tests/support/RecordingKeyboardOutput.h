#pragma once

#include "KeyboardOutput.h"

#include <QList>
#include <QObject>

// Records each expansion the engine asked for. It finishes each one on the next event-loop
// turn, or, with `finishAtOnce` off, when the test calls finish().
class RecordingKeyboardOutput : public KeyboardOutput {
public:
    void perform(const Expansion& actions, std::function<void()> finished) override;
    void cancel() override { ++cancels; }
    void finish();

    bool finishAtOnce = true;
    QList<Expansion> performed;
    int cancels = 0;

private:
    std::function<void()> m_finished;
    QObject m_pendingFinish; // drops a queued finish when the recorder goes first
};
