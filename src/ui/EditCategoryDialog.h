#pragma once

#include "Category.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class SnippetStore;

// The "Edit Category" sheet (400 x 200): a new name for a category. "Save" stays disabled
// while the name is empty or unchanged; a name another category already has (in any letter
// case) shows "A category with this name already exists" until the name is edited.
class EditCategoryDialog : public QDialog {
    Q_OBJECT
public:
    static constexpr int sheetWidth = 400;
    static constexpr int sheetHeight = 200;

    EditCategoryDialog(SnippetStore& store, Category category,
                     QWidget* parent = nullptr);

    QString name() const;
    bool showingDuplicateError() const { return m_showingDuplicateError; }

    QLineEdit* nameField() const { return m_nameField; }
    QPushButton* saveButton() const { return m_saveButton; }
    QPushButton* cancelButton() const { return m_cancelButton; }

    void save();

private:
    void setShowingDuplicateError(bool showing);

    SnippetStore& m_store;
    Category m_category;
    bool m_showingDuplicateError = false;

    QLineEdit* m_nameField;
    QLabel* m_duplicateError;
    QPushButton* m_cancelButton;
    QPushButton* m_saveButton;
};
