#pragma once

#include <QMap>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

class QSettings;

// The one settings file Typolet keeps everything in: the snippet lists and the start-at-login
// flags live side by side in $XDG_CONFIG_HOME/Typolet/Typolet.conf.
class SettingsFile {
public:
    // The user's Typolet settings, or the given file (tests use their own).
    static std::unique_ptr<QSettings> open(const QString& path = {});

    // Writes `values` over what the file holds now, all or nothing: the new file is written
    // and checked beside the old one and only then takes its place, so a full disk, a crash
    // or a kill leaves the old file whole. On failure returns why, and the file is unchanged.
    static std::optional<QString> save(QSettings& settings, const QMap<QString, QVariant>& values);
};
