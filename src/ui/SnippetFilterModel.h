#pragma once

#include <QSortFilterProxyModel>
#include <QUuid>
#include <optional>

class SnippetListModel;

// The snippets the middle column shows: those of the selected category (all of them when no
// category is selected) whose command, or else content, contains the search text, ignoring
// letter case. The search text is used as typed: one space is a search for a space. The
// stored order is kept; nothing is sorted.
class SnippetFilterModel : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit SnippetFilterModel(SnippetListModel& source, QObject* parent = nullptr);

    void setCategoryFilter(std::optional<QUuid> categoryId);
    std::optional<QUuid> categoryFilter() const { return m_categoryId; }
    void setSearchText(const QString& text);
    QString searchText() const { return m_searchText; }

    // Whether a snippet with these texts matches `searchText`.
    static bool matches(const QString& command, const QString& content, const QString& searchText);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    SnippetListModel& m_source;
    std::optional<QUuid> m_categoryId;
    QString m_searchText;
};
