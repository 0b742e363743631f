#pragma once

#include "Category.h"
#include "FormDialog.h"

class QLineEdit;
class SnippetStore;

// The "Edit Category" dialog: a new name for a category. "Save" stays disabled while the name
// is empty or unchanged; a name another category already has (in any letter case) shows the
// store's message until the name is edited. The renamed category reaches every view through
// the store's signal.
class EditCategoryDialog : public FormDialog {
    Q_OBJECT
public:
    EditCategoryDialog(SnippetStore& store, Category category, QWidget* parent = nullptr);

    QString name() const;
    QLineEdit* nameField() const { return m_nameField; }

protected:
    void submit() override;

private:
    SnippetStore& m_store;
    Category m_category;
    QLineEdit* m_nameField;
};
