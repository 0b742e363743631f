#include "LibraryFile.h"

#include "AtomicFile.h"
#include "LargePages.h"
#include "LibraryMerge.h"
#include "Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr QFileDevice::Permissions ownerOnly = AtomicFile::ownerOnly;

QString historyFolderFor(const QString& path) {
    return path.isEmpty() ? LibraryHistory::standardFolder()
                          : QFileInfo(path).absolutePath() + QStringLiteral("/backups");
}

} // namespace

LibraryFile::LibraryFile(const QString& path, QObject* parent)
    : QObject(parent), m_path(path.isEmpty() ? standardPath() : path),
      m_history(historyFolderFor(path)) {
    secureFolderAndFile();
    QString error;
    if (auto disk = readDisk(&error, false)) {
        adopt(std::move(*disk));
    } else {
        m_readError = error;
        m_identity = identityNow();
        qCWarning(lcStore).noquote()
            << QStringLiteral("Cannot read %1 (%2); nothing is written over it").arg(m_path, error);
    }
    // An outside change is usually a burst of events (a new file, a rename); one look after it.
    m_outsideCheck.setSingleShot(true);
    m_outsideCheck.setInterval(150);
    connect(&m_outsideCheck, &QTimer::timeout, this, &LibraryFile::takeOutsideChanges);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_outsideCheck,
            qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_outsideCheck,
            qOverload<>(&QTimer::start));
    m_retry.setInterval(retryIntervalMs);
    connect(&m_retry, &QTimer::timeout, this, [this] {
        if (!flush(LibraryHistory::Reason::Edit))
            m_retry.stop();
    });
    watch();
}

LibraryFile::~LibraryFile() = default;

QString LibraryFile::standardPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Typolet/Typolet.conf");
}

void LibraryFile::secureFolderAndFile() {
    const QFileInfo file(m_path);
    const QString folder = file.absolutePath();
    // The library is the user's own writing: nobody else reads it, nor anything beside it.
    constexpr auto folderMode = ownerOnly | QFileDevice::ExeOwner;
    constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                            QFileDevice::ExeGroup | QFileDevice::ReadOther |
                            QFileDevice::WriteOther | QFileDevice::ExeOther;
    if (!QFileInfo::exists(folder)) {
        if (QDir().mkpath(folder))
            QFile::setPermissions(folder, folderMode);
        else
            qCWarning(lcStore).noquote() << QStringLiteral("Cannot make the folder %1").arg(folder);
    } else if (const QFileInfo info(folder); info.isDir() && (info.permissions() & others) &&
                                             info.ownerId() == ::getuid()) {
        if (QFile::setPermissions(folder, folderMode))
            qCInfo(lcStore).noquote()
                << QStringLiteral("Made %1 a folder only you can open").arg(folder);
    }
    if (file.isFile() && (file.permissions() & others) && file.ownerId() == ::getuid()) {
        if (QFile::setPermissions(m_path, file.permissions() & ~others))
            qCInfo(lcStore).noquote()
                << QStringLiteral("%1 could be read by other users; now only you can").arg(m_path);
    }
    // A save cut short by a crash or a kill leaves its scratch file (Typolet.conf.XXXXXX); one
    // that old belongs to no save in progress.
    const QDir dir(folder);
    const QFileInfoList scratch = dir.entryInfoList({file.fileName() + QStringLiteral(".??????")},
                                                    QDir::Files | QDir::Hidden);
    for (const QFileInfo& leftover : scratch) {
        if (leftover.lastModified().secsTo(QDateTime::currentDateTime()) > 60)
            QFile::remove(leftover.filePath());
    }
}

void LibraryFile::watch() {
    // The folder, since a program that replaces the file atomically ends any watch on the file
    // itself; the file too, for programs that write it in place.
    const QString folder = QFileInfo(m_path).absolutePath();
    if (!m_watcher.directories().contains(folder))
        m_watcher.addPath(folder);
    if (QFileInfo(m_path).isReadable() && !m_watcher.files().contains(m_path))
        m_watcher.addPath(m_path);
}

