#pragma once

#include "Snippet.h"

#include <QAbstractListModel>
#include <QHash>
#include <QUuid>

class SnippetStore;

// Every snippet of the store, in stored order. Any change of the store's list resets the
// model; the list is shared with the store (copy on write), so a reset costs no copy.
class SnippetListModel : public QAbstractListModel {
    Q_OBJECT
public:
    // ClashRole: another snippet has the very same command (two computers of a synced folder
    // each added one), shown in the row until one of them changes.
    enum Role { IdRole = Qt::UserRole + 1, CommandRole, ContentRole, CategoryIdRole, ClashRole };

    explicit SnippetListModel(SnippetStore& store, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    // Rows can be dragged: the drag carries their ids (see idsMimeType), for a category.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    static constexpr const char* idsMimeType = "application/x-typolet-snippet-ids";
    // The ids a drag of snippets carries.
    static QList<QUuid> idsIn(const QMimeData* data);

    const Snippet& snippetAt(int row) const { return m_snippets.at(row); }
    // The category the snippet in `row` is shown in (see SnippetStore::shownCategoryId).
    QUuid shownCategoryAt(int row) const;
    int rowOf(const QUuid& id) const; // -1 when absent

private:
    void take(const QList<Snippet>& snippets);

    SnippetStore& m_store;
    QList<Snippet> m_snippets;
    QHash<QString, int> m_commandCounts; // only commands held by more than one snippet
};
