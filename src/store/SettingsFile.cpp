#include "SettingsFile.h"

#include <QSettings>

std::unique_ptr<QSettings> SettingsFile::open(const QString& path) {
    if (!path.isEmpty())
        return std::make_unique<QSettings>(path, QSettings::NativeFormat);
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("Typolet"), QStringLiteral("Typolet"));
}
