#pragma once

#include "ClipboardSource.h"

// Gives the text the test put in it (none: empty, or only an image) and counts the questions.
// With `answerLater` the answer waits until answer() (an owner that is slow to reply).
class FakeClipboard : public ClipboardSource {
public:
    void readText(TextHandler done) override {
        ++reads;
        if (answerLater)
            m_waiting = std::move(done);
        else
            done(content);
    }
    void answer() {
        if (auto done = std::exchange(m_waiting, {}))
            done(content);
    }

    std::optional<QString> content;
    int reads = 0;
    bool answerLater = false;

private:
    TextHandler m_waiting;
};
