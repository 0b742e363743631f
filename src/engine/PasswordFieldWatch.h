#pragma once

// Tells whether the field that has the keyboard focus hides what is typed (a password field),
// so that nothing typed there is matched, kept or written to a log.
class PasswordFieldWatch {
public:
    virtual ~PasswordFieldWatch() = default;

    // Asked at every key, so it answers from what the watch already knows and never waits
    // for another program.
    virtual bool passwordFieldFocused() const = 0;
};
