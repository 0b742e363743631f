#pragma once

#include "Category.h"
#include "EditCategoryDialog.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

class QLabel;
class QToolButton;
class SnippetStore;

// One row of the category sidebar: a folder icon, the name and "<count> snippets", and,
// except for the built-in and reserved categories, an edit and a delete button. The row owns
// its rename dialog and its delete question. On the selected row everything takes the
// palette's selected-text colour.
class CategoryRowView : public QWidget {
    Q_OBJECT
public:
    CategoryRowView(SnippetStore& store, Category category, int snippetCount,
                    QWidget* parent = nullptr);

    Category category() const { return m_category; }
    int snippetCount() const { return m_snippetCount; }
    void setSnippetCount(int count);

    bool isSelected() const { return m_isSelected; }
    void setSelected(bool selected);
    bool isProtected() const;

    // The count line as shown, e.g. "1 snippets".
    QString countText() const;
    // The delete confirmation's message for the current name and count.
    QString deleteMessage() const;

    bool showingEditDialog() const { return m_editDialog && m_editDialog->isVisible(); }
    bool showingDeleteAlert() const { return m_deleteAlert && m_deleteAlert->isVisible(); }

    QToolButton* editButton() const { return m_editButton; }
    QToolButton* deleteButton() const { return m_deleteButton; }
    EditCategoryDialog* editDialog() const { return m_editDialog; }
    QMessageBox* deleteAlert() const { return m_deleteAlert; }

    // Where the edit dialog finds the classes of the windows open now.
    void setOpenWindowClasses(ApplicationLimitEditor::WindowClasses openWindows) {
        m_openWindowClasses = std::move(openWindows);
    }

    void showEditDialog();
    void showDeleteAlert();

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyColors();

    SnippetStore& m_store;
    Category m_category;
    ApplicationLimitEditor::WindowClasses m_openWindowClasses;
    int m_snippetCount;
    bool m_isSelected = false;

    QLabel* m_folder;
    QLabel* m_name;
    QLabel* m_count;
    QToolButton* m_editButton = nullptr;
    QToolButton* m_deleteButton = nullptr;
    QPointer<EditCategoryDialog> m_editDialog;
    QPointer<QMessageBox> m_deleteAlert;
};
