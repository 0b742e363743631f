#pragma once

#include "Category.h"
#include "DataError.h"
#include "IniFormat.h"
#include "Snippet.h"

#include <QList>
#include <QString>
#include <optional>

// The snippet and category lists that one version of the library file holds: the file as it
// is now, one from the history, or the one another program just wrote. A list whose key is
// missing is empty; a list that is there but is no JSON array is nullopt. Records that do not
// decode are left out and counted.
struct LibraryContent {
    std::optional<QList<Snippet>> snippets;
    std::optional<QList<Category>> categories;
    int unreadableSnippets = 0;
    int unreadableCategories = 0;

    static LibraryContent of(const IniFormat::Values& values);
    // The version kept in the file at `path`, or why it cannot be read (in `*error`).
    static std::optional<LibraryContent> read(const QString& path,
                                              std::optional<DataError>* error = nullptr);

    // The stored snippet list with the ids of those that wait for a word end beside it; an id
    // list that does not read only loses the waiting, so every snippet then fires at once.
    static std::optional<QList<Snippet>> decodeSnippets(const QByteArray& json,
                                                          const QByteArray& afterWordEndJson,
                                                          int* unreadable);
};
