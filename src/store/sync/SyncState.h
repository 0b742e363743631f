#pragma once

#include "SyncMerge.h"

#include <QSet>
#include <QString>
#include <optional>

// What this computer knows of the synced library, kept between runs in a file of its own
// ($XDG_STATE_HOME/Typolet/sync.json): the folder it belongs to, every record with its stamp
// and the deletion marks (the library file keeps none of them), and the collisions already
// reported. Lost or unreadable, it is started afresh: the folder still holds every computer's
// library, and this one is stamped as old, so that nothing newer elsewhere is overwritten.
class SyncState {
public:
    explicit SyncState(QString path = {});

    // $XDG_STATE_HOME/Typolet/sync.json, or ~/.local/state/Typolet/sync.json.
    static QString standardPath();
    QString path() const { return m_path; }

    // Reads the file; returns false (and starts empty) when it is missing, unreadable, or
    // belongs to another folder.
    bool load(const QString& folder);
    std::optional<QString> save() const;
    // Forgets everything (the folder is no longer synced).
    void clear();

    QString folder;
    SyncMerge::Library library;
    QSet<QString> handled;

private:
    QString m_path;
};
