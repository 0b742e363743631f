#include "ReferenceMatcher.h"

#include "GraphemeText.h"

#include <algorithm>

std::optional<qsizetype> ReferenceMatcher::match(const QList<Snippet>& snippets,
                                                 const QString& text) {
    QList<std::pair<qsizetype, qsizetype>> order; // (characters, list index)
    order.reserve(snippets.size());
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        if (!snippets[i].command.trimmed().isEmpty()) // blank commands never fire
            order.append({GraphemeText::count(snippets[i].command), i});
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [length, index] : order) {
        if (GraphemeText::endsWith(text, snippets[index].command))
            return index;
    }
    return std::nullopt;
}
