#pragma once

#include "SyncMerge.h"
#include "SyncState.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QTimer>
#include <functional>
#include <optional>

class SnippetStore;

// Keeps the library in step with the other computers' libraries in a folder that a sync engine
// (Syncthing, Nextcloud, Dropbox, a git checkout) copies between computers.
//
// No file there is written by two computers: this one writes only its own,
// <folder>/Typolet/<host>-<computer id>.json, and reads every other computer's. A sync engine
// therefore never sees one file changed on two sides, and a git checkout never has a merge
// conflict. The records are merged by SyncMerge's rule; the store hears of the result as of any
// change, and every change of the store goes out in this computer's file soon after.
//
// The folder is watched. Files a sync engine is still writing (temporary names) are passed
// over; a file that does not read as a library is named in unreadableFiles() and left exactly
// as it is; conflict copies a sync engine made anyway are merged like any computer's file and
// then moved into the history's folder. Only the library goes into the folder: preferences,
// exclusions and the pause stay on this computer.
class SyncFolder : public QObject {
    Q_OBJECT
public:
    struct Computer {
        QString name;     // the host name its file gives
        QString fileName; // in the Typolet folder
        int snippets = 0;
        QDateTime lastChange; // its newest change among the records it holds; invalid if none
        bool thisComputer = false;
    };

    // `computer` gives this computer's id (a few random characters kept in the local
    // preferences). It is asked for when syncing begins: making the id writes the preferences,
    // which a library that is never synced need not wait for at start. `statePath` is the
    // state file (empty: SyncState::standardPath()).
    SyncFolder(SnippetStore& store, std::function<QString()> computer, QString statePath = {},
               QObject* parent = nullptr);
    ~SyncFolder() override;

    // Begins syncing through `folder`: takes in the libraries of the computers already there,
    // writes this one's, and follows both from then on. Returns why it cannot.
    std::optional<QString> start(const QString& folder);
    // Stops following the folder; the library stays as it is on this computer.
    void stop();
    bool isActive() const { return !m_folder.isEmpty(); }
    QString folder() const { return m_folder; }
    // <folder>/Typolet.
    QString libraryFolder() const;
    QString ownFilePath() const;
    QString computer() const { return m_computer; }

    // Every computer whose file is in the folder, this one first.
    QList<Computer> computers() const;
    // File name -> why it cannot be read.
    QMap<QString, QString> unreadableFiles() const { return m_unreadable; }
    // Snippets the last start() took in from other computers.
    int addedOnStart() const { return m_addedOnStart; }
    // Where conflict copies go once merged.
    QString conflictCopiesFolder() const;

    // Takes in what changed in the folder (the watch calls it soon after a change; tests may
    // call it at once).
    void readFolder();
    // Stamps the store's changes and writes this computer's file (a change of the store calls
    // it within writeDelayMs; tests may call it at once).
    void publish();

    static constexpr int writeDelayMs = 300;
    static constexpr int readDelayMs = 150;
    static constexpr int pollIntervalMs = 1000;

signals:
    void computersChanged();
    void unreadableFilesChanged();
    // Changes made here and on another computer without either seeing the other's: the newer
    // stands, the other is in the history; `message` says so for the window.
    void collisionsKept(const QString& message);
    // This computer's file could not be written; the library itself is safe.
    void writeFailed(const QString& message);

private:
    struct Signature {
        qint64 size = -1, modified = 0;
        quint64 inode = 0;
        friend bool operator==(const Signature&, const Signature&) = default;
    };
    static Signature signatureOf(const QString& path);
    bool storeIsWhole() const;
    bool stampLocalChanges();
    void applyToStore();
    void keepLosses(const SyncMerge::Outcome& outcome);
    void moveConflictCopy(const QString& path);
    void writeOwnFile();
    void watchFiles();
    Computer describe(const QString& fileName, const QString& name,
                      const SyncMerge::Library& library, const QString& computer) const;

    SnippetStore& m_store;
    std::function<QString()> m_computerId;
    QString m_computer; // asked of m_computerId when syncing first begins
    QString m_hostName;
    SyncState m_state;
    QString m_folder;
    bool m_applying = false;
    bool m_localChanges = false; // the store changed since its lists were last stamped
    qsizetype m_savedHandled = -1;
    bool m_writePending = false; // this computer's file could not be written
    bool m_keepBeforeApplying = false;
    int m_addedOnStart = 0;
    QByteArray m_written;      // this computer's file as last written
    Signature m_ownSignature;  // and as it was then on disk
    // What each file was when last read. A signature taken within a moment of the file's last
    // change proves nothing (file times are coarse, and a file replaced at once may get the old
    // one's inode back), so such a file is read again and its bytes compared.
    struct Seen {
        Signature signature;
        size_t hash = 0;
        bool settled = false;
    };
    QHash<QString, Seen> m_seen;
    QMap<QString, Computer> m_computers; // other computers, by file name
    QMap<QString, QString> m_unreadable;
    QFileSystemWatcher m_watcher;
    QTimer m_readSoon;
    QTimer m_writeSoon;
    QTimer m_poll;
};
