#include "RecordingKeyboardOutput.h"

#include <QTimer>

void RecordingKeyboardOutput::perform(const Expansion& actions, std::function<void()> finished) {
    performed.append(actions);
    m_finished = std::move(finished);
    if (finishAtOnce)
        QTimer::singleShot(0, &m_pendingFinish, [this] { finish(); });
}

void RecordingKeyboardOutput::finish() {
    if (auto finished = std::exchange(m_finished, {}))
        finished();
}
