#include "CustomTextEditor.h"

#include <QKeyEvent>

#include <QEvent>
#include <QScrollBar>

CustomTextEditor::CustomTextEditor(QWidget* parent) : QPlainTextEdit(parent) {
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setUndoRedoEnabled(true);
    // Tab belongs to the keyboard's way through the form, not to the text.
    setTabChangesFocus(true);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (m_settingText)
            return;
        m_edited = true;
        emit textEdited(text());
    });
}

QString CustomTextEditor::text() const {
    if (!m_edited)
        return m_setText;
    // The document keeps each line as a block; its raw text joins them with U+2029.
    QString text = document()->toRawText();
    text.replace(QChar::ParagraphSeparator, m_lineBreak);
    return text;
}

void CustomTextEditor::setText(const QString& text) {
    if (this->text() == text)
        return;
    // Recorded first: whoever listens to textChanged reads the new text.
    m_edited = false;
    m_setText = text;
    m_lineBreak = QStringLiteral("\n");
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\r')
            m_lineBreak = text.mid(i, 2) == QStringLiteral("\r\n") ? QStringLiteral("\r\n") : QStringLiteral("\r");
        else if (c == u'\n' || c == QChar::ParagraphSeparator)
            m_lineBreak = c;
        else
            continue;
        break;
    }
    m_settingText = true;
    setPlainText(text);
    m_settingText = false;
}

void CustomTextEditor::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Tab && event->modifiers() == Qt::ControlModifier &&
        !isReadOnly()) {
        insertPlainText(QStringLiteral("\t"));
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}
