#include "InsertCandidateModel.h"

namespace {
constexpr qsizetype shownLineLength = 200;
}

void InsertCandidateModel::setRows(const QList<Snippet>& snippets,
                                   const QHash<QUuid, QString>& categoryNames,
                                   const QList<qsizetype>& rows) {
    beginResetModel();
    m_snippets = snippets;
    m_categoryNames = categoryNames;
    m_rows = rows;
    endResetModel();
}

int InsertCandidateModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int InsertCandidateModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QString InsertCandidateModel::firstLine(const QString& content) {
    for (const QStringView line : QStringView(content).split(u'\n')) {
        const QStringView trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            return trimmed.left(shownLineLength).toString();
    }
    return {};
}

QVariant InsertCandidateModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Snippet& snippet = snippetAt(index.row());
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        switch (index.column()) {
        case CommandColumn:
            return snippet.command;
        case ContentColumn:
            return firstLine(snippet.content);
        case CategoryColumn:
            return m_categoryNames.value(snippet.categoryId,
                                         m_categoryNames.value(Category::defaultCategoryId));
        }
    }
    if (role == Qt::ToolTipRole && index.column() == ContentColumn)
        return snippet.content.left(1000);
    return {};
}

QVariant InsertCandidateModel::headerData(int section, Qt::Orientation orientation,
                                          int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case CommandColumn:
        return tr("Command");
    case ContentColumn:
        return tr("Content");
    case CategoryColumn:
        return tr("Category");
    }
    return {};
}
