#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <optional>
#include <string_view>

namespace simdjson::dom {
class array;
} // namespace simdjson::dom

// The stored JSON form of snippets and categories: compact arrays of objects whose keys are
// always all written, UUIDs in upper case, times as seconds since 2001-01-01 UTC.
//
// Decoding is strict and all-or-nothing: a missing key, a wrong type, null, or an id that is
// not a canonical 36-character UUID fails the record. A list keeps every record that decodes
// and counts the others, so one bad record never hides the rest of the library.
// Keys nobody knows are ignored.
class RecordCodec {
public:
    static QJsonObject encode(const Snippet& snippet);
    static QJsonObject encode(const Category& category);

    // nullopt when a record cannot be represented (a time that is not a finite number).
    static std::optional<QByteArray> encodeSnippets(const QList<Snippet>& snippets);
    static std::optional<QByteArray> encodeCategories(const QList<Category>& categories);
    // nullopt when the value is not a JSON array; records that do not decode are left out and
    // added to `*unreadable`.
    static std::optional<QList<Snippet>> decodeSnippets(const QByteArray& json,
                                                          int* unreadable = nullptr);
    static std::optional<QList<Category>> decodeCategories(const QByteArray& json,
                                                              int* unreadable = nullptr);

    // The same for an array already parsed as part of a larger document.
    static QList<Snippet> decodeSnippets(const simdjson::dom::array& array, int* unreadable = nullptr);
    static QList<Category> decodeCategories(const simdjson::dom::array& array,
                                            int* unreadable = nullptr);

    // The snippets that wait for a word to end, as a list of their ids: kept beside the records
    // (in the settings file and in an exported library), so the records stay as they are.
    static QJsonArray afterWordEndIds(const QList<Snippet>& snippets);
    // Marks the snippets whose ids `ids` lists; ids that do not parse are passed over.
    static void markAfterWordEnd(const QJsonArray& ids, QList<Snippet>& snippets);

    // Canonical upper-case form, and the strict parse that accepts either case.
    static QString uuidString(const QUuid& id);
    static std::optional<QUuid> parseUuid(const QString& text);
    static std::optional<QUuid> parseUuid(std::string_view text);
};
