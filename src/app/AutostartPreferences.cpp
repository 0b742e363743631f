#include "AutostartPreferences.h"

#include "SettingsFile.h"

#include <QSettings>

AutostartPreferences::AutostartPreferences(const QString& settingsFile, QObject* parent)
    : QObject(parent),
      m_settings(SettingsFile::open(settingsFile)) {}

AutostartPreferences::~AutostartPreferences() = default;

QString AutostartPreferences::settingsPath() const {
    return m_settings->fileName();
}

bool AutostartPreferences::startAtLogin() const {
    return m_settings->value(QLatin1String(startAtLoginKey), false).toBool();
}

bool AutostartPreferences::setStartAtLogin(bool enabled) {
    const bool changed = startAtLogin() != enabled;
    const bool written = write(startAtLoginKey, enabled);
    if (changed)
        emit startAtLoginChanged(enabled);
    return written;
}

bool AutostartPreferences::hasLaunchedBefore() const {
    return m_settings->value(QLatin1String(hasLaunchedBeforeKey), false).toBool();
}

bool AutostartPreferences::setHasLaunchedBefore(bool launched) {
    return write(hasLaunchedBeforeKey, launched);
}

bool AutostartPreferences::write(const char* key, bool value) {
    m_settings->setValue(QLatin1String(key), value);
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}
