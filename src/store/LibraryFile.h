#pragma once

#include "IniFormat.h"
#include "LibraryHistory.h"

#include <QFileSystemWatcher>
#include <QMap>
#include <QObject>
#include <QTimer>
#include <QVariant>
#include <optional>

struct stat;

// The one owner of $XDG_CONFIG_HOME/Typolet/Typolet.conf: the snippet and category lists and
// every preference live in it, and everything Typolet keeps goes through this object, which
// main() makes once and hands to the store and the preferences.
//
// A save writes the whole file beside the old one, checks that every byte reached the disk, and
// only then puts it in the old one's place; a save that fails leaves the old file as it was and
// keeps the change, which goes out with the next save or a retry a few seconds later.
//
// Other programs may change the file too (a sync service, a text editor, Typolet in another
// session). The folder is watched: a change Typolet did not make is read at once and merged
// with whatever Typolet has not saved yet (see LibraryMerge), and every save first makes sure
// the file on disk is the one last read. A file that exists but cannot be read is never
// written over.
class LibraryFile : public QObject {
    Q_OBJECT
public:
    // The given file (tests use their own; its history is kept in "backups" beside it), or the
    // user's standard one with the standard history when empty. Reads the file at once.
    explicit LibraryFile(const QString& path = {}, QObject* parent = nullptr);
    ~LibraryFile() override;

    // $XDG_CONFIG_HOME/Typolet/Typolet.conf.
    static QString standardPath();
    QString path() const { return m_path; }
    LibraryHistory& history() { return m_history; }

    // Why the file could not be read the last time Typolet looked; empty when it could (or
    // when there is none yet). While it is set nothing is written.
    QString readError() const { return m_readError; }

    QVariant value(const QString& key, const QVariant& fallback = {}) const;
    bool contains(const QString& key) const;

    // Sets the keys in `changes` (an invalid QVariant removes its key) and saves, keeping the
    // file as it was in the history first when `reason` calls for it (none for a preference).
    // Returns why the file could not be written; the change is kept all the same and written
    // later.
    std::optional<QString> write(const QMap<QString, QVariant>& changes,
                                 std::optional<LibraryHistory::Reason> reason = LibraryHistory::Reason::Edit);
    bool hasUnsavedChanges() const { return !m_pending.isEmpty(); }
    // Keeps the file as it is on disk now in the history (its copy in `*keptPath`); returns why
    // it could not.
    std::optional<QString> keepOnDisk(LibraryHistory::Reason reason, QString* keptPath = nullptr);
    // The file as a save would write it now.
    QByteArray text() const;

    // Looks at the file on disk and takes in what another program changed; the folder watch
    // calls it, and so may tests.
    void takeOutsideChanges();

    static constexpr int retryIntervalMs = 3000;

signals:
    // Another program changed these keys; their values are the merged ones already.
    void changedOutside(const QStringList& keys);
    // A save did not reach the disk; the message says why.
    void saveFailed(const QString& message);
    // Everything Typolet holds is on disk (after a save, or a retry after failures).
    void saved();

private:
    struct Identity {
        bool exists = false;
        quint64 device = 0, inode = 0;
        qint64 size = 0, modified = 0, changed = 0; // times in nanoseconds
        friend bool operator==(const Identity&, const Identity&) = default;
    };
    struct DiskState {
        Identity identity;
        IniFormat::Values values;
        QByteArray text;
    };
    using Pending = QMap<QString, std::optional<QByteArray>>; // nullopt: the key goes

    static Identity identityOf(const struct stat& info);
    Identity identityNow() const;
    // The file as it is now, or why it cannot be read; its text too when `keepText` (for the
    // history), else only its values.
    std::optional<DiskState> readDisk(QString* error, bool keepText = true) const;
    void adopt(DiskState disk);
    void mergeOutside(DiskState disk);
    std::optional<QString> flush(std::optional<LibraryHistory::Reason> reason);
    std::optional<QString> failed(const QString& why);
    IniFormat::Values current() const;
    std::optional<QString> replaceFile(const QByteArray& text);
    void keepVersion(LibraryHistory::Reason reason);
    void secureFolderAndFile();
    void watch();

    QString m_path;
    LibraryHistory m_history;
    IniFormat::Values m_base; // as on disk when last read or written
    Identity m_identity;      // of that file
    Pending m_pending;        // changes not on disk yet
    QString m_readError;
    QString m_lastFailure;
    QFileSystemWatcher m_watcher;
    QTimer m_outsideCheck;
    QTimer m_retry;
};
