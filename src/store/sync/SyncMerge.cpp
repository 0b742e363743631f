#include "SyncMerge.h"

#include <algorithm>

namespace {
using Record = SyncMerge::Record;

QString lossKey(const QUuid& id, const SyncMerge::Stamp& stamp) {
    return id.toString(QUuid::WithoutBraces) + u' ' + stamp.key();
}

// One kind of record (snippets or categories) of `theirs` into `ours`.
void mergeKind(QHash<QUuid, Record>& ours, const QHash<QUuid, Record>& theirs, const QString& us,
               QSet<QString>& handled, SyncMerge::Outcome& outcome, QList<Record>& lost) {
    const auto lose = [&](const QUuid& id, const Record& loser) {
        if (loser.deleted)
            return; // a deletion that loses takes nothing with it
        const QString key = lossKey(id, loser.stamp);
        if (handled.contains(key))
            return;
        handled.insert(key);
        lost.append(loser);
    };
    for (auto it = theirs.cbegin(); it != theirs.cend(); ++it) {
        const Record& their = it.value();
        const auto found = ours.find(it.key());
        if (found == ours.end()) {
            ours.insert(it.key(), their);
            outcome.added += their.deleted ? 0 : 1;
            continue;
        }
        Record& our = *found;
        if (our.stamp == their.stamp)
            continue;
        // A change of this computer's that the other computer had not seen when it made its own
        // is a collision, whichever wins; anything else is one version following another.
        const bool ourOwn = our.stamp.computer == us;
        if (our.stamp < their.stamp) {
            if (ourOwn && their.basedOn < our.stamp.time)
                lose(it.key(), our);
            if (our.deleted != their.deleted)
                ++(their.deleted ? outcome.deleted : outcome.added);
            else if (!our.deleted)
                ++outcome.changed;
            our = their;
        } else if (ourOwn && their.stamp.computer != us && our.basedOn < their.stamp.time) {
            lose(it.key(), their);
        }
    }
}

void restamp(Record& record, double now, const QString& us) {
    // The version this one replaces, unless that was this computer's own (then the one that one
    // replaced), is what the change has seen of the other computers.
    if (record.stamp.computer != us)
        record.basedOn = record.stamp.time;
    record.stamp = {std::max(now, record.stamp.time + SyncMerge::tick), us};
}

template <class Item, class Field>
bool stampKind(QHash<QUuid, Record>& ours, const QList<Item>& items, Field field,
               const QString& us, double now, bool adopting) {
    bool changed = false;
    QSet<QUuid> present;
    present.reserve(items.size());
    for (const Item& item : items) {
        if (present.contains(item.id))
            continue; // the first record with an id is the one the store uses
        present.insert(item.id);
        const auto found = ours.find(item.id);
        if (found == ours.end()) {
            Record record;
            record.stamp = {adopting ? item.createdAt : now, us};
            record.*field = item;
            ours.insert(item.id, record);
            changed = true;
        } else if (found->deleted || !SyncMerge::sameContent((*found).*field, item)) {
            restamp(*found, now, us);
            found->deleted = false;
            (*found).*field = item;
            changed = true;
        }
    }
    for (auto it = ours.begin(); it != ours.end(); ++it) {
        if (it->deleted || present.contains(it.key()))
            continue;
        restamp(*it, now, us);
        it->deleted = true;
        (*it).*field = Item();
        ((*it).*field).id = it.key();
        changed = true;
    }
    return changed;
}

// `current` in its order with the live versions of its records, then the live records it does
// not hold, oldest first.
template <class Item, class Field>
QList<Item> listOf(const QHash<QUuid, Record>& records, const QList<Item>& current, Field field) {
    QList<Item> list;
    list.reserve(records.size());
    QSet<QUuid> placed;
    for (const Item& item : current) {
        const auto found = records.constFind(item.id);
        if (found == records.cend() || found->deleted || placed.contains(item.id))
            continue;
        placed.insert(item.id);
        list.append(found.value().*field);
    }
    QList<Item> added;
    for (auto it = records.cbegin(); it != records.cend(); ++it) {
        if (!it->deleted && !placed.contains(it.key()))
            added.append(it.value().*field);
    }
    std::sort(added.begin(), added.end(), [](const Item& a, const Item& b) {
        return a.createdAt != b.createdAt ? a.createdAt < b.createdAt : a.id < b.id;
    });
    list.append(added);
    return list;
}
} // namespace

QString SyncMerge::Stamp::key() const {
    return QString::number(time, 'g', 17) + u' ' + computer;
}

bool SyncMerge::sameContent(const Snippet& a, const Snippet& b) {
    return a.id == b.id && a.command == b.command && a.content == b.content &&
           a.createdAt == b.createdAt && a.categoryId == b.categoryId && a.trigger == b.trigger &&
           a.matchCase == b.matchCase;
}

bool SyncMerge::sameContent(const Category& a, const Category& b) {
    return a.id == b.id && a.name == b.name && a.createdAt == b.createdAt && a.limit == b.limit;
}

SyncMerge::Outcome SyncMerge::merge(Library& ours, const Library& theirs, const QString& us,
                                    QSet<QString>& handled) {
    Outcome outcome;
    mergeKind(ours.categories, theirs.categories, us, handled, outcome, outcome.lostCategories);
    mergeKind(ours.snippets, theirs.snippets, us, handled, outcome, outcome.lostSnippets);
    return outcome;
}

bool SyncMerge::stampLocalChanges(Library& ours, const QList<Category>& categories,
                                  const QList<Snippet>& snippets, const QString& us, double now,
                                  bool adopting) {
    const bool categoriesChanged =
        stampKind(ours.categories, categories, &Record::category, us, now, adopting);
    const bool snippetsChanged =
        stampKind(ours.snippets, snippets, &Record::snippet, us, now, adopting);
    return categoriesChanged || snippetsChanged;
}

void SyncMerge::toLists(const Library& ours, QList<Category>& categories,
                        QList<Snippet>& snippets) {
    categories = listOf(ours.categories, categories, &Record::category);
    snippets = listOf(ours.snippets, snippets, &Record::snippet);
    // Snippets of one command, from computers that each added it: the newest goes first, where
    // the engine looks; the others keep the places the group had.
    QHash<QString, QList<qsizetype>> byCommand;
    for (qsizetype i = 0; i < snippets.size(); ++i)
        byCommand[snippets[i].command].append(i);
    for (const QList<qsizetype>& places : std::as_const(byCommand)) {
        if (places.size() < 2)
            continue;
        QList<Snippet> group;
        for (qsizetype place : places)
            group.append(snippets[place]);
        std::stable_sort(group.begin(), group.end(), [&](const Snippet& a, const Snippet& b) {
            return ours.snippets.value(b.id).stamp < ours.snippets.value(a.id).stamp;
        });
        for (qsizetype i = 0; i < places.size(); ++i)
            snippets[places[i]] = group[i];
    }
}

void SyncMerge::forgetOldDeletions(Library& ours, double now, int keepDays) {
    const double oldest = now - keepDays * 86400.0;
    for (QHash<QUuid, Record>* records : {&ours.snippets, &ours.categories}) {
        for (auto it = records->begin(); it != records->end();) {
            if (it->deleted && it->stamp.time < oldest)
                it = records->erase(it);
            else
                ++it;
        }
    }
}
