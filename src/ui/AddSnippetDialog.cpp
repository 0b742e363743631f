#include "AddSnippetDialog.h"

#include "StoreMessages.h"
#include "CustomTextEditor.h"
#include "MessageBoxes.h"
#include "SnippetForm.h"
#include "SnippetStore.h"
#include "TriggerOption.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddSnippetDialog::AddSnippetDialog(SnippetStore& store, const QUuid& categoryId, QWidget* parent)
    : FormDialog(tr("New Snippet"), tr("Add"), parent), m_store(store),
      m_form(new SnippetForm(store, this)) {
    setObjectName(QStringLiteral("addSnippetDialog"));
    submitButton()->setObjectName(QStringLiteral("addButton"));
    submitButton()->setToolTip(tr("Add Snippet"));
    setReturnSubmits(false);
    m_form->setCategoryId(categoryId);
    formLayout()->addWidget(m_form);
    setMinimumSize(480, 440);
    connect(m_form, &SnippetForm::edited, this, &AddSnippetDialog::updateState);
    updateState();
}

void AddSnippetDialog::updateState() {
    submitButton()->setEnabled(!SnippetStore::isBlankCommand(m_form->command()) &&
                               !m_form->content().isEmpty());
}

void AddSnippetDialog::submit() {
    if (!submitButton()->isEnabled())
        return;
    Snippet snippet = Snippet::create(m_form->command(), m_form->content(),
                                      m_form->categoryId(), m_form->trigger());
    snippet.matchCase = m_form->matchCase();
    // The only refusal left once Add is enabled is a command in use.
    if (const std::optional<DataError> error = m_store.addSnippet(snippet);
        MessageBoxes::refused(error, this)) {
        m_form->showCommandError(StoreMessages::text(*error));
        return;
    }
    MessageBoxes::refused(m_form->triggerOption()->applyChosenCure(), this);
    emit added(snippet.id);
    accept();
}
