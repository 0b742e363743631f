#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

// A settings file of its own in a fresh temporary folder, for one test.
class TemporarySettings {
public:
    TemporarySettings();

    QString path() const;
    // Writes a raw value as the store would find it on disk.
    void write(const QString& key, const QVariant& value) const;
    QVariant read(const QString& key) const;
    bool contains(const QString& key) const;

private:
    QTemporaryDir m_dir;
};
