#include "ShortcutListModel.h"

#include "ShortcutDataManager.h"

ShortcutListModel::ShortcutListModel(ShortcutDataManager& dataManager, QObject* parent)
    : QAbstractListModel(parent), m_dataManager(dataManager), m_shortcuts(dataManager.shortcuts()) {
    connect(&m_dataManager, &ShortcutDataManager::shortcutsChanged, this, [this] {
        beginResetModel();
        m_shortcuts = m_dataManager.shortcuts();
        endResetModel();
    });
}

int ShortcutListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_shortcuts.size());
}

QVariant ShortcutListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_shortcuts.size())
        return {};
    const Shortcut& shortcut = m_shortcuts.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case CommandRole:
        return shortcut.command;
    case Qt::AccessibleTextRole:
        return shortcut.command;
    case ContentRole:
        return shortcut.content;
    case IdRole:
        return shortcut.id;
    case CategoryIdRole:
        return shortcut.categoryId;
    default:
        return {};
    }
}

int ShortcutListModel::rowOf(const QUuid& id) const {
    for (int row = 0; row < m_shortcuts.size(); ++row) {
        if (m_shortcuts.at(row).id == id)
            return row;
    }
    return -1;
}
