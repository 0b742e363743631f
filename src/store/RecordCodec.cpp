#include "RecordCodec.h"

#include "LargePages.h"

#include <QSet>

#include <algorithm>
#include <array>

#include <QJsonArray>
#include <QJsonDocument>
#include <cmath>
#include <type_traits>
#include <simdjson.h>

namespace {
int hexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Lists are read with simdjson rather than QJsonDocument: a library of 100,000 snippets as a
// Qt JSON tree costs about 90 MB that the allocator keeps after the tree is gone, and twice
// the time. Writing stays with QJsonDocument, which produces the stored form.
using simdjson::dom::element;
using simdjson::dom::object;

std::optional<QString> stringOf(const element& value) {
    std::string_view text;
    if (value.get_string().get(text) != simdjson::SUCCESS)
        return std::nullopt;
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

std::optional<double> numberOf(const element& value) {
    double number = 0; // integers are numbers too
    if (value.get_double().get(number) != simdjson::SUCCESS)
        return std::nullopt;
    // -0 as +0, as Qt's reader gives it: Qt writes -0.0 as 0, so a kept -0.0 would not read
    // back bit for bit after the next save.
    return number == 0 ? 0.0 : number;
}

std::optional<QUuid> uuidOf(const element& value) {
    std::string_view text;
    if (value.get_string().get(text) != simdjson::SUCCESS)
        return std::nullopt;
    return RecordCodec::parseUuid(text);
}

// A record's fields by name, each the last of same-named keys, as Qt's reader keeps it
// (simdjson's own lookup finds the first), so that a record reads alike whichever reader the
// rest of its file sends it to. One walk over the record finds them all.
template <size_t N>
struct Fields {
    std::array<element, N> value;
    std::array<bool, N> seen{};
};

// nullopt when `value` is not an object or lacks one of the first `required` names; the names
// after those were added later and may be absent.
template <size_t N>
std::optional<Fields<N>> fieldsOf(const element& value,
                                  const std::array<std::string_view, N>& names, size_t required) {
    object record;
    if (value.get_object().get(record) != simdjson::SUCCESS)
        return std::nullopt;
    Fields<N> fields;
    for (const simdjson::dom::key_value_pair pair : record) {
        for (size_t i = 0; i < N; ++i) {
            if (pair.key == names[i]) {
                fields.value[i] = pair.value;
                fields.seen[i] = true;
                break;
            }
        }
    }
    if (!std::all_of(fields.seen.begin(), fields.seen.begin() + std::ptrdiff_t(required),
                     [](bool seen) { return seen; }))
        return std::nullopt;
    return fields;
}

// The keys added later are optional: without them (or with a value of another type) a record
// reads as it did before they existed.
bool flagOf(const element& value) {
    bool flag = false;
    return value.get_bool().get(flag) == simdjson::SUCCESS && flag;
}

QStringList namesOf(const element& value) {
    QStringList names;
    simdjson::dom::array array;
    if (value.get_array().get(array) != simdjson::SUCCESS)
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
    static constexpr std::array<std::string_view, 6> names{
        "id", "command", "content", "createdAt", "categoryId", "matchCase"};
    const auto fields = fieldsOf(value, names, 5);
    if (!fields)
        return std::nullopt;
    const auto id = uuidOf(fields->value[0]);
    auto command = stringOf(fields->value[1]);
    auto content = stringOf(fields->value[2]);
    const auto createdAt = numberOf(fields->value[3]);
    const auto categoryId = uuidOf(fields->value[4]);
    if (!id || !command || !content || !createdAt || !categoryId)
        return std::nullopt;
    Snippet snippet(*id, std::move(*command), std::move(*content), *createdAt, *categoryId);
    snippet.matchCase = fields->seen[5] && flagOf(fields->value[5]);
    return snippet;
}

std::optional<Category> decodeCategory(const element& value) {
    static constexpr std::array<std::string_view, 5> names{"id", "name", "createdAt", "onlyIn",
                                                           "exceptIn"};
    const auto fields = fieldsOf(value, names, 3);
    if (!fields)
        return std::nullopt;
    const auto id = uuidOf(fields->value[0]);
    auto name = stringOf(fields->value[1]);
    const auto createdAt = numberOf(fields->value[2]);
    if (!id || !name || !createdAt)
        return std::nullopt;
    Category category(*id, std::move(*name), *createdAt);
    const auto namesAt = [&](size_t i) {
        return fields->seen[i] ? namesOf(fields->value[i]) : QStringList();
    };
    category.limit = limitOf(namesAt(3), namesAt(4));
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
    LargePages::prefer(records.data(), records.capacity() * qsizetype(sizeof(Record)));
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
    // The parser's buffers are of the list's size and filled at once.
    if (parser.allocate(size_t(json.size())) == simdjson::SUCCESS) {
        const qsizetype capacity = qsizetype(parser.doc.capacity());
        LargePages::prefer(parser.doc.tape.get(), (capacity + 3) * qsizetype(sizeof(uint64_t)));
        LargePages::prefer(parser.doc.string_buf.get(), 5 * capacity / 3);
    }
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

// The compact JSON list of `records`; nullopt when a time is not finite, as JSON has no form
// for it.
template <typename Record>
std::optional<QByteArray> encodeList(const QList<Record>& records) {
    QJsonArray array;
    for (const Record& record : records) {
        if (!std::isfinite(record.createdAt))
            return std::nullopt;
        array.append(RecordCodec::encode(record));
    }
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
    if (text.size() != 36)
        return std::nullopt;
    char ascii[36];
    for (qsizetype i = 0; i < 36; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c >= 0x80)
            return std::nullopt;
        ascii[i] = char(c);
    }
    return parseUuid(std::string_view(ascii, 36));
}

std::optional<QUuid> RecordCodec::parseUuid(std::string_view text) {
    // Only the bare 8-4-4-4-12 form, in either case (QUuid also takes braces and returns the
    // nil id for garbage, which must be told apart from a failed parse). Read by hand: a large
    // library has two ids per snippet, and this is most of what reading one costs otherwise.
    if (text.size() != 36)
        return std::nullopt;
    uchar bytes[16];
    int byte = 0;
    for (size_t i = 0; i < 36;) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != '-')
                return std::nullopt;
            ++i;
            continue;
        }
        const int high = hexDigitValue(text[i]);
        const int low = hexDigitValue(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[byte++] = uchar(high * 16 + low);
        i += 2;
    }
    return QUuid::fromRfc4122(QByteArrayView(reinterpret_cast<const char*>(bytes), 16));
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
    return encodeList(snippets);
}

std::optional<QByteArray> RecordCodec::encodeCategories(const QList<Category>& categories) {
    return encodeList(categories);
}

std::optional<QList<Snippet>> RecordCodec::decodeSnippets(const QByteArray& json,
                                                             int* unreadable) {
    return decodeList<Snippet>(json, unreadable);
}

std::optional<QList<Category>> RecordCodec::decodeCategories(const QByteArray& json,
                                                                 int* unreadable) {
    return decodeList<Category>(json, unreadable);
}
