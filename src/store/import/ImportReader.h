#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <atomic>
#include <functional>
#include <optional>

// Reads the files of one import within its limits, and carries what the import is told from
// outside while it runs: whether it was cancelled, and where to report how far it got.
//
// Only regular files are read. A named pipe would block the open (and with it the import,
// for good), a device such as /dev/zero never ends, so their type is looked at before they
// are opened, and again on the open descriptor. Files larger than `maxBytes` are refused
// before reading, and reading stops there too, since a file may grow while it is read; a
// folder's files together are held to the same total. Readers check `cancelled()` between
// records and files.
class ImportReader {
    Q_DECLARE_TR_FUNCTIONS(ImportReader)
public:
    // Per file, and for all the files of one import together.
    static constexpr qint64 maxBytes = qint64(20) << 20;

    // Called with how far the import got, in thousandths, each time that figure changes.
    using Progress = std::function<void(int permille)>;

    explicit ImportReader(const std::atomic<bool>* cancelled = nullptr, Progress progress = {});

    // The whole file into `data`; on failure (or cancellation) why, naming the file.
    std::optional<QString> readFile(const QString& path, QByteArray& data);

    bool cancelled() const;
    // What a reader returns as its error once it notices it was cancelled.
    static QString cancelledMessage();
    // `done` of `total` units of work; reported on only when the thousandths change.
    void report(qint64 done, qint64 total);

    qint64 bytesRead() const { return m_bytesRead; }
    int filesRead() const { return m_filesRead; }

private:
    std::optional<QString> readOpen(const QString& path, int fd, QByteArray& data);

    const std::atomic<bool>* m_cancelled;
    Progress m_progress;
    int m_permille = -1;
    qint64 m_bytesRead = 0;
    int m_filesRead = 0;
};
