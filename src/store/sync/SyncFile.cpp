#include "SyncFile.h"

#include "RecordCodec.h"
#include "TypoletLibraryFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <algorithm>
#include <simdjson.h>

namespace {
const QLatin1String kVersion("version"), kCategories("categories"), kSnippets("snippets"),
    kAfterWordEnd("afterWordEnd"), kSync("sync"), kComputer("computer"), kName("name"),
    kStamps("stamps"), kDeleted("deleted"), kId("id"), kKind("kind"), kTime("time"),
    kBasedOn("basedOn"), kSnippet("snippet"), kCategory("category");

QJsonArray stampOf(const SyncMerge::Record& record) {
    return {record.stamp.time, record.stamp.computer, record.basedOn};
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

namespace {
// A file's parts as read, before they become records: the lists through the store's own reader
// (checked exactly as stored records), the stamps by id.
struct Parts {
    QList<Category> categories;
    QList<Snippet> snippets;
    QJsonArray afterWordEnd;
    QString computer, name;
    QHash<QUuid, SyncMerge::Record> stamps; // stamp and basedOn only
    QList<std::pair<QUuid, SyncMerge::Record>> deletedSnippets, deletedCategories;
};

SyncFile::Contents assemble(Parts& parts) {
    SyncFile::Contents contents;
    contents.computer = parts.computer;
    contents.name = parts.name;
    RecordCodec::markAfterWordEnd(parts.afterWordEnd, parts.snippets);
    SyncMerge::Library& library = contents.library;
    library.categories.reserve(parts.categories.size());
    library.snippets.reserve(parts.snippets.size());
    const auto stamped = [&](const QUuid& id, double createdAt) {
        // Without a stamp: changed when it was created, by no computer.
        const auto found = parts.stamps.constFind(id);
        if (found != parts.stamps.cend())
            return *found;
        SyncMerge::Record record;
        record.stamp.time = createdAt;
        return record;
    };
    for (const Category& category : std::as_const(parts.categories)) {
        SyncMerge::Record record = stamped(category.id, category.createdAt);
        record.category = category;
        library.categories.insert(category.id, record);
    }
    for (const Snippet& snippet : std::as_const(parts.snippets)) {
        SyncMerge::Record record = stamped(snippet.id, snippet.createdAt);
        record.snippet = snippet;
        library.snippets.insert(snippet.id, record);
    }
    const auto addMarks = [](QHash<QUuid, SyncMerge::Record>& records, const auto& marks) {
        for (const auto& [id, mark] : marks) {
            // A live record and a mark for one id: the newer stands.
            const auto live = records.constFind(id);
            if (live == records.cend() || live->stamp < mark.stamp)
                records.insert(id, mark);
        }
    };
    addMarks(library.snippets, parts.deletedSnippets);
    addMarks(library.categories, parts.deletedCategories);
    return contents;
}

SyncMerge::Record markOf(const QUuid& id, double time, const QString& computer, double basedOn) {
    SyncMerge::Record record;
    record.deleted = true;
    record.stamp = {time, computer};
    record.basedOn = basedOn;
    record.snippet.id = record.category.id = id;
    return record;
}

QString text(std::string_view view) {
    return QString::fromUtf8(view.data(), qsizetype(view.size()));
}

// The same with simdjson: a folder of five computers' files of 10,000 snippets is read several
// times faster than through Qt's JSON tree.
std::optional<Parts> simdjsonParts(const QByteArray& json, bool* isLibrary) {
    using namespace simdjson;
    *isLibrary = false;
    // Kept between files: a parser's buffers for a file of megabytes cost more to map afresh
    // than the parse itself.
    thread_local dom::parser parser;
    dom::element root;
    if (parser.parse(json.constData(), size_t(json.size())).get(root) != SUCCESS)
        return std::nullopt;
    double version = 0;
    dom::array categories, snippets;
    if (root["version"].get_double().get(version) != SUCCESS ||
        root["categories"].get_array().get(categories) != SUCCESS ||
        root["snippets"].get_array().get(snippets) != SUCCESS || version > TypoletLibraryFile::version)
        return std::nullopt;
    Parts parts;
    // The records through the store's own reader, checked exactly as stored ones.
    parts.categories = RecordCodec::decodeCategories(categories);
    parts.snippets = RecordCodec::decodeSnippets(snippets);
    dom::array afterWordEnd;
    if (root["afterWordEnd"].get_array().get(afterWordEnd) == SUCCESS) {
        for (dom::element id : afterWordEnd) {
            std::string_view value;
            if (id.get_string().get(value) == SUCCESS)
                parts.afterWordEnd.append(text(value));
        }
    }
    dom::object sync;
    if (root["sync"].get_object().get(sync) == SUCCESS) {
        std::string_view value;
        if (sync["computer"].get_string().get(value) == SUCCESS)
            parts.computer = text(value);
        if (sync["name"].get_string().get(value) == SUCCESS)
            parts.name = text(value);
        dom::object stamps;
        if (sync["stamps"].get_object().get(stamps) == SUCCESS) {
            parts.stamps.reserve(qsizetype(stamps.size()));
            for (dom::key_value_pair pair : stamps) {
                dom::array stamp;
                double time = 0, basedOn = 0;
                std::string_view computer;
                // Only looked up, never kept: QUuid's own parse of the bytes is check enough.
                const QUuid id = pair.key.size() == 36
                                     ? QUuid::fromString(QLatin1StringView(pair.key.data(), 36))
                                     : QUuid();
                if ((id.isNull() && pair.key != "00000000-0000-0000-0000-000000000000") ||
                    pair.value.get_array().get(stamp) != SUCCESS || stamp.size() < 3 ||
                    stamp.at(0).get_double().get(time) != SUCCESS ||
                    stamp.at(1).get_string().get(computer) != SUCCESS ||
                    stamp.at(2).get_double().get(basedOn) != SUCCESS)
                    continue;
                SyncMerge::Record record;
                record.stamp = {time, text(computer)};
                record.basedOn = basedOn;
                parts.stamps.insert(id, record);
            }
        }
        dom::array deleted;
        if (sync["deleted"].get_array().get(deleted) == SUCCESS) {
            for (dom::element mark : deleted) {
                std::string_view id, kind, computer;
                double time = 0, basedOn = 0;
                if (mark["id"].get_string().get(id) != SUCCESS ||
                    mark["kind"].get_string().get(kind) != SUCCESS ||
                    mark["time"].get_double().get(time) != SUCCESS)
                    continue; // a mark that cannot be read deletes nothing
                // Optional: a mark without them is older than any computer's stamp.
                if (mark["computer"].get_string().get(computer) != SUCCESS)
                    computer = {};
                if (mark["basedOn"].get_double().get(basedOn) != SUCCESS)
                    basedOn = 0;
                const auto uuid = RecordCodec::parseUuid(text(id));
                if (!uuid || (kind != "snippet" && kind != "category"))
                    continue;
                (kind == "snippet" ? parts.deletedSnippets : parts.deletedCategories)
                    .append({*uuid, markOf(*uuid, time, text(computer), basedOn)});
            }
        }
    }
    *isLibrary = true;
    return parts;
}
} // namespace

std::optional<SyncFile::Contents> SyncFile::decode(const QByteArray& json, QString* error) {
    bool isLibrary = false;
    if (auto parts = simdjsonParts(json, &isLibrary))
        return assemble(*parts);
    // Whatever simdjson refuses goes through Qt's reader, which also says what is wrong.
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
    const auto compact = [&](QLatin1String key) {
        return QJsonDocument(root.value(key).toArray()).toJson(QJsonDocument::Compact);
    };
    auto categories = RecordCodec::decodeCategories(compact(kCategories));
    auto snippets = RecordCodec::decodeSnippets(compact(kSnippets));
    if (!categories || !snippets) {
        *error = tr("not a Typolet library");
        return std::nullopt;
    }
    Parts parts;
    parts.categories = std::move(*categories);
    parts.snippets = std::move(*snippets);
    parts.afterWordEnd = root.value(kAfterWordEnd).toArray();
    const QJsonObject sync = root.value(kSync).toObject();
    parts.computer = sync.value(kComputer).toString();
    parts.name = sync.value(kName).toString();
    const QJsonObject stamps = sync.value(kStamps).toObject();
    for (auto it = stamps.constBegin(); it != stamps.constEnd(); ++it) {
        const QJsonArray stamp = it.value().toArray();
        const auto id = RecordCodec::parseUuid(it.key());
        if (!id || stamp.size() < 3 || !stamp[0].isDouble() || !stamp[1].isString() ||
            !stamp[2].isDouble())
            continue;
        SyncMerge::Record record;
        record.stamp = {stamp[0].toDouble(), stamp[1].toString()};
        record.basedOn = stamp[2].toDouble();
        parts.stamps.insert(*id, record);
    }
    for (const QJsonValue& value : sync.value(kDeleted).toArray()) {
        const QJsonObject mark = value.toObject();
        const auto id = RecordCodec::parseUuid(mark.value(kId).toString());
        const QString kind = mark.value(kKind).toString();
        if (!id || !mark.value(kTime).isDouble() || (kind != kSnippet && kind != kCategory))
            continue; // a mark that cannot be read deletes nothing
        (kind == kSnippet ? parts.deletedSnippets : parts.deletedCategories)
            .append({*id, markOf(*id, mark.value(kTime).toDouble(),
                                 mark.value(kComputer).toString(),
                                 mark.value(kBasedOn).toDouble())});
    }
    return assemble(parts);
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
