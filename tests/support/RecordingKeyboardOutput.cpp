#include "RecordingKeyboardOutput.h"

void RecordingKeyboardOutput::deleteCharacters(int count) { calls.append(deletion(count)); }

void RecordingKeyboardOutput::insertText(const QString& text) { calls.append(insertion(text)); }
