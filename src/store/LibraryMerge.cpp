#include "LibraryMerge.h"

#include "LibraryContent.h"
#include "LibraryKeys.h"
#include "Logging.h"
#include "RecordCodec.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace {
bool sameRecord(const Snippet& a, const Snippet& b) {
    return a.id == b.id && a.command == b.command && a.content == b.content &&
           a.createdAt == b.createdAt && a.categoryId == b.categoryId && a.trigger == b.trigger &&
           a.matchCase == b.matchCase;
}

bool sameRecord(const Category& a, const Category& b) {
    return a.id == b.id && a.name == b.name && a.createdAt == b.createdAt && a.limit == b.limit;
}

// A side's records, when every one of them reads.
std::optional<QList<Snippet>> snippetsOf(const IniFormat::Values& values) {
    const LibraryContent content = LibraryContent::of(values);
    return content.unreadableSnippets > 0 ? std::nullopt : content.snippets;
}

std::optional<QList<Category>> categoriesOf(const IniFormat::Values& values) {
    const LibraryContent content = LibraryContent::of(values);
    return content.unreadableCategories > 0 ? std::nullopt : content.categories;
}

// Record by record; the order is ours, with what only they have after it in their order.
template <class Record>
QList<Record> mergeRecords(const QList<Record>& base, const QList<Record>& ours,
                           const QList<Record>& theirs) {
    QHash<QUuid, const Record*> baseById, theirsById;
    for (const Record& record : base)
        baseById.insert(record.id, &record);
    for (const Record& record : theirs)
        theirsById.insert(record.id, &record);
    QList<Record> merged;
    QSet<QUuid> placed;
    for (const Record& mine : ours) {
        const Record* before = baseById.value(mine.id);
        const Record* other = theirsById.value(mine.id);
        const bool mineUnchanged = before && sameRecord(*before, mine);
        placed.insert(mine.id);
        if (!other) {
            if (!mineUnchanged) // added here, or changed here while deleted there
                merged.append(mine);
            continue;
        }
        merged.append(mineUnchanged ? *other : mine);
    }
    for (const Record& other : theirs) {
        if (placed.contains(other.id))
            continue;
        const Record* before = baseById.value(other.id);
        if (!before || !sameRecord(*before, other)) // added there, or changed there while deleted here
            merged.append(other);
    }
    return merged;
}

QByteArray encoded(const QByteArray& json) { return IniFormat::encode(QVariant(json)); }
} // namespace

LibraryMerge::Result LibraryMerge::merge(const IniFormat::Values& base,
                                         const IniFormat::Values& ours,
                                         const IniFormat::Values& theirs) {
    Result result{ours, {}};
    const QString snippetsKey = QLatin1String(LibraryKeys::snippets);
    const QString afterWordEndKey = QLatin1String(LibraryKeys::afterWordEnd);
    const QString categoriesKey = QLatin1String(LibraryKeys::categories);
    const auto changed = [](const IniFormat::Values& a, const IniFormat::Values& b,
                            const QStringList& keys) {
        for (const QString& key : keys) {
            if (a.contains(key) != b.contains(key))
                return true;
            const QByteArray& left = a.value(key);
            const QByteArray& right = b.value(key);
            if (left != right && IniFormat::decode(left) != IniFormat::decode(right))
                return true;
        }
        return false;
    };
    const auto take = [&](const QStringList& keys) {
        for (const QString& key : keys) {
            if (theirs.contains(key))
                result.values.insert(key, theirs.value(key));
            else
                result.values.remove(key);
            result.takenFromOutside.append(key);
        }
    };

    // A group of keys holding records: when only they changed it, theirs; when both did, record
    // by record. A side whose records do not all read keeps Typolet's: nothing of theirs is lost,
    // as the history holds their file.
    const auto mergeGroup = [&](const QStringList& keys, auto read, auto write) {
        const bool theirsChanged = changed(base, theirs, keys);
        if (!theirsChanged)
            return;
        if (!changed(base, ours, keys)) {
            take(keys);
            return;
        }
        const auto baseRecords = read(base);
        const auto ourRecords = read(ours);
        const auto theirRecords = read(theirs);
        if (!baseRecords || !ourRecords || !theirRecords) {
            qCWarning(lcStore).noquote()
                << QStringLiteral("Another program changed %1 where Typolet also did, and not "
                                  "every record could be read; Typolet's version is kept")
                       .arg(keys.first());
            return;
        }
        const auto merged = mergeRecords(*baseRecords, *ourRecords, *theirRecords);
        write(merged);
        result.takenFromOutside.append(keys);
    };
    mergeGroup({snippetsKey, afterWordEndKey}, snippetsOf, [&](const QList<Snippet>& merged) {
        result.values.insert(snippetsKey,
                             encoded(RecordCodec::encodeSnippets(merged).value_or("[]")));
        result.values.insert(afterWordEndKey,
                             encoded(QJsonDocument(RecordCodec::afterWordEndIds(merged))
                                         .toJson(QJsonDocument::Compact)));
    });
    mergeGroup({categoriesKey}, categoriesOf, [&](const QList<Category>& merged) {
        result.values.insert(categoriesKey,
                             encoded(RecordCodec::encodeCategories(merged).value_or("[]")));
    });

    // Every other key on its own.
    QSet<QString> keys;
    for (const auto* values : {&base, &ours, &theirs}) {
        for (auto it = values->cbegin(); it != values->cend(); ++it)
            keys.insert(it.key());
    }
    keys.remove(snippetsKey);
    keys.remove(afterWordEndKey);
    keys.remove(categoriesKey);
    for (const QString& key : std::as_const(keys)) {
        if (changed(base, theirs, {key}) && !changed(base, ours, {key}))
            take({key});
    }
    return result;
}
