#include "SettingsFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>

std::unique_ptr<QSettings> SettingsFile::open(const QString& path) {
    if (!path.isEmpty())
        return std::make_unique<QSettings>(path, QSettings::NativeFormat);
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("Typolet"), QStringLiteral("Typolet"));
}

namespace {
// QSettings keeps what it read of a file by name, and takes a file of the same size and
// modification time as unchanged; the clock the file system stamps with may not move between
// two quick saves (a category renamed to other letter case is a save of the same length). So
// every file written here is stamped later than the one before, and every reader sees it anew.
void stampLaterThanLast(const QString& path) {
    static QDateTime lastStamp;
    QDateTime stamp = QDateTime::currentDateTimeUtc();
    if (lastStamp.isValid() && stamp <= lastStamp)
        stamp = lastStamp.addMSecs(1);
    lastStamp = stamp;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        file.setFileTime(stamp, QFileDevice::FileModificationTime);
}
} // namespace

std::optional<QString> SettingsFile::save(QSettings& settings,
                                          const QMap<QString, QVariant>& values) {
    const QString path = settings.fileName();
    settings.sync(); // picks up what other parts of Typolet wrote meanwhile
    // QSettings writes the format; it does not notice a short write (a full disk leaves the
    // file cut, and it reports no error), so its result is read back and compared before it
    // replaces anything. The read-back opens the file under another name: under its own name
    // QSettings would answer from its memory of what it meant to write.
    const QString scratchPath = path + QStringLiteral(".saving");
    const QString checkPath = path + QStringLiteral(".checking");
    QFile::remove(scratchPath);
    QFile::remove(checkPath);
    QMap<QString, QVariant> all;
    for (const QString& key : settings.allKeys())
        all.insert(key, settings.value(key));
    all.insert(values);
    {
        QSettings scratch(scratchPath, QSettings::NativeFormat);
        for (auto it = all.cbegin(); it != all.cend(); ++it)
            scratch.setValue(it.key(), it.value());
        scratch.sync();
    }
    bool complete = QFile::rename(scratchPath, checkPath);
    stampLaterThanLast(checkPath);
    {
        QSettings check(checkPath, QSettings::NativeFormat);
        complete = complete && check.status() == QSettings::NoError &&
                   check.allKeys().size() == all.size();
        for (auto it = values.cbegin(); complete && it != values.cend(); ++it)
            complete = check.value(it.key()) == it.value();
    }
    QFile scratchFile(checkPath);
    if (!complete || !scratchFile.open(QIODevice::ReadOnly)) {
        QFile::remove(scratchPath);
        QFile::remove(checkPath);
        return QCoreApplication::translate(
            "SettingsFile", "the new file could not be written completely beside it (is the "
                            "disk full, or the folder read-only?)");
    }
    const QByteArray bytes = scratchFile.readAll();
    scratchFile.close();
    QFile::remove(checkPath);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    if (file.write(bytes) != bytes.size()) {
        const QString error = file.errorString();
        file.cancelWriting();
        return error;
    }
    // commit() flushes, syncs to disk and renames; it fails, leaving the old file, when any
    // byte did not make it.
    if (!file.commit())
        return file.errorString();
    stampLaterThanLast(path);
    settings.sync();
    return std::nullopt;
}
