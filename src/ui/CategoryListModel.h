#pragma once

#include "Category.h"

#include <QAbstractListModel>
#include <QHash>
#include <QUuid>

class SnippetStore;

// The sidebar: "All Snippets" first, then the store's categories in stored order. Each row
// also knows how many snippets it holds. A change of the category list resets the model; a
// change of the snippets only updates the counts.
class CategoryListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { IdRole = Qt::UserRole + 1, CountRole, ProtectedRole };

    explicit CategoryListModel(SnippetStore& store, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    static constexpr int allSnippetsRow = 0;

    // Null for the "All Snippets" row and for rows out of range.
    std::optional<Category> categoryAt(int row) const;
    int rowOf(const QUuid& id) const; // -1 when absent
    int totalCount() const { return m_total; }

    // Snippets dropped on a category row move into that category.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    int snippetCount(const QUuid& categoryId) const;

private:
    void recount();

    SnippetStore& m_store;
    QList<Category> m_categories;
    QHash<QUuid, int> m_counts;
    int m_total = 0;
};
