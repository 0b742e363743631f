#pragma once

#include <QString>
#include <optional>

// The desktop's facility for starting programs when the user logs in. Autostart talks
// to it through this interface so the decision logic can be tested without touching the
// user's real session; Linux has one implementation, XdgAutostartBackend.
class AutostartBackend {
public:
    virtual ~AutostartBackend() = default;

    // Makes the program start at login. Returns the error text when that failed.
    virtual std::optional<QString> registerItem() = 0;

    // Stops the program from starting at login. Not being registered is not an error.
    // Returns the error text when that failed.
    virtual std::optional<QString> unregisterItem() = 0;

    // Whether the program starts at login now; the user may have changed it outside Typolet.
    virtual bool isRegistered() const = 0;
};
