#include "RecordCodec.h"

#include <QSet>

#include <QJsonArray>
#include <QJsonDocument>
#include <cmath>
#include <type_traits>
#include <simdjson.h>

namespace {
// Lists are read with simdjson rather than QJsonDocument: a library of 100,000 snippets as a
// Qt JSON tree costs about 90 MB that the allocator keeps after the tree is gone, and twice
// the time. Writing stays with QJsonDocument, which produces the stored form.
using simdjson::dom::element;
using simdjson::dom::object;

// The last of same-named keys, as Qt's reader keeps it; simdjson's own lookup finds the first,
// and a record must read alike whichever reader the rest of its file sends it to.
simdjson::simdjson_result<element> field(const object& record, std::string_view key) {
    simdjson::simdjson_result<element> found(simdjson::NO_SUCH_FIELD);
    for (const simdjson::dom::key_value_pair pair : record) {
        if (pair.key == key)
            found = simdjson::simdjson_result<element>(element(pair.value));
    }
    return found;
}

std::optional<QString> stringField(const object& record, std::string_view key) {
    std::string_view text;
    if (field(record, key).get_string().get(text) != simdjson::SUCCESS)
        return std::nullopt;
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

std::optional<double> numberField(const object& record, std::string_view key) {
    double number = 0; // integers are numbers too
    if (field(record, key).get_double().get(number) != simdjson::SUCCESS)
        return std::nullopt;
    // -0 as +0, as Qt's reader gives it: Qt writes -0.0 as 0, so a kept -0.0 would not read
    // back bit for bit after the next save.
    return number == 0 ? 0.0 : number;
}

std::optional<QUuid> uuidField(const object& record, std::string_view key) {
    const auto text = stringField(record, key);
    return text ? RecordCodec::parseUuid(*text) : std::nullopt;
}

// The keys added later are optional: without them (or with a value of another type) a record
// reads as it did before they existed.
bool flagField(const object& record, std::string_view key) {
    bool flag = false;
    return field(record, key).get_bool().get(flag) == simdjson::SUCCESS && flag;
}

QStringList namesField(const object& record, std::string_view key) {
    QStringList names;
    simdjson::dom::array array;
    if (field(record, key).get_array().get(array) != simdjson::SUCCESS)
        return names;
    for (const element item : array) {
        std::string_view text;
        if (item.get_string().get(text) == simdjson::SUCCESS)
            names.append(QString::fromUtf8(text.data(), qsizetype(text.size())));
    }
    return names;
}

Category::Limit limitOf(QStringList onlyIn, QStringList exceptIn) {
    if (!onlyIn.isEmpty())
        return {Category::Limit::Kind::onlyIn, std::move(onlyIn)};
    if (!exceptIn.isEmpty())
        return {Category::Limit::Kind::exceptIn, std::move(exceptIn)};
    return {};
}

std::optional<Snippet> decodeSnippet(const element& value) {
    object record;
    if (value.get_object().get(record) != simdjson::SUCCESS)
        return std::nullopt;
    const auto id = uuidField(record, "id");
    const auto command = stringField(record, "command");
    const auto content = stringField(record, "content");
    const auto createdAt = numberField(record, "createdAt");
    const auto categoryId = uuidField(record, "categoryId");
    if (!id || !command || !content || !createdAt || !categoryId)
        return std::nullopt;
    Snippet snippet(*id, *command, *content, *createdAt, *categoryId);
    snippet.matchCase = flagField(record, "matchCase");
    return snippet;
}

std::optional<Category> decodeCategory(const element& value) {
    object record;
    if (value.get_object().get(record) != simdjson::SUCCESS)
        return std::nullopt;
    const auto id = uuidField(record, "id");
    const auto name = stringField(record, "name");
    const auto createdAt = numberField(record, "createdAt");
    if (!id || !name || !createdAt)
        return std::nullopt;
    Category category(*id, *name, *createdAt);
    category.limit = limitOf(namesField(record, "onlyIn"), namesField(record, "exceptIn"));
    return category;
}

// Qt's reader, for the documents simdjson refuses while QJsonDocument reads them: Qt writes
// whole times from 2^53 up as integer literals longer than 64 bits, and an escaped lone
// surrogate may be in a hand-edited file. What one reader keeps, the other keeps too.
std::optional<Snippet> decodeSnippet(const QJsonValue& value) {
    const QJsonObject record = value.toObject();
    const auto text = [&](const char* key) {
        const QJsonValue field = record.value(QLatin1String(key));
        return field.isString() ? std::optional(field.toString()) : std::nullopt;
    };
    const auto uuid = [&](const char* key) {
        const auto field = text(key);
        return field ? RecordCodec::parseUuid(*field) : std::nullopt;
    };
    const QJsonValue createdAt = record.value(QLatin1String("createdAt"));
    const auto id = uuid("id");
    const auto command = text("command");
    const auto content = text("content");
    const auto categoryId = uuid("categoryId");
    if (!value.isObject() || !id || !command || !content || !createdAt.isDouble() || !categoryId)
        return std::nullopt;
    Snippet snippet(*id, *command, *content, createdAt.toDouble(), *categoryId);
    snippet.matchCase = record.value(QLatin1String("matchCase")).toBool(false);
    return snippet;
}

QStringList namesField(const QJsonObject& record, const char* key) {
    QStringList names;
    for (const QJsonValue& item : record.value(QLatin1String(key)).toArray()) {
        if (item.isString())
            names.append(item.toString());
    }
    return names;
}

std::optional<Category> decodeCategory(const QJsonValue& value) {
    const QJsonObject record = value.toObject();
    const QJsonValue id = record.value(QLatin1String("id"));
    const QJsonValue name = record.value(QLatin1String("name"));
    const QJsonValue createdAt = record.value(QLatin1String("createdAt"));
    const auto uuid = id.isString() ? RecordCodec::parseUuid(id.toString()) : std::nullopt;
    if (!value.isObject() || !uuid || !name.isString() || !createdAt.isDouble())
        return std::nullopt;
    Category category(*uuid, name.toString(), createdAt.toDouble());
    category.limit = limitOf(namesField(record, "onlyIn"), namesField(record, "exceptIn"));
    return category;
}

// Every element of `array` that decodes as a Record, counting the others.
template <typename Record, typename Array>
QList<Record> decodeElements(const Array& array, int* unreadable) {
    QList<Record> records;
    // Room for all at once: growing a list of 100,000 records step by step moves them over and
    // over.
    records.reserve(qsizetype(array.size()));
    for (const auto& value : array) {
        std::optional<Record> record;
        if constexpr (std::is_same_v<Record, Snippet>)
            record = decodeSnippet(value);
        else
            record = decodeCategory(value);
        if (record)
            records.append(std::move(*record));
        else if (unreadable)
            ++*unreadable;
    }
    return records;
}

// The records of the JSON array in `json`; nullopt when the text is not JSON or not an array.
template <typename Record>
std::optional<QList<Record>> decodeList(const QByteArray& json, int* unreadable) {
    simdjson::dom::parser parser;
    simdjson::dom::element document;
    // A list read from the library file comes with room after its end, so the parser reads it
    // where it is rather than in a padded copy.
    const bool padded = json.capacity() - json.size() >= qsizetype(simdjson::SIMDJSON_PADDING);
    if (parser.parse(json.constData(), size_t(json.size()), !padded).get(document) ==
        simdjson::SUCCESS) {
        simdjson::dom::array array;
        if (document.get_array().get(array) != simdjson::SUCCESS)
            return std::nullopt;
        return decodeElements<Record>(array, unreadable);
    }
    QJsonParseError error{};
    const QJsonDocument qtDocument = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !qtDocument.isArray())
        return std::nullopt;
    return decodeElements<Record>(qtDocument.array(), unreadable);
}

QByteArray compact(const QJsonArray& array) {
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}
} // namespace

