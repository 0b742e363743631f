#pragma once

#include "FormDialog.h"

#include <QUuid>

class SnippetForm;
class SnippetStore;

// The "New Snippet" dialog: a command and a content, both required, in the category given
// (which the form lets the user change). A command that an existing snippet already uses
// (exactly, letter case counts) is refused with the store's message until the command is
// edited. On success the snippet, with both texts exactly as typed, is in the store, added()
// names it, and the dialog closes. Escape cancels, Ctrl+Return adds; Return alone never
// submits (in the content it is a line break, and a command is rarely complete at Return).
class AddSnippetDialog : public FormDialog {
    Q_OBJECT
public:
    AddSnippetDialog(SnippetStore& store, const QUuid& categoryId, QWidget* parent = nullptr);

    SnippetForm* form() const { return m_form; }

signals:
    void added(const QUuid& snippetId);

protected:
    void submit() override;

private:
    void updateState();

    SnippetStore& m_store;
    SnippetForm* m_form;
};
