#include "AtomicFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
QString systemError(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

// Whether the open file `fd` holds exactly `expected`: read back through a descriptor of its
// own, so what is compared is what the file system took, not what we meant to give it.
bool holdsExactly(int fd, const QByteArray& expected) {
    const int reader = ::open(QByteArray("/proc/self/fd/" + QByteArray::number(fd)).constData(),
                              O_RDONLY | O_CLOEXEC);
    if (reader < 0)
        return false;
    struct stat info {};
    bool same = ::fstat(reader, &info) == 0 && info.st_size == expected.size();
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    qsizetype offset = 0;
    while (same && offset < expected.size()) {
        const ssize_t got = ::pread(reader, chunk.data(), size_t(chunk.size()), offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            same = false;
            break;
        }
        same = std::memcmp(chunk.constData(), expected.constData() + offset, size_t(got)) == 0;
        offset += got;
    }
    ::close(reader);
    return same;
}
} // namespace

std::optional<QString> AtomicFile::write(const QString& path, const QByteArray& bytes,
                                         QFileDevice::Permissions permissions) {
    QSaveFile file(path);
    // Never in place: the old file stays whole until the new one is complete.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        // QSaveFile says "not writable" for a read-only file system too; the system says which.
        const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
        if (::access(folder.constData(), W_OK) != 0)
            return systemError(errno);
        return file.errorString();
    }
    file.setPermissions(permissions);
    // Straight to the descriptor, so that the reason of a short write (a full disk) is the one
    // the system gave.
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t chunk =
            ::write(file.handle(), bytes.constData() + written,
                    size_t(std::min<qsizetype>(bytes.size() - written, qsizetype(1) << 24)));
        if (chunk < 0 && errno == EINTR)
            continue;
        if (chunk <= 0) {
            const int error = chunk < 0 ? errno : ENOSPC;
            file.cancelWriting();
            return systemError(error);
        }
        written += chunk;
    }
    // A file system that finds no room only when the data goes to disk says so here; QSaveFile's
    // commit syncs too but does not report a failure.
    if (::fdatasync(file.handle()) != 0) {
        const int error = errno;
        file.cancelWriting();
        return systemError(error);
    }
    if (!holdsExactly(file.handle(), bytes)) {
        file.cancelWriting();
        return QCoreApplication::translate("AtomicFile",
                                           "what reached the disk is not what was written");
    }
    if (!file.commit())
        return file.errorString();
    return std::nullopt;
}
