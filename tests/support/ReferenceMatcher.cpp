#include "ReferenceMatcher.h"

#include "GraphemeText.h"

#include <algorithm>

std::optional<qsizetype> ReferenceMatcher::match(const QList<Shortcut>& shortcuts,
                                                 const QString& text) {
    QList<std::pair<qsizetype, qsizetype>> order; // (characters, list index)
    order.reserve(shortcuts.size());
    for (qsizetype i = 0; i < shortcuts.size(); ++i) {
        if (!shortcuts[i].command.trimmed().isEmpty()) // blank commands never fire
            order.append({GraphemeText::count(shortcuts[i].command), i});
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [length, index] : order) {
        if (GraphemeText::endsWith(text, shortcuts[index].command))
            return index;
    }
    return std::nullopt;
}
