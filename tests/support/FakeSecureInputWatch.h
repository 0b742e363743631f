#pragma once

#include "SecureInputWatch.h"

// A password field has the focus while the test says so.
class FakeSecureInputWatch : public SecureInputWatch {
public:
    bool passwordFieldFocused() const override { return passwordField; }
    bool passwordField = false;
};
