#pragma once

#include <QDialog>

class QAbstractButton;
class QDialogButtonBox;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

// The skeleton of the editor's small forms (a new snippet, a new category, a category's new
// name): a window-modal dialog with the form's fields on top and the desktop's button box
// below, Cancel and the form's own button (in the desktop's order). The form's button calls
// submit(), which closes the dialog with accept() once the change is made. Escape cancels;
// Ctrl+Return presses the form's button wherever the keyboard is.
class FormDialog : public QDialog {
    Q_OBJECT
public:
    FormDialog(const QString& title, const QString& submitText, QWidget* parent);

    QPushButton* submitButton() const { return m_submit; }
    // The form's refusal, shown under its field until the field is edited.
    bool showingError() const;
    QPushButton* cancelButton() const { return m_cancel; }

    // Ctrl+Return and Ctrl+Enter anywhere in `owner`'s window press `submit` while it is
    // enabled: the forms' way to save or add without leaving the keyboard.
    static void submitOnCtrlReturn(QWidget* owner, QAbstractButton* submit);
    // A hidden line for the form's refusal ("... already exists"): the desktop's error icon
    // and the message (the label named "errorMessage"), in the ordinary text colour.
    static QWidget* errorLine(const QString& message, QWidget* parent);

protected:
    // Where the form puts its fields, above the buttons.
    QVBoxLayout* formLayout() const { return m_form; }
    // A titled one-line field with its error line under it (see showError()).
    QLineEdit* addField(const QString& title, const QString& placeholder,
                        const QString& accessibleName);
    // Shows the refusal under the field (the store's message, such as "... already exists").
    void showError(const QString& message);
    void hideError();
    // Return in a one-line form submits it; a form with a multi-line field turns that off.
    void setReturnSubmits(bool submits);
    virtual void submit() = 0;
    void showEvent(QShowEvent* event) override;

private:
    QVBoxLayout* m_form;
    QDialogButtonBox* m_buttons;
    QPushButton* m_submit;
    QPushButton* m_cancel;
    QWidget* m_error = nullptr;
    bool m_returnSubmits = true;
};