LibraryFile::Identity LibraryFile::identityOf(const struct stat& info) {
    return {true,
            quint64(info.st_dev),
            quint64(info.st_ino),
            qint64(info.st_size),
            qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
            qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec};
}

LibraryFile::Identity LibraryFile::identityNow() const {
    struct stat info {};
    if (::stat(QFile::encodeName(m_path).constData(), &info) != 0)
        return {};
    return identityOf(info);
}

std::optional<LibraryFile::DiskState> LibraryFile::readDisk(QString* error, bool keepText) const {
    DiskState disk;
    const QFileInfo info(m_path);
    if (!info.exists() && !info.isSymLink())
        return disk;
    if (info.isDir()) {
        *error = tr("it is a folder, not a file");
        return std::nullopt;
    }
    QFile file(m_path);
    if (!info.isFile()) {
        *error = tr("it is not a regular file");
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return std::nullopt;
    }
    struct stat before {};
    ::fstat(file.handle(), &before);
    // The size seen at once, in large pages; then whatever it grew by meanwhile.
    if (before.st_size > 0) {
        disk.text.resize(qsizetype(before.st_size));
        LargePages::prefer(disk.text.data(), disk.text.size());
        const qint64 got = file.read(disk.text.data(), disk.text.size());
        disk.text.resize(qsizetype(std::max<qint64>(got, 0)));
    }
    disk.text += file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        return std::nullopt;
    }
    disk.identity = identityOf(before);
    disk.values = keepText ? IniFormat::parse(disk.text) : IniFormat::parse(std::move(disk.text));
    return disk;
}

void LibraryFile::adopt(DiskState disk) {
    m_base = std::move(disk.values);
    m_identity = disk.identity;
    m_readError.clear();
}

QVariant LibraryFile::value(const QString& key, const QVariant& fallback) const {
    if (const auto pending = m_pending.constFind(key); pending != m_pending.cend())
        return *pending ? IniFormat::decode(**pending) : fallback;
    if (const auto base = m_base.constFind(key); base != m_base.cend())
        return IniFormat::decode(*base);
    return fallback;
}

bool LibraryFile::contains(const QString& key) const {
    if (const auto pending = m_pending.constFind(key); pending != m_pending.cend())
        return pending->has_value();
    return m_base.contains(key);
}

IniFormat::Values LibraryFile::current() const {
    IniFormat::Values values = m_base;
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
        if (*it)
            values.insert(it.key(), **it);
        else
            values.remove(it.key());
    }
    return values;
}

QByteArray LibraryFile::text() const { return IniFormat::compose(current()); }

std::optional<QString> LibraryFile::write(const QMap<QString, QVariant>& changes,
                                          std::optional<LibraryHistory::Reason> reason) {
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        if (it.value().isValid())
            m_pending.insert(it.key(), IniFormat::encode(it.value()));
        else
            m_pending.insert(it.key(), std::nullopt);
    }
    return flush(reason);
}

std::optional<QString> LibraryFile::failed(const QString& why) {
    const QString message = tr("Could not save to %1: %2").arg(m_path, why);
    if (message != m_lastFailure)
        qCWarning(lcStore).noquote() << message;
    m_lastFailure = message;
    if (!m_retry.isActive())
        m_retry.start();
    emit saveFailed(message);
    return message;
}

std::optional<QString> LibraryFile::flush(std::optional<LibraryHistory::Reason> reason) {
    if (m_pending.isEmpty())
        return std::nullopt;
    // The file on disk must be the one this save is based on; if another program changed it
    // (or it could not be read before), it is read and merged first.
    if (!m_readError.isEmpty() || identityNow() != m_identity) {
        QString error;
        auto disk = readDisk(&error);
        if (!disk) {
            m_readError = error;
            m_identity = identityNow();
            return failed(tr("the file on disk cannot be read (%1), so Typolet does not write "
                             "over it")
                              .arg(error));
        }
        if (!disk->identity.exists) {
            m_readError.clear(); // gone: it is written anew
        } else if (disk->values == m_base) {
            adopt(std::move(*disk)); // back as it was, or only touched
        } else {
            mergeOutside(std::move(*disk));
        }
        if (m_pending.isEmpty())
            return std::nullopt;
    }
    if (reason)
        keepVersion(*reason);
    const IniFormat::Values next = current();
    if (const auto error = replaceFile(IniFormat::compose(next)))
        return failed(*error);
    m_base = next;
    m_pending.clear();
    m_identity = identityNow();
    m_retry.stop();
    m_lastFailure.clear();
    watch();
    emit saved();
    return std::nullopt;
}

