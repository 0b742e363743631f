#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>

// The rule every computer applies to the libraries in a synced folder, so that all of them
// arrive at the same library whatever order they read each other's files in.
//
// Every snippet and category carries the time of its last change and the id of the computer
// that made it (its stamp); a deleted one stays as a mark with its stamp. For each id the newest
// stamp wins, equal times going to the greater computer id, and a deletion is a change like any
// other: it beats older edits and loses to newer ones.
//
// Clocks of different computers disagree. A change made on top of a version always gets a later
// time than that version (see stampLocalChanges), so an edit made after seeing another
// computer's change wins over it even when this computer's clock is behind; only changes made
// without seeing each other are decided by the clocks.
class SyncMerge {
public:
    struct Stamp {
        double time = 0; // seconds since 2001-01-01 UTC (see Timestamp)
        QString computer;
        friend bool operator==(const Stamp&, const Stamp&) = default;
        friend bool operator<(const Stamp& a, const Stamp& b) {
            return a.time != b.time ? a.time < b.time : a.computer < b.computer;
        }
        QString key() const;
    };

    struct Record {
        Stamp stamp;
        // The time of the other computer's version this change was made on (0: none), which
        // tells whether the change saw a given version of another computer.
        double basedOn = 0;
        bool deleted = false;
        Snippet snippet;   // for a snippet record
        Category category; // for a category record
    };

    struct Library {
        QHash<QUuid, Record> snippets;
        QHash<QUuid, Record> categories;
        bool isEmpty() const { return snippets.isEmpty() && categories.isEmpty(); }
    };

    // Versions of this computer's own changes that lost to a change another computer made
    // without having seen them, or another computer's changes that lost to such a change of
    // this one: kept in the history so that nothing typed is lost silently.
    struct Outcome {
        int added = 0, changed = 0, deleted = 0; // in `ours`, live records only
        QList<Record> lostSnippets;
        QList<Record> lostCategories;
        bool changedAnything() const { return added + changed + deleted > 0; }
        bool hasLosses() const { return !lostSnippets.isEmpty() || !lostCategories.isEmpty(); }
    };

    // Takes every record of `theirs` into `ours` by the rule. `us` is this computer's id;
    // `handled` holds the losses already reported (Stamp::key of the losing version), so the
    // same loss read again from a file is not reported twice.
    static Outcome merge(Library& ours, const Library& theirs, const QString& us,
                         QSet<QString>& handled);

    // Gives every record of the store's lists that differs from `ours` (or is missing from it)
    // this computer's stamp, and marks the ids that are gone from the lists as deleted; returns
    // whether anything was stamped. A change gets `now`, or a little more than the version it
    // replaces when this computer's clock is behind that version's. When `adopting` (the
    // library's first look at a synced folder), records `ours` does not know yet are stamped
    // with their creation time: whatever another computer changed since wins over them.
    static bool stampLocalChanges(Library& ours, const QList<Category>& categories,
                                  const QList<Snippet>& snippets, const QString& us, double now,
                                  bool adopting = false);

    // The live records as the store's lists: ids already in `categories`/`snippets` keep their
    // place, new ones follow oldest first. Among snippets with the same command the one with
    // the newest stamp comes first, which is the one the engine expands.
    static void toLists(const Library& ours, QList<Category>& categories, QList<Snippet>& snippets);

    // Drops deletion marks older than `keepDays` days.
    static void forgetOldDeletions(Library& ours, double now, int keepDays = deletionDays);

    static bool sameContent(const Snippet& a, const Snippet& b);
    static bool sameContent(const Category& a, const Category& b);

    static constexpr int deletionDays = 90;
    // The smallest step a change's time takes past the version it replaces.
    static constexpr double tick = 0.001;
};
