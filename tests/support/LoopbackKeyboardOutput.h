#pragma once

#include "RecordingKeyboardOutput.h"

#include <QHash>

class FakeKeyMonitor;

// Records like its base and, as the real system does, makes every key it "types" arrive at the
// key monitor again: backspaces as the BackSpace key, text through `keyCodeOf` (characters it
// does not know are not echoed).
class LoopbackKeyboardOutput : public RecordingKeyboardOutput {
public:
    LoopbackKeyboardOutput(FakeKeyMonitor& monitor, QHash<QChar, uint32_t> keyCodeOf,
                           uint32_t backspaceKeyCode);

    void deleteCharacters(int count) override;
    void insertText(const QString& text) override;

private:
    FakeKeyMonitor& m_monitor;
    QHash<QChar, uint32_t> m_keyCodeOf;
    uint32_t m_backspace;
};