void LibraryFile::keepVersion(LibraryHistory::Reason reason) {
    // A file that is no longer there as a file is the save's fault to report, not the history's.
    if (!m_identity.exists || !m_history.due(reason) || !QFileInfo(m_path).isFile())
        return;
    if (const auto error = keepOnDisk(reason))
        qCWarning(lcStore).noquote()
            << QStringLiteral("No earlier version of the library could be kept: %1").arg(*error);
}

std::optional<QString> LibraryFile::keepOnDisk(LibraryHistory::Reason reason, QString* keptPath) {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    return m_history.keep(file.readAll(), reason, keptPath);
}

std::optional<QString> LibraryFile::replaceFile(const QByteArray& text) {
    return AtomicFile::write(m_path, text);
}

void LibraryFile::mergeOutside(DiskState disk) {
    // The library as Typolet had it, to come back to; and when Typolet has changes of its own
    // that may meet the other program's in one record, the other program's file too.
    const IniFormat::Values ours = current();
    QList<QByteArray> versions{IniFormat::compose(ours)};
    if (!m_pending.isEmpty())
        versions.append(disk.text);
    for (const QByteArray& version : std::as_const(versions)) {
        if (const auto error = m_history.keep(version, LibraryHistory::Reason::OutsideChange))
            qCWarning(lcStore).noquote()
                << QStringLiteral("No version could be kept before taking in another program's "
                                  "change: %1")
                       .arg(*error);
    }
    LibraryMerge::Result merged = LibraryMerge::merge(m_base, ours, disk.values);
    adopt(std::move(disk));
    m_pending.clear();
    for (auto it = merged.values.cbegin(); it != merged.values.cend(); ++it) {
        if (m_base.value(it.key()) != it.value() || !m_base.contains(it.key()))
            m_pending.insert(it.key(), it.value());
    }
    for (auto it = m_base.cbegin(); it != m_base.cend(); ++it) {
        if (!merged.values.contains(it.key()))
            m_pending.insert(it.key(), std::nullopt);
    }
    if (merged.takenFromOutside.isEmpty())
        return;
    qCInfo(lcStore).noquote() << QStringLiteral("Another program changed %1; took in %2")
                                     .arg(m_path, merged.takenFromOutside.join(QStringLiteral(", ")));
    emit changedOutside(merged.takenFromOutside);
}

void LibraryFile::takeOutsideChanges() {
    watch();
    const Identity now = identityNow();
    if (now == m_identity && m_readError.isEmpty())
        return;
    if (!now.exists) {
        if (m_identity.exists)
            qCWarning(lcStore).noquote()
                << QStringLiteral("%1 was removed; Typolet keeps the library and writes it again "
                                  "with the next change")
                       .arg(m_path);
        m_identity = now;
        return;
    }
    QString error;
    auto disk = readDisk(&error);
    if (!disk) {
        if (m_readError != error)
            qCWarning(lcStore).noquote()
                << QStringLiteral("Cannot read %1 (%2); nothing is written over it").arg(m_path, error);
        m_readError = error;
        m_identity = now;
        return;
    }
    const bool wasUnreadable = !m_readError.isEmpty();
    if (!wasUnreadable && disk->values == m_base) {
        m_identity = disk->identity; // touched or rewritten the same
        return;
    }
    mergeOutside(std::move(*disk));
    if (!m_pending.isEmpty())
        flush(LibraryHistory::Reason::Edit);
}
