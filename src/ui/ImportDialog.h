#pragma once

#include "ImportPlan.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;
class SnippetStore;

// Shows what an import will add before it is made: one row per snippet (command, the start of
// its content, its category), how many entries of the file were skipped, and for each command
// that is already in the library a choice: skip it (the default), keep both, or replace the
// existing snippet's content; one more choice sets every clash at once. Import applies the
// whole plan to the store as one change; a save that fails is shown over the parent window.
class ImportDialog : public QDialog {
    Q_OBJECT
public:
    ImportDialog(SnippetStore& store, ImportPlan plan, QWidget* parent = nullptr);

    const ImportPlan& plan() const { return m_plan; }
    int clashCount() const { return m_clashCount; }

    // The parts tests reach for. A row's choice is null when its command does not clash.
    QTableWidget* table() const { return m_table; }
    QComboBox* resolutionChoice(int row) const;
    QComboBox* allClashesChoice() const { return m_allClashes; }
    QLabel* summary() const { return m_summary; }
    QPushButton* importButton() const { return m_importButton; }

    void import();

private:
    QComboBox* makeResolutionChoice();
    QString categoryName(const QUuid& id) const;

    SnippetStore& m_store;
    ImportPlan m_plan;
    int m_clashCount = 0;
    QTableWidget* m_table;
    QComboBox* m_allClashes;
    QLabel* m_summary;
    QPushButton* m_importButton;
};
