#include "ImportMerge.h"

#include <QHash>
#include <QSet>

ImportMerge ImportMerge::apply(const ImportPlan& plan, const QList<Category>& existingCategories,
                               const QList<Snippet>& existingSnippets) {
    // What becomes of each candidate, decided against the library as it is before the import
    // (candidates never clash with each other).
    enum class Action { skip, add, replace };
    QHash<QString, qsizetype> existingCommands;
    for (qsizetype i = existingSnippets.size() - 1; i >= 0; --i)
        existingCommands.insert(existingSnippets[i].command, i);
    QList<Action> actions;
    QHash<QUuid, int> candidatesIn, addedIn; // by the plan's category id
    for (qsizetype i = 0; i < plan.snippets.size(); ++i) {
        const Snippet& candidate = plan.snippets[i];
        const auto resolution = plan.resolutions.value(i, ImportPlan::Resolution::skip);
        Action action = Action::add;
        if (candidate.command.trimmed().isEmpty())
            action = Action::skip;
        else if (existingCommands.contains(candidate.command))
            action = resolution == ImportPlan::Resolution::keepBoth ? Action::add
                     : resolution == ImportPlan::Resolution::replace ? Action::replace
                                                                     : Action::skip;
        actions.append(action);
        ++candidatesIn[candidate.categoryId];
        if (action == Action::add)
            ++addedIn[candidate.categoryId];
    }

    // A record keeps the id it comes with unless that id is taken: two records with one id
    // would be one record to every lookup.
    QSet<QUuid> categoryIdsInUse, snippetIdsInUse;
    for (const Category& category : existingCategories)
        categoryIdsInUse.insert(category.id);
    for (const Snippet& snippet : existingSnippets)
        snippetIdsInUse.insert(snippet.id);
    const auto freeId = [](QSet<QUuid>& inUse, const QUuid& wanted) {
        const QUuid id = inUse.contains(wanted) ? QUuid::createUuid() : wanted;
        inUse.insert(id);
        return id;
    };

    ImportMerge merged{existingCategories, existingSnippets};
    QHash<QUuid, QUuid> categoryIds; // the plan's id -> the library's
    for (const Category& imported : plan.categories) {
        if (categoryIds.contains(imported.id))
            continue;
        const QString name = imported.name.toLower();
        const auto same =
            std::find_if(merged.categories.cbegin(), merged.categories.cend(),
                         [&](const Category& c) { return c.name.toLower() == name; });
        if (same != merged.categories.cend()) {
            categoryIds.insert(imported.id, same->id);
        } else if (candidatesIn.value(imported.id) == 0 || addedIn.value(imported.id) > 0) {
            const QUuid id = freeId(categoryIdsInUse, imported.id);
            merged.categories.append(Category(id, imported.name, imported.createdAt));
            merged.categories.last().limit = imported.limit;
            categoryIds.insert(imported.id, id);
            merged.categoriesChanged = true;
        }
    }
    const auto libraryCategory = [&](const QUuid& planId) {
        if (const auto found = categoryIds.constFind(planId); found != categoryIds.cend())
            return *found;
        return categoryIdsInUse.contains(planId) ? planId : Category::defaultCategoryId;
    };

    for (qsizetype i = 0; i < plan.snippets.size(); ++i) {
        const Snippet& candidate = plan.snippets[i];
        if (actions[i] == Action::replace) {
            merged.snippets[existingCommands.value(candidate.command)].content = candidate.content;
            merged.snippetsChanged = true;
        } else if (actions[i] == Action::add) {
            merged.snippets.append(Snippet(freeId(snippetIdsInUse, candidate.id),
                                           candidate.command, candidate.content,
                                           candidate.createdAt,
                                           libraryCategory(candidate.categoryId)));
            merged.snippets.last().trigger = candidate.trigger;
            merged.snippets.last().matchCase = candidate.matchCase;
            merged.snippetsChanged = true;
        }
    }
    return merged;
}
