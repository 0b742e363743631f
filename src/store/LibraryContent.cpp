#include "LibraryContent.h"

#include "LibraryKeys.h"
#include "RecordCodec.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {
QByteArray decoded(const IniFormat::Values& values, const char* key) {
    return IniFormat::decode(values.value(QLatin1String(key))).toByteArray();
}
} // namespace

LibraryContent LibraryContent::of(const IniFormat::Values& values) {
    LibraryContent content;
    content.snippets = values.contains(QLatin1String(LibraryKeys::snippets))
                           ? decodeSnippets(decoded(values, LibraryKeys::snippets),
                                            decoded(values, LibraryKeys::afterWordEnd),
                                            &content.unreadableSnippets)
                           : QList<Snippet>();
    content.categories = values.contains(QLatin1String(LibraryKeys::categories))
                             ? RecordCodec::decodeCategories(
                                   decoded(values, LibraryKeys::categories),
                                   &content.unreadableCategories)
                             : QList<Category>();
    return content;
}

std::optional<LibraryContent> LibraryContent::read(const QString& path,
                                                  std::optional<DataError>* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = DataError::unreadableFile(path, file.errorString());
        return std::nullopt;
    }
    LibraryContent content = of(IniFormat::parse(file.readAll()));
    if (!content.snippets || !content.categories) {
        if (error)
            *error = DataError::notALibrary(path);
        return std::nullopt;
    }
    return content;
}

std::optional<QList<Snippet>> LibraryContent::decodeSnippets(const QByteArray& json,
                                                             const QByteArray& afterWordEndJson,
                                                             int* unreadable) {
    auto snippets = RecordCodec::decodeSnippets(json, unreadable);
    if (snippets)
        RecordCodec::markAfterWordEnd(QJsonDocument::fromJson(afterWordEndJson).array(),
                                      *snippets);
    return snippets;
}
