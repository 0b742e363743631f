#include "SnippetFilterModel.h"

#include "SnippetListModel.h"

SnippetFilterModel::SnippetFilterModel(SnippetListModel& source, QObject* parent)
    : QSortFilterProxyModel(parent), m_source(source) {
    setSourceModel(&source);
    setDynamicSortFilter(false);
}

void SnippetFilterModel::setCategoryFilter(std::optional<QUuid> categoryId) {
    if (m_categoryId == categoryId)
        return;
    m_categoryId = categoryId;
    invalidateFilter();
}

void SnippetFilterModel::setSearchText(const QString& text) {
    if (m_searchText == text)
        return;
    m_searchText = text;
    invalidateFilter();
}

bool SnippetFilterModel::matches(const QString& command, const QString& content,
                                  const QString& searchText) {
    if (searchText.isEmpty())
        return true;
    return command.contains(searchText, Qt::CaseInsensitive) ||
           content.contains(searchText, Qt::CaseInsensitive);
}

bool SnippetFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    if (sourceParent.isValid())
        return false;
    const Snippet& snippet = m_source.snippetAt(sourceRow);
    if (m_categoryId && m_source.shownCategoryAt(sourceRow) != *m_categoryId)
        return false;
    return matches(snippet.command, snippet.content, m_searchText);
}
