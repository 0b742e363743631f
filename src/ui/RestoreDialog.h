#pragma once

#include "LibraryHistory.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QTreeWidget;
class SnippetStore;

// File > Restore From Backup…: the versions the history keeps, newest first, with their date,
// why each was kept and how many snippets it holds; for the selected one, what a restore would
// change in the library as it is now. Restoring keeps the library as it is now as a version
// first, so a restore can itself be undone.
class RestoreDialog : public QDialog {
    Q_OBJECT
public:
    explicit RestoreDialog(SnippetStore& store, QWidget* parent = nullptr);

    // What restoring `versionPath` would do to the library now, in words ("Adds 2 snippets: …").
    QString changesFor(const QString& versionPath) const;

private:
    void showChanges();
    void restore();

    SnippetStore& m_store;
    QList<LibraryHistory::Version> m_versions;
    QTreeWidget* m_list;
    QLabel* m_changes;
    QDialogButtonBox* m_buttons;
};
