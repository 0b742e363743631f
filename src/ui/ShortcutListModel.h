#pragma once

#include "Shortcut.h"

#include <QAbstractListModel>

class ShortcutDataManager;

// Every snippet of the store, in stored order. Any change of the store's list resets the
// model; the list is shared with the store (copy on write), so a reset costs no copy.
class ShortcutListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { IdRole = Qt::UserRole + 1, CommandRole, ContentRole, CategoryIdRole };

    explicit ShortcutListModel(ShortcutDataManager& dataManager, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const Shortcut& shortcutAt(int row) const { return m_shortcuts.at(row); }
    int rowOf(const QUuid& id) const; // -1 when absent

private:
    ShortcutDataManager& m_dataManager;
    QList<Shortcut> m_shortcuts;
};
