#pragma once

#include "AutostartBackend.h"

#include <QList>
#include <QString>
#include <optional>

// A login-item backend that only records what it was asked, and can be told to fail.
class RecordingAutostartBackend : public AutostartBackend {
public:
    std::optional<QString> registerItem() override;
    std::optional<QString> unregisterItem() override;
    bool isRegistered() const override { return registered; }

    // true for every register request, false for every unregister request, in order.
    QList<bool> calls;
    // When set, the matching request fails with this text.
    std::optional<QString> registerError;
    std::optional<QString> unregisterError;
    // Set by the requests that succeed; a test may clear it as a user removing the entry would.
    bool registered = false;
};
