#include "SnippetListModel.h"

#include "SnippetStore.h"

#include <QMimeData>

SnippetListModel::SnippetListModel(SnippetStore& store, QObject* parent)
    : QAbstractListModel(parent), m_store(store) {
    take(store.snippets());
    connect(&m_store, &SnippetStore::snippetsChanged, this, [this] {
        beginResetModel();
        take(m_store.snippets());
        endResetModel();
    });
}

void SnippetListModel::take(const QList<Snippet>& snippets) {
    m_snippets = snippets;
    m_commandCounts.clear();
    QHash<QString, int> counts;
    counts.reserve(snippets.size());
    for (const Snippet& snippet : snippets) {
        if (++counts[snippet.command] == 2)
            m_commandCounts.insert(snippet.command, 2);
    }
}

int SnippetListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_snippets.size());
}

QVariant SnippetListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_snippets.size())
        return {};
    const Snippet& snippet = m_snippets.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case CommandRole:
        return snippet.command;
    case Qt::AccessibleTextRole:
        return m_commandCounts.contains(snippet.command)
                   ? tr("%1 (another snippet has this command too)").arg(snippet.command)
                   : snippet.command;
    case ClashRole:
        return m_commandCounts.contains(snippet.command);
    case ContentRole:
        return snippet.content;
    case IdRole:
        return snippet.id;
    case CategoryIdRole:
        return snippet.categoryId;
    default:
        return {};
    }
}

int SnippetListModel::rowOf(const QUuid& id) const {
    for (int row = 0; row < m_snippets.size(); ++row) {
        if (m_snippets.at(row).id == id)
            return row;
    }
    return -1;
}

QUuid SnippetListModel::shownCategoryAt(int row) const {
    return m_store.shownCategoryId(m_snippets.at(row));
}

Qt::ItemFlags SnippetListModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractListModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList SnippetListModel::mimeTypes() const {
    return {QLatin1String(idsMimeType)};
}

QMimeData* SnippetListModel::mimeData(const QModelIndexList& indexes) const {
    QStringList ids;
    for (const QModelIndex& index : indexes)
        if (index.isValid() && index.row() < m_snippets.size())
            ids << m_snippets.at(index.row()).id.toString();
    auto* data = new QMimeData;
    data->setData(QLatin1String(idsMimeType), ids.join(QLatin1Char('\n')).toUtf8());
    return data;
}

QList<QUuid> SnippetListModel::idsIn(const QMimeData* data) {
    QList<QUuid> ids;
    if (!data)
        return ids;
    const QList<QByteArray> lines = data->data(QLatin1String(idsMimeType)).split('\n');
    for (const QByteArray& line : lines)
        if (const QUuid id = QUuid::fromString(QLatin1String(line)); !id.isNull())
            ids.append(id);
    return ids;
}
