#include "Preferences.h"

#include "LibraryFile.h"

#include <QUuid>
#include <algorithm>

Preferences::Preferences(const QString& settingsFile, QObject* parent)
    : Preferences(*new LibraryFile(settingsFile), parent) {
    m_ownFile.reset(m_file);
}

Preferences::Preferences(LibraryFile& file, QObject* parent) : QObject(parent), m_file(&file) {
    connect(m_file, &LibraryFile::changedOutside, this, &Preferences::takeOutsideChanges);
    // Signals to signals: whoever listens to the engine's settings hears one signal.
    connect(this, &Preferences::pausedChanged, this, &Preferences::engineSettingsChanged);
    connect(this, &Preferences::undoWithBackspaceChanged, this,
            &Preferences::engineSettingsChanged);
    connect(this, &Preferences::pasteChanged, this, &Preferences::engineSettingsChanged);
    connect(this, &Preferences::excludedApplicationsChanged, this,
            &Preferences::engineSettingsChanged);
    connect(this, &Preferences::keyboardLayoutChanged, this, &Preferences::engineSettingsChanged);
}

EngineSettings Preferences::engineSettings() const {
    return {paused(), excludedApplications(), undoWithBackspace(), effectivePasteThreshold(),
            keyboardLayout()};
}

Preferences::~Preferences() {
    disconnect(m_file, nullptr, this, nullptr);
}

QString Preferences::settingsPath() const {
    return m_file->path();
}

QVariant Preferences::stored(const char* key, const QVariant& fallback) const {
    return m_file->value(QLatin1String(key), fallback);
}

void Preferences::takeOutsideChanges(const QStringList& keys) {
    // Each listener hears the value now in force, as after a change made here.
    const auto changed = [&keys](const char* key) { return keys.contains(QLatin1String(key)); };
    if (changed(startAtLoginKey))
        emit startAtLoginChanged(startAtLogin());
    if (changed(undoWithBackspaceKey))
        emit undoWithBackspaceChanged(undoWithBackspace());
    if (changed(pasteLongSnippetsKey) || changed(pasteThresholdKey))
        emit pasteChanged();
    if (changed(saveEditsOnLeaveKey))
        emit saveEditsOnLeaveChanged(saveEditsOnLeave());
    if (changed(pausedKey))
        emit pausedChanged(paused());
    if (changed(excludedApplicationsKey))
        emit excludedApplicationsChanged(excludedApplications());
    if (changed(pauseKeysKey))
        emit pauseKeysChanged(pauseKeys());
    if (changed(insertKeysKey))
        emit insertKeysChanged(insertKeys());
    if (changed(countUsageKey))
        emit countUsageChanged(countUsage());
    if (changed(keyboardLayoutKey))
        emit keyboardLayoutChanged(keyboardLayout());
}

bool Preferences::startAtLogin() const {
    return stored(startAtLoginKey, false).toBool();
}

bool Preferences::setStartAtLogin(bool enabled) {
    const bool changed = startAtLogin() != enabled;
    const bool written = write(startAtLoginKey, enabled);
    if (changed)
        emit startAtLoginChanged(enabled);
    return written;
}

bool Preferences::hasLaunchedBefore() const {
    return stored(hasLaunchedBeforeKey, false).toBool();
}

bool Preferences::setHasLaunchedBefore(bool launched) {
    return write(hasLaunchedBeforeKey, launched);
}

bool Preferences::undoWithBackspace() const {
    return stored(undoWithBackspaceKey, true).toBool();
}

bool Preferences::setUndoWithBackspace(bool enabled) {
    const bool changed = undoWithBackspace() != enabled;
    const bool written = write(undoWithBackspaceKey, enabled);
    if (changed)
        emit undoWithBackspaceChanged(enabled);
    return written;
}

bool Preferences::pasteLongSnippets() const {
    return stored(pasteLongSnippetsKey, true).toBool();
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
    const int value = stored(pasteThresholdKey).toInt(&ok);
    if (!ok)
        return defaultPasteThreshold;
    return std::clamp(value, minimumPasteThreshold, maximumPasteThreshold);
}

