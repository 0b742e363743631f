#pragma once

#include "Category.h"
#include "ImportPlan.h"
#include "Snippet.h"

#include <QList>

// The library as it is after an import plan is carried out on it: the plan's categories matched
// to the library's by name, ignoring case, and created when missing (unless every candidate of
// theirs is skipped); a candidate whose category is neither in the plan nor in the library goes
// to the default category. A candidate whose command is already a snippet's is resolved as the
// plan says: skipped, kept both, or put in place of the existing snippet's content (its id,
// creation time, category and trigger stay). Ids already in use are replaced by fresh ones.
struct ImportMerge {
    QList<Category> categories;
    QList<Snippet> snippets;
    bool categoriesChanged = false;
    bool snippetsChanged = false;

    static ImportMerge apply(const ImportPlan& plan, const QList<Category>& categories,
                             const QList<Snippet>& snippets);
};
