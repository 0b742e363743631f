#pragma once

#include <QString>
#include <memory>

class QSettings;

// The one settings file Typolet keeps everything in: the snippet lists and the start-at-login
// flags live side by side in $XDG_CONFIG_HOME/Typolet/Typolet.conf.
class SettingsFile {
public:
    // The user's Typolet settings, or the given file (tests use their own).
    static std::unique_ptr<QSettings> open(const QString& path = {});
};
