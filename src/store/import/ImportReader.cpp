#include "ImportReader.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
QString megabytes(qint64 bytes) {
    return QLocale().toString(double(bytes) / (1 << 20), 'f', 1);
}

QString couldNotRead(const QString& path, int error) {
    return ImportReader::tr("%1 could not be read: %2").arg(path, qt_error_string(error));
}

// Why a file of this type is not read, naming it and, for a link, what it leads to.
QString notRegular(const QString& path, mode_t mode) {
    QString message;
    if (S_ISDIR(mode))
        message = ImportReader::tr("%1 is a folder, not a file.");
    else if (S_ISFIFO(mode))
        message = ImportReader::tr("%1 is a named pipe, not a file: reading it could wait "
                                   "forever.");
    else if (S_ISCHR(mode) || S_ISBLK(mode))
        message = ImportReader::tr("%1 is a device, not a file: reading it may never end.");
    else if (S_ISSOCK(mode))
        message = ImportReader::tr("%1 is a socket, not a file.");
    else
        message = ImportReader::tr("%1 is not a regular file.");
    message = message.arg(path);
    const QFileInfo info(path);
    if (info.isSymLink())
        message +=
            QLatin1Char(' ') + ImportReader::tr("It is a link to %1.").arg(info.symLinkTarget());
    return message + QLatin1Char(' ') + ImportReader::tr("Only regular files are imported.");
}

QString tooLarge(const QString& path, qint64 size) {
    return ImportReader::tr("%1 is too large to import (%2 MB; at most %3 MB).")
        .arg(path, megabytes(size), megabytes(ImportReader::maxBytes));
}

// The files of a folder are held to one total.
QString pastTotal(const QString& path) {
    return ImportReader::tr("%1 would bring this import past %2 MB in all, more than one import "
                            "reads.")
        .arg(path, megabytes(ImportReader::maxBytes));
}

// Closes the descriptor on every way out.
struct Descriptor {
    int fd;
    ~Descriptor() {
        if (fd >= 0)
            ::close(fd);
    }
};
} // namespace

ImportReader::ImportReader(const std::atomic<bool>* cancelled, Progress progress)
    : m_cancelled(cancelled), m_progress(std::move(progress)) {}

bool ImportReader::cancelled() const {
    return m_cancelled && m_cancelled->load(std::memory_order_relaxed);
}

QString ImportReader::cancelledMessage() {
    return tr("The import was cancelled.");
}

void ImportReader::report(qint64 done, qint64 total) {
    if (!m_progress || total <= 0)
        return;
    const int permille = int(qBound(qint64(0), done * 1000 / total, qint64(1000)));
    if (permille == m_permille)
        return;
    m_permille = permille;
    m_progress(permille);
}

std::optional<QString> ImportReader::readFile(const QString& path, QByteArray& data) {
    data.clear();
    if (cancelled())
        return cancelledMessage();
    // Looked at before opening: opening a named pipe waits for a writer.
    const QByteArray native = QFile::encodeName(path);
    struct stat seen {};
    if (::stat(native.constData(), &seen) != 0)
        return couldNotRead(path, errno);
    if (!S_ISREG(seen.st_mode))
        return notRegular(path, seen.st_mode);
    if (seen.st_size > maxBytes)
        return tooLarge(path, seen.st_size);
    if (m_bytesRead + seen.st_size > maxBytes)
        return pastTotal(path);

    // Non-blocking, in case the file was replaced by a pipe since it was looked at.
    const Descriptor file{::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)};
    if (file.fd < 0)
        return couldNotRead(path, errno);
    return readOpen(path, file.fd, data);
}

std::optional<QString> ImportReader::readOpen(const QString& path, int fd, QByteArray& data) {
    struct stat opened {};
    if (::fstat(fd, &opened) != 0)
        return couldNotRead(path, errno);
    if (!S_ISREG(opened.st_mode))
        return notRegular(path, opened.st_mode);

    const qint64 allowed = maxBytes - m_bytesRead;
    data.reserve(qMin(qint64(opened.st_size), allowed));
    constexpr qsizetype chunk = qsizetype(1) << 20;
    for (;;) {
        if (cancelled()) {
            data.clear();
            return cancelledMessage();
        }
        const qsizetype had = data.size();
        data.resize(had + chunk);
        const ssize_t got = ::read(fd, data.data() + had, size_t(chunk));
        data.resize(had + qMax(ssize_t(0), got));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int error = errno;
            data.clear();
            return couldNotRead(path, error);
        }
        if (got == 0)
            break;
        // A file that grows while it is read is held to the same limit.
        if (data.size() > allowed) {
            data.clear();
            if (allowed < maxBytes)
                return pastTotal(path);
            return tr("%1 grew past %2 MB while it was read, more than Typolet imports from one "
                      "file.")
                .arg(path, megabytes(maxBytes));
        }
    }
    m_bytesRead += data.size();
    ++m_filesRead;
    return std::nullopt;
}
