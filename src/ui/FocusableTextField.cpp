#include "FocusableTextField.h"

#include <QKeyEvent>
#include <limits>

FocusableTextField::FocusableTextField(const QString& placeholder, QWidget* parent)
    : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    setFrame(false);
    // QLineEdit stops at 32767 characters by default; a command is kept whole however long.
    setMaxLength(std::numeric_limits<int>::max());
    setAttribute(Qt::WA_MacShowFocusRect, false);
    applyPalette();
    connect(this, &QLineEdit::returnPressed, this, [this] { setEditing(false); });
}

void FocusableTextField::applyPalette() {
    // The owner draws the field's background; keep ours see-through.
    QPalette palette = this->palette();
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, QPalette::Base, Qt::transparent);
    setPalette(palette);
}

void FocusableTextField::setEditing(bool editing) {
    if (m_editing == editing)
        return;
    m_editing = editing;
    emit editingChanged(editing);
}

void FocusableTextField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    setEditing(true);
}

void FocusableTextField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    // A popup (the context menu) takes focus without ending the edit.
    if (event->reason() != Qt::PopupFocusReason)
        setEditing(false);
}

void FocusableTextField::keyPressEvent(QKeyEvent* event) {
    const bool ends = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!ends && !event->text().isEmpty() && hasFocus())
        setEditing(true); // typing again after Return resumes editing
    QLineEdit::keyPressEvent(event);
}
