#pragma once

#include "PasswordFieldWatch.h"

// A password field has the focus while the test says so.
class FakePasswordFieldWatch : public PasswordFieldWatch {
public:
    bool passwordFieldFocused() const override { return focused; }
    bool focused = false;
};
