#pragma once

#include "ApplicationLimitEditor.h"
#include "Category.h"
#include "FormDialog.h"

class QLineEdit;
class SnippetStore;

// The "Edit Category" dialog: a new name for a category, and the applications its snippets
// expand in. "Save" stays disabled while the name is empty or nothing changed; a name another
// category already has (in any letter case), or a limit that lets one command expand twice in
// an application, shows the store's message until the form is edited. The changed category
// reaches every view through the store's signal.
class EditCategoryDialog : public FormDialog {
    Q_OBJECT
public:
    EditCategoryDialog(SnippetStore& store, Category category, QWidget* parent = nullptr,
                       ApplicationLimitEditor::WindowClasses openWindows = {});

    QString name() const;
    QLineEdit* nameField() const { return m_nameField; }
    ApplicationLimitEditor* limitEditor() const { return m_limit; }

protected:
    void submit() override;

private:
    SnippetStore& m_store;
    Category m_category;
    QLineEdit* m_nameField;
    ApplicationLimitEditor* m_limit;
};
