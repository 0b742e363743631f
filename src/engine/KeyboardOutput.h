#pragma once

#include <QString>

// Where an expansion's keystrokes go: erasing the typed command and typing the content.
// The X11 implementation posts real key events; tests use a recording fake.
class KeyboardOutput {
public:
    virtual ~KeyboardOutput() = default;

    // Erases `count` characters before the caret of the focused application.
    virtual void deleteCharacters(int count) = 0;
    // Types `text` into the focused application as one operation.
    virtual void insertText(const QString& text) = 0;
};
