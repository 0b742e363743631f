#include "CustomTextEditor.h"

#include <QEvent>
#include <QScrollBar>

CustomTextEditor::CustomTextEditor(QWidget* parent) : QPlainTextEdit(parent) {
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setUndoRedoEnabled(true);
    setBackgroundVisible(false);
    document()->setDocumentMargin(0);
    setViewportMargins(0, verticalInset, 0, verticalInset);
    applyPalette();
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_settingText)
            emit textEdited(toPlainText());
    });
}

void CustomTextEditor::applyPalette() {
    QPalette palette = this->palette();
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setColor(group, QPalette::Base, Qt::transparent);
        palette.setColor(group, QPalette::Window, Qt::transparent);
    }
    setPalette(palette);
    viewport()->setAutoFillBackground(false);
    setAutoFillBackground(false);
}

void CustomTextEditor::setText(const QString& text) {
    if (toPlainText() == text)
        return;
    m_settingText = true;
    setPlainText(text);
    m_settingText = false;
}
