#pragma once

#include "ImportPlan.h"

#include <QDialog>

class ImportCandidateModel;
class QComboBox;
class QLabel;
class QPushButton;
class QTableView;
class SnippetStore;

// Shows what an import will add before it is made: one row per snippet (command, the start of
// its content, its category), how many entries of the file were skipped, and for each command
// that is already in the library a choice: skip it (the default), keep both, or replace the
// existing snippet's content; one more choice sets every clash at once. The rows are a model
// over the plan, so the dialog opens at once however many candidates there are. Import applies
// the whole plan to the store as one change; a save that fails is shown over the parent window.
class ImportDialog : public QDialog {
    Q_OBJECT
public:
    ImportDialog(SnippetStore& store, ImportPlan plan, QWidget* parent = nullptr);

    const ImportPlan& plan() const;
    int clashCount() const;

    // The parts tests reach for.
    QTableView* table() const { return m_table; }
    ImportCandidateModel* model() const { return m_model; }
    QComboBox* allClashesChoice() const { return m_allClashes; }
    QLabel* summary() const { return m_summary; }
    QPushButton* importButton() const { return m_importButton; }

    void import();

private:
    SnippetStore& m_store;
    ImportCandidateModel* m_model;
    QTableView* m_table;
    QComboBox* m_allClashes;
    QLabel* m_summary;
    QPushButton* m_importButton;
};
