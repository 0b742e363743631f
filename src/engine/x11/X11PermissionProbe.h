#pragma once

#include "PermissionProbe.h"

// Answers from the X server named by DISPLAY: keys can be observed when XInput 2.0 or later is
// there, and posted when XTEST is there. Each question opens and closes its own connection, so
// a missing display is simply "no".
class X11PermissionProbe : public PermissionProbe {
public:
    bool canObserveKeys() override;
    bool canPostKeys() override;

    // Whether any display can be opened at all.
    static bool displayAvailable();
};
