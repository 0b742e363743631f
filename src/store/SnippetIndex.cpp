#include "SnippetIndex.h"

#include <QHash>

namespace {
// The first letter of a command that is a letter or digit: ";addr" starts at "a".
qsizetype commandStart(QStringView command) {
    for (qsizetype i = 0; i < command.size(); ++i)
        if (command[i].isLetterOrNumber())
            return i;
    return 0;
}
} // namespace

SnippetIndex::SnippetIndex(QList<Snippet> snippets, const QList<Category>& categories,
                           const SnippetIndex* previous)
    : m_snippets(std::move(snippets)) {
    QHash<QUuid, FoldedText> categoryNames;
    for (const Category& category : categories)
        categoryNames.insert(category.id, FoldedText(category.name));
    // A snippet whose category is gone is shown in the default one, and found by its name.
    const FoldedText fallback = categoryNames.value(Category::defaultCategoryId);

    // Edits keep the order of the list, so the same place is looked at first.
    QHash<QUuid, qsizetype> previousRows;
    const auto previousRow = [&](qsizetype row, const QUuid& id) -> qsizetype {
        if (!previous)
            return -1;
        if (row < previous->size() && previous->m_snippets[row].id == id)
            return row;
        if (previousRows.isEmpty()) {
            previousRows.reserve(previous->size());
            for (qsizetype i = 0; i < previous->size(); ++i)
                previousRows.insert(previous->m_snippets[i].id, i);
        }
        return previousRows.value(id, -1);
    };

    // Read only: the list stays shared with the store's, which may be on another thread.
    const QList<Snippet>& list = m_snippets;
    m_entries.reserve(list.size());
    for (qsizetype row = 0; row < list.size(); ++row) {
        const Snippet& snippet = list[row];
        const FoldedText category = categoryNames.value(snippet.categoryId, fallback);
        const qsizetype before = previousRow(row, snippet.id);
        if (before >= 0) {
            const Snippet& old = previous->m_snippets[before];
            if (old.command == snippet.command && old.content == snippet.content) {
                Entry entry = previous->m_entries[before];
                entry.category = category;
                m_entries.append(std::move(entry));
                ++m_reused;
                continue;
            }
        }
        Entry entry{FoldedText(snippet.command),
                    FoldedText(snippet.content.left(searchedContentLength)), category, 0};
        entry.commandStart = commandStart(entry.command.text());
        m_entries.append(std::move(entry));
    }
}
