#pragma once

#include "ApplicationLimitEditor.h"
#include "FormDialog.h"

#include <QUuid>

class QLineEdit;
class SnippetStore;

// The "New Category" dialog: a name, required, and where its snippets expand. The store decides duplicates (letter case
// ignored, spaces kept), shown with its message until the name is edited. On success added()
// names the new category and the dialog closes. Return and Ctrl+Return add, Escape cancels.
class AddCategoryDialog : public FormDialog {
    Q_OBJECT
public:
    explicit AddCategoryDialog(SnippetStore& store, QWidget* parent = nullptr,
                               ApplicationLimitEditor::WindowClasses openWindows = {});

    QString name() const;
    QLineEdit* nameField() const { return m_nameField; }
    ApplicationLimitEditor* limitEditor() const { return m_limit; }

signals:
    void added(const QUuid& categoryId);

protected:
    void submit() override;

private:
    SnippetStore& m_store;
    QLineEdit* m_nameField;
    ApplicationLimitEditor* m_limit;
};
