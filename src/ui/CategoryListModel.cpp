#include "CategoryListModel.h"

#include "SnippetListModel.h"
#include "SnippetStore.h"

#include <QMimeData>

CategoryListModel::CategoryListModel(SnippetStore& store, QObject* parent)
    : QAbstractListModel(parent), m_store(store),
      m_categories(store.categories()) {
    recount();
    connect(&m_store, &SnippetStore::categoriesChanged, this, [this] {
        beginResetModel();
        m_categories = m_store.categories();
        endResetModel();
    });
    connect(&m_store, &SnippetStore::snippetsChanged, this, [this] {
        recount();
        emit dataChanged(index(0), index(rowCount() - 1), {CountRole});
    });
}

void CategoryListModel::recount() {
    m_counts.clear();
    m_total = int(m_store.snippets().size());
    for (const Snippet& snippet : m_store.snippets())
        ++m_counts[m_store.shownCategoryId(snippet)];
}

int CategoryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_categories.size()) + 1;
}

QVariant CategoryListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    if (index.row() == allSnippetsRow) {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return tr("All Snippets");
        case CountRole:
            return m_total;
        case ProtectedRole:
            return true;
        default:
            return {};
        }
    }
    const Category& category = m_categories.at(index.row() - 1);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return category.name;
    case IdRole:
        return category.id;
    case CountRole:
        return snippetCount(category.id);
    case ProtectedRole:
        return Category::isProtected(category.id);
    default:
        return {};
    }
}

std::optional<Category> CategoryListModel::categoryAt(int row) const {
    if (row <= allSnippetsRow || row > m_categories.size())
        return std::nullopt;
    return m_categories.at(row - 1);
}

int CategoryListModel::rowOf(const QUuid& id) const {
    for (int row = 0; row < m_categories.size(); ++row) {
        if (m_categories.at(row).id == id)
            return row + 1;
    }
    return -1;
}

int CategoryListModel::snippetCount(const QUuid& categoryId) const {
    return m_counts.value(categoryId, 0);
}

Qt::ItemFlags CategoryListModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractListModel::flags(index);
    return categoryAt(index.row()) ? flags | Qt::ItemIsDropEnabled : flags;
}

QStringList CategoryListModel::mimeTypes() const {
    return {QLatin1String(SnippetListModel::idsMimeType)};
}

Qt::DropActions CategoryListModel::supportedDropActions() const {
    return Qt::MoveAction;
}

bool CategoryListModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                        const QModelIndex& parent) const {
    // Onto a category row only, never between rows nor onto "All Snippets".
    return categoryAt(parent.row()).has_value() && data &&
           data->hasFormat(QLatin1String(SnippetListModel::idsMimeType));
}

bool CategoryListModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                     int column, const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // A move that could not be saved stays in memory; the window says so (saveFailed).
    [[maybe_unused]] const auto notSaved =
        m_store.moveSnippets(SnippetListModel::idsIn(data), categoryAt(parent.row())->id);
    // The rows stay where they are in the snippet list: the store moved the snippets.
    return false;
}
