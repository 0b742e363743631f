#pragma once

#include "ImportPlan.h"

#include <QAbstractTableModel>
#include <QList>

class SnippetStore;

// The candidates of an import as a table: command, the start of the content, category, and
// for a command already in the library what the import does with it (the plan's resolution,
// edited in place). The rows are the plan itself, so the table costs nothing per row until a
// row is shown, whatever the number of candidates.
class ImportCandidateModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { commandColumn, contentColumn, categoryColumn, clashColumn, columnTotal };

    ImportCandidateModel(const SnippetStore& store, ImportPlan plan, QObject* parent = nullptr);

    const ImportPlan& plan() const { return m_plan; }
    int clashCount() const { return m_clashCount; }
    bool clashes(int row) const { return m_clashes.value(row); }
    // Every clashing candidate at once.
    void setAllResolutions(ImportPlan::Resolution resolution);
    static QString resolutionName(ImportPlan::Resolution resolution);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // The clash column's EditRole is the resolution, as an int.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    QString categoryName(const QUuid& id) const;

    const SnippetStore& m_store;
    ImportPlan m_plan;
    QList<bool> m_clashes; // one per candidate
    int m_clashCount = 0;
};
