#include "RecordCodec.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <cmath>

namespace {
const QString kId = QStringLiteral("id");
const QString kCommand = QStringLiteral("command");
const QString kContent = QStringLiteral("content");
const QString kCreatedAt = QStringLiteral("createdAt");
const QString kCategoryId = QStringLiteral("categoryId");
const QString kName = QStringLiteral("name");

std::optional<QString> stringField(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    if (!value.isString())
        return std::nullopt;
    return value.toString();
}

std::optional<double> numberField(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    if (!value.isDouble())
        return std::nullopt;
    return value.toDouble();
}

std::optional<QUuid> uuidField(const QJsonObject& object, const QString& key) {
    const auto text = stringField(object, key);
    return text ? RecordCodec::parseUuid(*text) : std::nullopt;
}

std::optional<QJsonArray> parseArray(const QByteArray& json) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    return document.array();
}

QByteArray compact(const QJsonArray& array) {
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}
} // namespace

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
QJsonObject RecordCodec::encode(const Shortcut& shortcut) {
    QJsonObject object;
    object.insert(QLatin1String("categoryId"), uuidString(shortcut.categoryId));
    object.insert(QLatin1String("command"), shortcut.command);
    object.insert(QLatin1String("content"), shortcut.content);
    object.insert(QLatin1String("createdAt"), shortcut.createdAt);
    object.insert(QLatin1String("id"), uuidString(shortcut.id));
    return object;
}

QJsonObject RecordCodec::encode(const Category& category) {
    QJsonObject object;
    object.insert(QLatin1String("createdAt"), category.createdAt());
    object.insert(QLatin1String("id"), uuidString(category.id()));
    object.insert(QLatin1String("name"), category.name());
    return object;
}

std::optional<Shortcut> RecordCodec::decodeShortcut(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const auto id = uuidField(object, kId);
    const auto command = stringField(object, kCommand);
    const auto content = stringField(object, kContent);
    const auto createdAt = numberField(object, kCreatedAt);
    const auto categoryId = uuidField(object, kCategoryId);
    if (!id || !command || !content || !createdAt || !categoryId)
        return std::nullopt;
    return Shortcut(*id, *command, *content, *createdAt, *categoryId);
}

CategoryRef RecordCodec::decodeCategory(const QJsonValue& value) {
    if (!value.isObject())
        return {};
    const QJsonObject object = value.toObject();
    const auto id = uuidField(object, kId);
    const auto name = stringField(object, kName);
    const auto createdAt = numberField(object, kCreatedAt);
    if (!id || !name || !createdAt)
        return {};
    return CategoryRef::create(*id, *name, *createdAt);
}

std::optional<QByteArray> RecordCodec::encodeShortcuts(const QList<Shortcut>& shortcuts) {
    QJsonArray array;
    for (const Shortcut& shortcut : shortcuts) {
        if (!std::isfinite(shortcut.createdAt))
            return std::nullopt;
        array.append(encode(shortcut));
    }
    return compact(array);
}

std::optional<QByteArray> RecordCodec::encodeCategories(const QList<CategoryRef>& categories) {
    QJsonArray array;
    for (const CategoryRef& category : categories) {
        if (!category || !std::isfinite(category->createdAt()))
            return std::nullopt;
        array.append(encode(*category));
    }
    return compact(array);
}

std::optional<QList<Shortcut>> RecordCodec::decodeShortcuts(const QByteArray& json,
                                                             int* unreadable) {
    const auto array = parseArray(json);
    if (!array)
        return std::nullopt;
    QList<Shortcut> shortcuts;
    shortcuts.reserve(array->size());
    for (const QJsonValue& element : *array) {
        if (auto shortcut = decodeShortcut(element))
            shortcuts.append(std::move(*shortcut));
        else if (unreadable)
            ++*unreadable;
    }
    return shortcuts;
}

std::optional<QList<CategoryRef>> RecordCodec::decodeCategories(const QByteArray& json,
                                                                 int* unreadable) {
    const auto array = parseArray(json);
    if (!array)
        return std::nullopt;
    QList<CategoryRef> categories;
    categories.reserve(array->size());
    for (const QJsonValue& element : *array) {
        if (CategoryRef category = decodeCategory(element))
            categories.append(std::move(category));
        else if (unreadable)
            ++*unreadable;
    }
    return categories;
}
