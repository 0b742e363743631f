#pragma once

#include "SecureInputWatch.h"

// A password field has the focus while the test says so; counts the questions.
class FakeSecureInputWatch : public SecureInputWatch {
public:
    bool passwordFieldFocused() const override {
        ++questions;
        return passwordField;
    }

    bool passwordField = false;
    mutable int questions = 0;
};
