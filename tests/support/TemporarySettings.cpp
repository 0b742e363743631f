#include "TemporarySettings.h"

#include <QSettings>

TemporarySettings::TemporarySettings() = default;

QString TemporarySettings::path() const { return m_dir.filePath(QStringLiteral("Typolet.conf")); }

void TemporarySettings::write(const QString& key, const QVariant& value) const {
    QSettings settings(path(), QSettings::NativeFormat);
    settings.setValue(key, value);
    settings.sync();
}

QVariant TemporarySettings::read(const QString& key) const {
    return QSettings(path(), QSettings::NativeFormat).value(key);
}

bool TemporarySettings::contains(const QString& key) const {
    return QSettings(path(), QSettings::NativeFormat).contains(key);
}
