#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QList>
#include <QString>

// What reading a library file (or phrase folder) would add to the store: the categories it
// brings, the candidate snippets, each in one of those categories (or in a category the store
// already has by id), and how many entries of the file could not become snippets. A file that
// could not be read at all gives no candidates and `error` saying which file and what is wrong.
//
// A candidate whose command is already in the store is a clash; its resolution says what the
// import does with it. Resolutions of candidates that do not clash are not used.
struct ImportPlan {
    enum class Resolution { skip, keepBoth, replace };

    QString source; // the file or folder read
    QString error;  // empty when the source was read
    QList<Category> categories;
    QList<Snippet> snippets;
    QList<Resolution> resolutions; // one per snippet
    int skipped = 0;
    // Values the source fills in that Typolet has no placeholder for: they are typed as
    // written. Each named once, with its kind: "name (shell)".
    QStringList typedAsWritten;
    // Entries that need what Typolet cannot do (a shell command's output, an image, a regular
    // expression as trigger): left out, each named once with its kind: ":ip (shell)".
    QStringList leftOut;

    static ImportPlan failure(QString source, QString error);

    bool failed() const { return !error.isEmpty(); }
    // Adds a candidate with the default resolution; a blank command is skipped and counted.
    void addSnippet(const Snippet& snippet);
    void setAllResolutions(Resolution resolution);
    // The name of a category of this plan, or empty.
    QString categoryName(const QUuid& id) const;
};
