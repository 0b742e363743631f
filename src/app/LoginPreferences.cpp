#include "LoginPreferences.h"

#include "SettingsFile.h"

#include <QSettings>

LoginPreferences::LoginPreferences(const QString& settingsFile, QObject* parent)
    : QObject(parent),
      m_settings(SettingsFile::open(settingsFile)) {}

LoginPreferences::~LoginPreferences() = default;

QString LoginPreferences::settingsPath() const {
    return m_settings->fileName();
}

bool LoginPreferences::startAtLogin() const {
    return m_settings->value(QLatin1String(startAtLoginKey), false).toBool();
}

bool LoginPreferences::setStartAtLogin(bool enabled) {
    const bool changed = startAtLogin() != enabled;
    const bool written = write(startAtLoginKey, enabled);
    if (changed)
        emit startAtLoginChanged(enabled);
    return written;
}

bool LoginPreferences::hasLaunchedBefore() const {
    return m_settings->value(QLatin1String(hasLaunchedBeforeKey), false).toBool();
}

bool LoginPreferences::setHasLaunchedBefore(bool launched) {
    return write(hasLaunchedBeforeKey, launched);
}

bool LoginPreferences::write(const char* key, bool value) {
    m_settings->setValue(QLatin1String(key), value);
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}
