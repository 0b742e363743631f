#pragma once

#include "PermissionProbe.h"

#include <memory>

// Answers from the X server named by DISPLAY: keys can be observed when XInput 2.0 or later is
// there, and posted when XTEST is there. Each question opens and closes its own connection, so
// a missing display is simply "no".
class X11PermissionProbe : public PermissionProbe {
public:
    bool canObserveKeys() override;
    bool canPostKeys() override;
    QString observeProblem() const override {
        return QStringLiteral("the X server offers no XInput 2 extension");
    }
    QString postProblem() const override {
        return QStringLiteral("the X server offers no XTEST extension");
    }

    // A connection to the display, held for as long as the caller keeps it; null when no
    // display can be opened. Holding it while the toolkit connects matters: a server whose
    // last client leaves resets and refuses connections for a moment.
    static std::shared_ptr<void> openDisplay();
};
