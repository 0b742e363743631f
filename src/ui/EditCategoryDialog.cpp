#include "EditCategoryDialog.h"

#include "StoreMessages.h"
#include "MessageBoxes.h"
#include "SnippetStore.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

EditCategoryDialog::EditCategoryDialog(SnippetStore& store, Category category, QWidget* parent,
                                       ApplicationLimitEditor::WindowClasses openWindows)
    : FormDialog(tr("Edit Category"), tr("Save"), parent), m_store(store),
      m_category(std::move(category)) {
    setObjectName(QStringLiteral("editCategoryDialog"));
    submitButton()->setObjectName(QStringLiteral("saveButton"));
    m_nameField = addField(tr("Name"), tr("Category name"), tr("Category name"));
    m_nameField->setObjectName(QStringLiteral("nameField"));
    m_nameField->setText(m_category.name);
    m_nameField->setCursorPosition(0);

    m_limit = new ApplicationLimitEditor(std::move(openWindows), this);
    m_limit->setLimit(m_category.limit);
    // Above the stretch that keeps the fields at the top.
    formLayout()->insertWidget(formLayout()->count() - 1, m_limit);

    const auto updateSave = [this] {
        submitButton()->setEnabled(!name().isEmpty() &&
                                   (name() != m_category.name || !(m_limit->limit() == m_category.limit)));
    };
    connect(m_nameField, &QLineEdit::textChanged, this, [this, updateSave] { updateSave(); });
    connect(m_limit, &ApplicationLimitEditor::edited, this, [this, updateSave] {
        hideError();
        updateSave();
    });
    updateSave();
}

QString EditCategoryDialog::name() const {
    return m_nameField->text();
}

void EditCategoryDialog::submit() {
    const QString newName = name();
    const Category::Limit limit = m_limit->limit();
    if (newName.isEmpty() || (newName == m_category.name && limit == m_category.limit))
        return;
    if (const std::optional<DataError> error = m_store.updateCategory(m_category, newName, limit);
        MessageBoxes::refused(error, this)) {
        showError(StoreMessages::text(*error));
        return;
    }
    accept();
}
