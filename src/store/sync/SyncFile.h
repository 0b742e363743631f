#pragma once

#include "SyncMerge.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonObject>
#include <QString>
#include <optional>

// One computer's file in the synced folder: Typolet's exported library (the live snippets and
// categories, readable by Import… as any export) plus what merging needs, under "sync":
//   {"computer": id, "name": host name,
//    "stamps": {"<record id>": [time, computer, basedOn], ...},
//    "deleted": [{"id", "kind": "snippet"|"category", "time", "computer", "basedOn"}, ...]}
// A record without a stamp (a plain export put in the folder) counts as changed when it was
// created, by no computer, so every stamped change wins over it.
class SyncFile {
    Q_DECLARE_TR_FUNCTIONS(SyncFile)
public:
    struct Contents {
        QString computer;
        QString name;
        SyncMerge::Library library;
    };

    static QJsonObject toJson(const QString& computer, const QString& name,
                              const SyncMerge::Library& library);
    static QByteArray encode(const QString& computer, const QString& name,
                             const SyncMerge::Library& library);
    // nullopt, with the reason in `*error`, when the text is no Typolet library.
    static std::optional<Contents> fromJson(const QJsonObject& root, QString* error);
    static std::optional<Contents> decode(const QByteArray& json, QString* error);

    // "<host>-<computer>.json", the host name reduced to characters every file system takes.
    static QString fileName(const QString& hostName, const QString& computer);
    // Names sync engines give files they are still writing (".syncthing.x.tmp", "~x", ".x"):
    // never read.
    static bool isTemporary(const QString& fileName);
    // Copies sync engines make when two computers changed one file ("x.sync-conflict-…",
    // "x (conflicted copy …)", "x_conflict-…"): read, then moved out of the folder.
    static bool isConflictCopy(const QString& fileName);
};
