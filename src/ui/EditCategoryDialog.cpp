#include "EditCategoryDialog.h"

#include "StoreMessages.h"
#include "MessageBoxes.h"
#include "SnippetStore.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

EditCategoryDialog::EditCategoryDialog(SnippetStore& store, Category category, QWidget* parent)
    : FormDialog(tr("Edit Category"), tr("Save"), parent), m_store(store),
      m_category(std::move(category)) {
    setObjectName(QStringLiteral("editCategoryDialog"));
    submitButton()->setObjectName(QStringLiteral("saveButton"));
    m_nameField = addField(tr("Name"), tr("Category name"), tr("Category name"));
    m_nameField->setObjectName(QStringLiteral("nameField"));
    m_nameField->setText(m_category.name);
    m_nameField->setCursorPosition(0);

    const auto updateSave = [this] {
        submitButton()->setEnabled(!name().isEmpty() && name() != m_category.name);
    };
    connect(m_nameField, &QLineEdit::textChanged, this, [this, updateSave] { updateSave(); });
    updateSave();
}

QString EditCategoryDialog::name() const {
    return m_nameField->text();
}

void EditCategoryDialog::submit() {
    const QString newName = name();
    if (newName.isEmpty() || newName == m_category.name)
        return;
    if (const std::optional<DataError> error = m_store.updateCategory(m_category, newName);
        MessageBoxes::refused(error, this)) {
        showError(StoreMessages::text(*error));
        return;
    }
    accept();
}
