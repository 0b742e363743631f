#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QUuid>

// The insert window's list: the snippets a search ranked, best first, one row each with the
// command, the first line of the content and the category's name.
class InsertCandidateModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { CommandColumn, ContentColumn, CategoryColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    // `rows` index `snippets`; `categoryNames` names each snippet's shown category.
    void setRows(const QList<Snippet>& snippets, const QHash<QUuid, QString>& categoryNames,
                 const QList<qsizetype>& rows);
    const Snippet& snippetAt(int row) const { return m_snippets.at(m_rows.at(row)); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The content's first line that has text, shortened for a row.
    static QString firstLine(const QString& content);

private:
    QList<Snippet> m_snippets; // shared with the store's list, not copied
    QHash<QUuid, QString> m_categoryNames;
    QList<qsizetype> m_rows;
};
