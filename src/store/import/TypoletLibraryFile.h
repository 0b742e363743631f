#pragma once

#include "Category.h"
#include "ImportPlan.h"
#include "Snippet.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <optional>

class ImportReader;

// Typolet's own library file, for export and import: a pretty-printed JSON object
//   {"afterWordEnd": [ids], "categories": [...], "snippets": [...], "version": 1}
// whose records are exactly the stored ones (RecordCodec), and the ids of the snippets that
// wait for a word to end beside them, as the store keeps them; so a library exported and
// imported into an empty store gives the same records back.
class TypoletLibraryFile {
    Q_DECLARE_TR_FUNCTIONS(TypoletLibraryFile)
public:
    // The format this build writes and the newest it reads.
    static constexpr int version = 1;

    static QByteArray encode(const QList<Category>& categories, const QList<Snippet>& snippets);
    // Writes the file atomically (a crash or full disk leaves any old file whole), readable by
    // its owner only, since it holds everything the user types; on failure returns why,
    // naming the file.
    static std::optional<QString> write(const QString& path, const QList<Category>& categories,
                                        const QList<Snippet>& snippets);

    // Records that do not decode are skipped and counted.
    static ImportPlan read(const QString& path, ImportReader& reader);
    static ImportPlan decode(const QString& path, const QByteArray& json);
};
