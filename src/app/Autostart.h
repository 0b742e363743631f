#pragma once

#include "AutostartBackend.h"

#include <memory>

class Preferences;

// Makes Typolet start by itself when the user logs in, or stops it from doing so. It never
// fails towards its caller: a failure becomes one line on standard output
// ("Failed to enable autostart entry: <error>") and nothing else; nothing is retried and the
// stored preference is left as it is.
class Autostart {
public:
    explicit Autostart(std::unique_ptr<AutostartBackend> backend);
    ~Autostart();

    void setStartAtLogin(bool enabled);

    // Run each time the Preferences view appears. The first time ever, it turns the
    // start-at-login switch on and writes the autostart entry; afterwards it does nothing, so a
    // user who switched it off keeps it off. Until Preferences is first opened Typolet does not
    // start at login.
    void applyFirstLaunchDefault(Preferences& preferences);

    // Makes the preference say what the desktop will do: an entry removed (or added) by hand
    // outside Typolet is what counts. Run each time the switch is shown.
    void reflectDesktop(Preferences& preferences);

    AutostartBackend& backend() const { return *m_backend; }

private:
    std::unique_ptr<AutostartBackend> m_backend;
};
