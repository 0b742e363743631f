#include "TypoletLibraryFile.h"

#include "AtomicFile.h"
#include "ImportReader.h"
#include "RecordCodec.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QLatin1String kVersion("version");
const QLatin1String kCategories("categories");
const QLatin1String kSnippets("snippets");
// The ids of the snippets that wait for a word to end: the store keeps them beside its list
// too, so the records stay exactly the stored ones.
const QLatin1String kAfterWordEnd("afterWordEnd");
} // namespace

QByteArray TypoletLibraryFile::encode(const QList<Category>& categories,
                                      const QList<Snippet>& snippets) {
    QJsonArray categoryArray, snippetArray;
    for (const Category& category : categories)
        categoryArray.append(RecordCodec::encode(category));
    for (const Snippet& snippet : snippets)
        snippetArray.append(RecordCodec::encode(snippet));
    QJsonObject root;
    root.insert(kVersion, version);
    root.insert(kCategories, categoryArray);
    root.insert(kSnippets, snippetArray);
    root.insert(kAfterWordEnd, RecordCodec::afterWordEndIds(snippets));
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

std::optional<QString> TypoletLibraryFile::write(const QString& path,
                                                 const QList<Category>& categories,
                                                 const QList<Snippet>& snippets) {
    // Only the user can read it, as the library itself; written whole or not at all.
    if (const auto error = AtomicFile::write(path, encode(categories, snippets)))
        return tr("Could not write %1: %2").arg(path, *error);
    return std::nullopt;
}

ImportPlan TypoletLibraryFile::read(const QString& path, ImportReader& reader) {
    QByteArray data;
    if (const auto error = reader.readFile(path, data))
        return ImportPlan::failure(path, *error);
    reader.report(1, 2);
    ImportPlan plan = decode(path, data);
    if (reader.cancelled())
        return ImportPlan::failure(path, ImportReader::cancelledMessage());
    reader.report(2, 2);
    return plan;
}

ImportPlan TypoletLibraryFile::decode(const QString& path, const QByteArray& json) {
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return ImportPlan::failure(path, tr("%1 is not valid JSON: %2 (at character %3).")
                                             .arg(path, parseError.errorString())
                                             .arg(parseError.offset));
    const QJsonObject root = document.object();
    const QJsonValue fileVersion = root.value(kVersion);
    if (!document.isObject() || !fileVersion.isDouble() || !root.value(kCategories).isArray() ||
        !root.value(kSnippets).isArray())
        return ImportPlan::failure(
            path, tr("%1 is not a Typolet library: it needs a \u201Cversion\u201D number and "
                     "\u201Ccategories\u201D and \u201Csnippets\u201D lists.")
                      .arg(path));
    if (fileVersion.toDouble() > version)
        return ImportPlan::failure(
            path, tr("%1 was written by a newer Typolet (library version %2); this one reads "
                     "version %3 and older.")
                      .arg(path)
                      .arg(fileVersion.toDouble())
                      .arg(version));

    // The records go through the store's own reader, so they are checked exactly as stored ones.
    const auto compact = [&](QLatin1String key) {
        return QJsonDocument(root.value(key).toArray()).toJson(QJsonDocument::Compact);
    };
    ImportPlan plan;
    plan.source = path;
    int unreadable = 0;
    plan.categories = RecordCodec::decodeCategories(compact(kCategories), &unreadable)
                          .value_or(QList<Category>{});
    QList<Snippet> snippets =
        RecordCodec::decodeSnippets(compact(kSnippets), &unreadable).value_or(QList<Snippet>{});
    plan.skipped = unreadable;
    // Optional: older files have none.
    RecordCodec::markAfterWordEnd(root.value(kAfterWordEnd).toArray(), snippets);
    for (const Snippet& snippet : std::as_const(snippets))
        plan.addSnippet(snippet);
    return plan;
}
