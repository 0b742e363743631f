#include "LoopbackKeyboardOutput.h"

#include "FakeKeyMonitor.h"

LoopbackKeyboardOutput::LoopbackKeyboardOutput(FakeKeyMonitor& monitor,
                                               QHash<QChar, uint32_t> keyCodeOf,
                                               uint32_t backspaceKeyCode)
    : m_monitor(monitor), m_keyCodeOf(std::move(keyCodeOf)), m_backspace(backspaceKeyCode) {}

void LoopbackKeyboardOutput::deleteCharacters(int count) {
    RecordingKeyboardOutput::deleteCharacters(count);
    for (int i = 0; i < count; ++i)
        m_monitor.arrive(m_backspace);
}

void LoopbackKeyboardOutput::insertText(const QString& text) {
    RecordingKeyboardOutput::insertText(text);
    for (const QChar c : text)
        if (m_keyCodeOf.contains(c))
            m_monitor.arrive(m_keyCodeOf.value(c));
}
