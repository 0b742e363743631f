#include "AddCategoryDialog.h"

#include "StoreMessages.h"
#include "MessageBoxes.h"
#include "SnippetStore.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddCategoryDialog::AddCategoryDialog(SnippetStore& store, QWidget* parent,
                                     ApplicationLimitEditor::WindowClasses openWindows)
    : FormDialog(tr("New Category"), tr("Add"), parent), m_store(store) {
    setObjectName(QStringLiteral("addCategoryDialog"));
    submitButton()->setObjectName(QStringLiteral("addButton"));
    submitButton()->setToolTip(tr("Add Category"));
    m_nameField = addField(tr("Name"), tr("Enter category name\u2026"), tr("Category name"));
    m_nameField->setObjectName(QStringLiteral("nameField"));

    m_limit = new ApplicationLimitEditor(std::move(openWindows), this);
    // Above the stretch that keeps the fields at the top.
    formLayout()->insertWidget(formLayout()->count() - 1, m_limit);

    connect(m_nameField, &QLineEdit::textChanged, this,
            [this] { submitButton()->setEnabled(!name().isEmpty()); });
    submitButton()->setEnabled(false);
}

QString AddCategoryDialog::name() const {
    return m_nameField->text();
}

void AddCategoryDialog::submit() {
    const QString name = this->name();
    if (name.isEmpty())
        return;
    if (const std::optional<DataError> error = m_store.addCategory(name, m_limit->limit());
        MessageBoxes::refused(error, this)) {
        showError(StoreMessages::text(*error));
        return;
    }
    // Names are unique, so the name finds the category just added.
    for (const Category& category : m_store.categories()) {
        if (category.name == name) {
            emit added(category.id);
            break;
        }
    }
    accept();
}
