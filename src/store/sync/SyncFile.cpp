#include "SyncFile.h"

#include "RecordCodec.h"
#include "TypoletLibraryFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <algorithm>

namespace {
const QLatin1String kVersion("version"), kCategories("categories"), kSnippets("snippets"),
    kAfterWordEnd("afterWordEnd"), kSync("sync"), kComputer("computer"), kName("name"),
    kStamps("stamps"), kDeleted("deleted"), kId("id"), kKind("kind"), kTime("time"),
    kBasedOn("basedOn"), kSnippet("snippet"), kCategory("category");

QJsonArray stampOf(const SyncMerge::Record& record) {
    return {record.stamp.time, record.stamp.computer, record.basedOn};
}

// The stamp of a live record, from "stamps".
void readStamp(const QJsonValue& value, SyncMerge::Record& record) {
    const QJsonArray stamp = value.toArray();
    if (stamp.size() < 3 || !stamp[0].isDouble() || !stamp[1].isString() || !stamp[2].isDouble())
        return;
    record.stamp = {stamp[0].toDouble(), stamp[1].toString()};
    record.basedOn = stamp[2].toDouble();
}
} // namespace

QJsonObject SyncFile::toJson(const QString& computer, const QString& name,
                             const SyncMerge::Library& library) {
    QJsonArray categories, snippets, afterWordEnd, deleted;
    QJsonObject stamps;
    const auto mark = [&](const QUuid& id, const SyncMerge::Record& record, QLatin1String kind) {
        deleted.append(QJsonObject{{kId, RecordCodec::uuidString(id)},
                                   {kKind, kind},
                                   {kTime, record.stamp.time},
                                   {kComputer, record.stamp.computer},
                                   {kBasedOn, record.basedOn}});
    };
    // In a fixed order (oldest first), so that a file rewritten after one change differs from
    // the one before by that change only, as a git checkout of the folder shows it.
    const auto inOrder = [](const QHash<QUuid, SyncMerge::Record>& records, auto created) {
        QList<QHash<QUuid, SyncMerge::Record>::const_iterator> order;
        order.reserve(records.size());
        for (auto it = records.cbegin(); it != records.cend(); ++it)
            order.append(it);
        std::sort(order.begin(), order.end(), [&](const auto& a, const auto& b) {
            const double ta = created(*a), tb = created(*b);
            return ta != tb ? ta < tb : a.key() < b.key();
        });
        return order;
    };
    for (const auto& it : inOrder(library.categories,
                                  [](const SyncMerge::Record& r) { return r.category.createdAt; })) {
        if (it->deleted) {
            mark(it.key(), *it, kCategory);
            continue;
        }
        categories.append(RecordCodec::encode(it->category));
        stamps.insert(RecordCodec::uuidString(it.key()), stampOf(*it));
    }
    for (const auto& it : inOrder(library.snippets,
                                  [](const SyncMerge::Record& r) { return r.snippet.createdAt; })) {
        if (it->deleted) {
            mark(it.key(), *it, kSnippet);
            continue;
        }
        snippets.append(RecordCodec::encode(it->snippet));
        if (it->snippet.expandsAfterWordEnd())
            afterWordEnd.append(RecordCodec::uuidString(it.key()));
        stamps.insert(RecordCodec::uuidString(it.key()), stampOf(*it));
    }
    return {{kVersion, TypoletLibraryFile::version},
            {kCategories, categories},
            {kSnippets, snippets},
            {kAfterWordEnd, afterWordEnd},
            {kSync, QJsonObject{{kComputer, computer},
                                {kName, name},
                                {kStamps, stamps},
                                {kDeleted, deleted}}}};
}

QByteArray SyncFile::encode(const QString& computer, const QString& name,
                            const SyncMerge::Library& library) {
    // Indented, one record per few lines: a git checkout of the folder shows a change as the
    // lines that changed.
    return QJsonDocument(toJson(computer, name, library)).toJson(QJsonDocument::Indented);
}

std::optional<SyncFile::Contents> SyncFile::decode(const QByteArray& json, QString* error) {
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = tr("not valid JSON: %1 (at character %2)")
                     .arg(parseError.errorString())
                     .arg(parseError.offset);
        return std::nullopt;
    }
    if (!document.isObject()) {
        *error = tr("not a Typolet library");
        return std::nullopt;
    }
    return fromJson(document.object(), error);
}

