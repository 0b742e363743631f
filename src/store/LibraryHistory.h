#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

// Earlier versions of the library file to come back to, kept in
// $XDG_STATE_HOME/Typolet/backups/ (a folder only the user can open, files only the user can
// read). Each version is the whole file as it was; the newest `kept` stay.
class LibraryHistory {
public:
    // Why a version was kept; part of its file name.
    enum class Reason { Edit, Import, OutsideChange, Restore, Salvage, SyncCollision };

    struct Version {
        QString path;
        QDateTime when; // local time
        Reason reason = Reason::Edit;
    };

    explicit LibraryHistory(QString folder);

    // $XDG_STATE_HOME/Typolet/backups, or ~/.local/state/Typolet/backups.
    static QString standardFolder();
    QString folder() const { return m_folder; }

    // Whether a version is kept for this reason now: an edit only when the newest version kept
    // before an edit is older than editIntervalSeconds, anything else always.
    bool due(Reason reason) const;
    // Keeps `fileText` as a version (its file in `*keptPath`). Returns why the copy could not be
    // made.
    std::optional<QString> keep(const QByteArray& fileText, Reason reason,
                                QString* keptPath = nullptr);
    // Newest first.
    QList<Version> versions() const;
    static QString reasonText(Reason reason);

    static constexpr int kept = 20;
    static constexpr qint64 editIntervalSeconds = 10 * 60;

private:
    QString m_folder;
};
