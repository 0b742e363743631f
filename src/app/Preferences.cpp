#include "Preferences.h"

#include "SettingsFile.h"

#include <QSettings>
#include <algorithm>

Preferences::Preferences(const QString& settingsFile, QObject* parent)
    : QObject(parent),
      m_settings(SettingsFile::open(settingsFile)) {}

Preferences::~Preferences() = default;

QString Preferences::settingsPath() const {
    return m_settings->fileName();
}

bool Preferences::startAtLogin() const {
    return m_settings->value(QLatin1String(startAtLoginKey), false).toBool();
}

bool Preferences::setStartAtLogin(bool enabled) {
    const bool changed = startAtLogin() != enabled;
    const bool written = write(startAtLoginKey, enabled);
    if (changed)
        emit startAtLoginChanged(enabled);
    return written;
}

bool Preferences::hasLaunchedBefore() const {
    return m_settings->value(QLatin1String(hasLaunchedBeforeKey), false).toBool();
}

bool Preferences::setHasLaunchedBefore(bool launched) {
    return write(hasLaunchedBeforeKey, launched);
}

bool Preferences::undoWithBackspace() const {
    return m_settings->value(QLatin1String(undoWithBackspaceKey), true).toBool();
}

bool Preferences::setUndoWithBackspace(bool enabled) {
    const bool changed = undoWithBackspace() != enabled;
    const bool written = write(undoWithBackspaceKey, enabled);
    if (changed)
        emit undoWithBackspaceChanged(enabled);
    return written;
}

bool Preferences::pasteLongSnippets() const {
    return m_settings->value(QLatin1String(pasteLongSnippetsKey), true).toBool();
}

bool Preferences::setPasteLongSnippets(bool enabled) {
    const bool changed = pasteLongSnippets() != enabled;
    const bool written = write(pasteLongSnippetsKey, enabled);
    if (changed)
        emit pasteChanged();
    return written;
}

int Preferences::pasteThreshold() const {
    bool ok = false;
    const int stored = m_settings->value(QLatin1String(pasteThresholdKey)).toInt(&ok);
    if (!ok)
        return defaultPasteThreshold;
    return std::clamp(stored, minimumPasteThreshold, maximumPasteThreshold);
}

bool Preferences::setPasteThreshold(int characters) {
    characters = std::clamp(characters, minimumPasteThreshold, maximumPasteThreshold);
    const bool changed = pasteThreshold() != characters;
    const bool written = write(pasteThresholdKey, characters);
    if (changed)
        emit pasteChanged();
    return written;
}

bool Preferences::paused() const {
    return m_settings->value(QLatin1String(pausedKey), false).toBool();
}

bool Preferences::setPaused(bool paused) {
    const bool changed = this->paused() != paused;
    const bool written = write(pausedKey, paused);
    if (changed)
        emit pausedChanged(paused);
    return written;
}

QKeySequence Preferences::pauseKeys() const {
    // Absent: the default. Present and empty: the user chose no keys.
    if (!m_settings->contains(QLatin1String(pauseKeysKey)))
        return QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Space);
    return QKeySequence::fromString(m_settings->value(QLatin1String(pauseKeysKey)).toString(),
                                    QKeySequence::PortableText);
}

bool Preferences::setPauseKeys(const QKeySequence& keys) {
    const bool changed = pauseKeys() != keys;
    const bool written = write(pauseKeysKey, keys.toString(QKeySequence::PortableText));
    if (changed)
        emit pauseKeysChanged(keys);
    return written;
}

QStringList Preferences::excludedApplications() const {
    return m_settings->value(QLatin1String(excludedApplicationsKey)).toStringList();
}

bool Preferences::setExcludedApplications(const QStringList& names) {
    const bool changed = excludedApplications() != names;
    const bool written = write(excludedApplicationsKey, names);
    if (changed)
        emit excludedApplicationsChanged(names);
    return written;
}

QString Preferences::keyboardLayout() const {
    return m_settings->value(QLatin1String(keyboardLayoutKey)).toString();
}

bool Preferences::setKeyboardLayout(const QString& layout) {
    const bool changed = keyboardLayout() != layout;
    const bool written = write(keyboardLayoutKey, layout);
    if (changed)
        emit keyboardLayoutChanged(layout);
    return written;
}

void Preferences::setLayoutInUse(const QString& description) {
    if (description == m_layoutInUse)
        return;
    m_layoutInUse = description;
    emit layoutInUseChanged(description);
}

bool Preferences::write(const char* key, const QVariant& value) {
    m_settings->setValue(QLatin1String(key), value);
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}
