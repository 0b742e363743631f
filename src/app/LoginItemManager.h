#pragma once

#include "LoginItemBackend.h"

#include <memory>

class LoginPreferences;

// Makes Typolet start by itself when the user logs in, or stops it from doing so. It never
// fails towards its caller: a failure becomes one line on standard output
// ("Failed to enable login item: <error>") and nothing else; nothing is retried and the
// stored preference is left as it is.
class LoginItemManager {
public:
    explicit LoginItemManager(std::unique_ptr<LoginItemBackend> backend);
    ~LoginItemManager();

    void setStartAtLogin(bool enabled);

    // Run each time the Preferences view appears. The first time ever, it turns the
    // start-at-login switch on and registers the login item; afterwards it does nothing, so a
    // user who switched it off keeps it off. Until Preferences is first opened Typolet does not
    // start at login.
    void applyFirstLaunchDefault(LoginPreferences& preferences);

    // Makes the preference say what the desktop will do: an entry removed (or added) by hand
    // outside Typolet is what counts. Run each time the switch is shown.
    void reflectDesktop(LoginPreferences& preferences);

    LoginItemBackend& backend() const { return *m_backend; }

private:
    std::unique_ptr<LoginItemBackend> m_backend;
};
