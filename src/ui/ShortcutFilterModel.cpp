#include "ShortcutFilterModel.h"

#include "ShortcutListModel.h"

ShortcutFilterModel::ShortcutFilterModel(ShortcutListModel& source, QObject* parent)
    : QSortFilterProxyModel(parent), m_source(source) {
    setSourceModel(&source);
    setDynamicSortFilter(false);
}

void ShortcutFilterModel::setCategoryFilter(std::optional<QUuid> categoryId) {
    if (m_categoryId == categoryId)
        return;
    m_categoryId = categoryId;
    invalidateFilter();
}

void ShortcutFilterModel::setSearchText(const QString& text) {
    if (m_searchText == text)
        return;
    m_searchText = text;
    invalidateFilter();
}

bool ShortcutFilterModel::matches(const QString& command, const QString& content,
                                  const QString& searchText) {
    if (searchText.isEmpty())
        return true;
    return command.contains(searchText, Qt::CaseInsensitive) ||
           content.contains(searchText, Qt::CaseInsensitive);
}

bool ShortcutFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    if (sourceParent.isValid())
        return false;
    const Shortcut& shortcut = m_source.shortcutAt(sourceRow);
    if (m_categoryId && shortcut.categoryId != *m_categoryId)
        return false;
    return matches(shortcut.command, shortcut.content, m_searchText);
}