std::optional<SyncFile::Contents> SyncFile::fromJson(const QJsonObject& root, QString* error) {
    const QJsonValue version = root.value(kVersion);
    if (!version.isDouble() || !root.value(kCategories).isArray() ||
        !root.value(kSnippets).isArray()) {
        *error = tr("not a Typolet library");
        return std::nullopt;
    }
    if (version.toDouble() > TypoletLibraryFile::version) {
        *error = tr("written by a newer Typolet (library version %1)").arg(version.toDouble());
        return std::nullopt;
    }
    // The records go through the store's own reader, checked exactly as stored ones.
    const auto compact = [&](QLatin1String key) {
        return QJsonDocument(root.value(key).toArray()).toJson(QJsonDocument::Compact);
    };
    auto categories = RecordCodec::decodeCategories(compact(kCategories));
    auto snippets = RecordCodec::decodeSnippets(compact(kSnippets));
    if (!categories || !snippets) {
        *error = tr("not a Typolet library");
        return std::nullopt;
    }
    RecordCodec::markAfterWordEnd(root.value(kAfterWordEnd).toArray(), *snippets);

    const QJsonObject sync = root.value(kSync).toObject();
    const QJsonObject stamps = sync.value(kStamps).toObject();
    Contents contents;
    contents.computer = sync.value(kComputer).toString();
    contents.name = sync.value(kName).toString();
    SyncMerge::Library& library = contents.library;
    library.categories.reserve(categories->size());
    library.snippets.reserve(snippets->size());
    for (const Category& category : std::as_const(*categories)) {
        SyncMerge::Record record;
        record.stamp.time = category.createdAt;
        record.category = category;
        readStamp(stamps.value(RecordCodec::uuidString(category.id)), record);
        library.categories.insert(category.id, record);
    }
    for (const Snippet& snippet : std::as_const(*snippets)) {
        SyncMerge::Record record;
        record.stamp.time = snippet.createdAt;
        record.snippet = snippet;
        readStamp(stamps.value(RecordCodec::uuidString(snippet.id)), record);
        library.snippets.insert(snippet.id, record);
    }
    for (const QJsonValue& value : sync.value(kDeleted).toArray()) {
        const QJsonObject mark = value.toObject();
        const auto id = RecordCodec::parseUuid(mark.value(kId).toString());
        const QString kind = mark.value(kKind).toString();
        if (!id || !mark.value(kTime).isDouble() || (kind != kSnippet && kind != kCategory))
            continue; // a mark that cannot be read deletes nothing
        SyncMerge::Record record;
        record.deleted = true;
        record.stamp = {mark.value(kTime).toDouble(), mark.value(kComputer).toString()};
        record.basedOn = mark.value(kBasedOn).toDouble();
        auto& records = kind == kSnippet ? library.snippets : library.categories;
        // A live record and a mark for one id: the newer stands.
        const auto live = records.constFind(*id);
        if (live == records.cend() || live->stamp < record.stamp) {
            record.snippet.id = record.category.id = *id;
            records.insert(*id, record);
        }
    }
    return contents;
}

QString SyncFile::fileName(const QString& hostName, const QString& computer) {
    QString host = hostName;
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]"));
    host.replace(unsafe, QStringLiteral("_"));
    if (host.isEmpty() || host.startsWith(u'.'))
        host.prepend(QStringLiteral("computer"));
    return host + u'-' + computer + QStringLiteral(".json");
}

bool SyncFile::isTemporary(const QString& fileName) {
    return fileName.startsWith(u'.') || fileName.startsWith(u'~') ||
           fileName.endsWith(QLatin1String(".tmp")) || fileName.endsWith(u'~') ||
           fileName.contains(QLatin1String(".syncthing."));
}

bool SyncFile::isConflictCopy(const QString& fileName) {
    return fileName.contains(QLatin1String(".sync-conflict-")) ||
           fileName.contains(QLatin1String(" (conflicted copy ")) ||
           fileName.contains(QLatin1String("_conflict-"));
}