QList<Snippet> RecordCodec::decodeSnippets(const simdjson::dom::array& array, int* unreadable) {
    return decodeElements<Snippet>(array, unreadable);
}

QList<Category> RecordCodec::decodeCategories(const simdjson::dom::array& array,
                                              int* unreadable) {
    return decodeElements<Category>(array, unreadable);
}

QJsonArray RecordCodec::afterWordEndIds(const QList<Snippet>& snippets) {
    QJsonArray ids;
    for (const Snippet& snippet : snippets) {
        if (snippet.expandsAfterWordEnd())
            ids.append(uuidString(snippet.id));
    }
    return ids;
}

void RecordCodec::markAfterWordEnd(const QJsonArray& ids, QList<Snippet>& snippets) {
    QSet<QUuid> waiting;
    for (const QJsonValue& id : ids) {
        if (const auto parsed = parseUuid(id.toString()))
            waiting.insert(*parsed);
    }
    for (Snippet& snippet : snippets) {
        if (waiting.contains(snippet.id))
            snippet.trigger = Snippet::Trigger::AfterWordEnd;
    }
}

QString RecordCodec::uuidString(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<QUuid> RecordCodec::parseUuid(const QString& text) {
    // QUuid also takes braces and returns the nil id for garbage; only the bare 8-4-4-4-12 form
    // is valid here, and the nil id must be told apart from a failed parse.
    if (text.size() != 36)
        return std::nullopt;
    const QUuid id = QUuid::fromString(text);
    if (id.toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    return id;
}

// Keys are inserted in the object's own (sorted) order so that each insert is an append.
QJsonObject RecordCodec::encode(const Snippet& snippet) {
    QJsonObject object;
    object.insert(QLatin1String("categoryId"), uuidString(snippet.categoryId));
    object.insert(QLatin1String("command"), snippet.command);
    object.insert(QLatin1String("content"), snippet.content);
    object.insert(QLatin1String("createdAt"), snippet.createdAt);
    object.insert(QLatin1String("id"), uuidString(snippet.id));
    if (snippet.matchCase)
        object.insert(QLatin1String("matchCase"), true);
    return object;
}

QJsonObject RecordCodec::encode(const Category& category) {
    QJsonObject object;
    object.insert(QLatin1String("createdAt"), category.createdAt);
    if (category.limit.limits())
        object.insert(QLatin1String(category.limit.kind == Category::Limit::Kind::onlyIn
                                        ? "onlyIn"
                                        : "exceptIn"),
                      QJsonArray::fromStringList(category.limit.applications));
    object.insert(QLatin1String("id"), uuidString(category.id));
    object.insert(QLatin1String("name"), category.name);
    return object;
}

std::optional<QByteArray> RecordCodec::encodeSnippets(const QList<Snippet>& snippets) {
    QJsonArray array;
    for (const Snippet& snippet : snippets) {
        if (!std::isfinite(snippet.createdAt))
            return std::nullopt;
        array.append(encode(snippet));
    }
    return compact(array);
}

std::optional<QByteArray> RecordCodec::encodeCategories(const QList<Category>& categories) {
    QJsonArray array;
    for (const Category& category : categories) {
        if (!std::isfinite(category.createdAt))
            return std::nullopt;
        array.append(encode(category));
    }
    return compact(array);
}

std::optional<QList<Snippet>> RecordCodec::decodeSnippets(const QByteArray& json,
                                                             int* unreadable) {
    return decodeList<Snippet>(json, unreadable);
}

std::optional<QList<Category>> RecordCodec::decodeCategories(const QByteArray& json,
                                                                 int* unreadable) {
    return decodeList<Category>(json, unreadable);
}
