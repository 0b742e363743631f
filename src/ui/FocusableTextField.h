#pragma once

#include <QLineEdit>

// A single-line field without border, background or focus ring of its own: the form around
// it draws those, and highlights itself while the field is being edited. editingChanged(true)
// is emitted when editing begins (focus arrives, or typing resumes after Return) and
// editingChanged(false) when it ends (focus leaves, or Return is pressed).
//
// Its text is updated on every keystroke (textChanged/textEdited); setText() always writes.
class FocusableTextField : public QLineEdit {
    Q_OBJECT
public:
    explicit FocusableTextField(const QString& placeholder = {}, QWidget* parent = nullptr);

    bool isEditing() const { return m_editing; }

signals:
    void editingChanged(bool editing);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void setEditing(bool editing);
    void applyPalette();

    bool m_editing = false;
};