bool Preferences::setPasteThreshold(int characters) {
    characters = std::clamp(characters, minimumPasteThreshold, maximumPasteThreshold);
    const bool changed = pasteThreshold() != characters;
    const bool written = write(pasteThresholdKey, characters);
    if (changed)
        emit pasteChanged();
    return written;
}

bool Preferences::saveEditsOnLeave() const {
    return stored(saveEditsOnLeaveKey, false).toBool();
}

bool Preferences::setSaveEditsOnLeave(bool enabled) {
    const bool changed = saveEditsOnLeave() != enabled;
    const bool written = write(saveEditsOnLeaveKey, enabled);
    if (changed)
        emit saveEditsOnLeaveChanged(enabled);
    return written;
}

QString Preferences::lastCategory() const {
    return stored(lastCategoryKey).toString();
}

bool Preferences::setLastCategory(const QString& id) {
    if (lastCategory() == id)
        return true;
    return write(lastCategoryKey, id);
}

bool Preferences::paused() const {
    return stored(pausedKey, false).toBool();
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
    if (!m_file->contains(QLatin1String(pauseKeysKey)))
        return QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Space);
    return QKeySequence::fromString(stored(pauseKeysKey).toString(),
                                    QKeySequence::PortableText);
}

bool Preferences::setPauseKeys(const QKeySequence& keys) {
    const bool changed = pauseKeys() != keys;
    const bool written = write(pauseKeysKey, keys.toString(QKeySequence::PortableText));
    if (changed)
        emit pauseKeysChanged(keys);
    return written;
}

QKeySequence Preferences::insertKeys() const {
    // Absent: the default. Present and empty: the user chose no keys.
    if (!m_file->contains(QLatin1String(insertKeysKey)))
        return QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Period);
    return QKeySequence::fromString(stored(insertKeysKey).toString(),
                                    QKeySequence::PortableText);
}

bool Preferences::setInsertKeys(const QKeySequence& keys) {
    const bool changed = insertKeys() != keys;
    const bool written = write(insertKeysKey, keys.toString(QKeySequence::PortableText));
    if (changed)
        emit insertKeysChanged(keys);
    return written;
}

bool Preferences::countUsage() const {
    return stored(countUsageKey, true).toBool();
}

bool Preferences::setCountUsage(bool enabled) {
    const bool changed = countUsage() != enabled;
    const bool written = write(countUsageKey, enabled);
    if (changed)
        emit countUsageChanged(enabled);
    return written;
}

QStringList Preferences::excludedApplications() const {
    return stored(excludedApplicationsKey).toStringList();
}

bool Preferences::setExcludedApplications(const QStringList& names) {
    const bool changed = excludedApplications() != names;
    const bool written = write(excludedApplicationsKey, names);
    if (changed)
        emit excludedApplicationsChanged(names);
    return written;
}

QString Preferences::keyboardLayout() const {
    return stored(keyboardLayoutKey).toString();
}

bool Preferences::setKeyboardLayout(const QString& layout) {
    const bool changed = keyboardLayout() != layout;
    const bool written = write(keyboardLayoutKey, layout);
    if (changed)
        emit keyboardLayoutChanged(layout);
    return written;
}

QString Preferences::remoteDesktopToken() const {
    return stored(remoteDesktopTokenKey).toString();
}

bool Preferences::setRemoteDesktopToken(const QString& token) {
    return write(remoteDesktopTokenKey, token);
}

void Preferences::setLayoutInUse(const QString& description) {
    if (description == m_layoutInUse)
        return;
    m_layoutInUse = description;
    emit layoutInUseChanged(description);
}

QString Preferences::syncFolder() const { return stored(syncFolderKey).toString(); }

bool Preferences::setSyncFolder(const QString& folder) { return write(syncFolderKey, folder); }

QString Preferences::syncComputerId() {
    QString id = stored(syncComputerIdKey).toString();
    if (id.size() == 8)
        return id;
    // Random, not the host name: two computers may share a name, and a name may change.
    id = QUuid::createUuid().toString(QUuid::Id128).left(8);
    write(syncComputerIdKey, id);
    return id;
}

bool Preferences::write(const char* key, const QVariant& value) {
    // A value that did not reach the disk stays in force and goes out with the next save; the
    // library file says why it did not.
    return !m_file->write({{QLatin1String(key), value}}, std::nullopt);
}
