#pragma once

#include <QPlainTextEdit>

// The multi-line editor for snippet content (Tab leaves it, Ctrl+Tab types a tab): plain text only (pasted styled text arrives as
// plain text), undo and redo, lines wrapped at the editor's width so there is never a
// horizontal scroller, and a vertical scroller only while the text is taller than the editor.
//
// setText() writes only when the text differs, so giving the editor the text it already shows
// keeps the cursor and the selection where the user left them.
//
// text() gives back every character: until the user changes anything, exactly the text that
// was set; after a change, the document's characters as they stand (no-break spaces, line
// separators and tabs included, which toPlainText() would rewrite), with each line break
// written the way the text that was set wrote its first one (CR LF stays CR LF).
class CustomTextEditor : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit CustomTextEditor(QWidget* parent = nullptr);

    QString text() const;
    void setText(const QString& text);

protected:
    // Tab moves on to the next control; Ctrl+Tab types a tab character.
    void keyPressEvent(QKeyEvent* event) override;

signals:
    // The user changed the text (typing, pasting, undo); not emitted by setText().
    void textEdited(const QString& text);

private:
    bool m_settingText = false;
    bool m_edited = false;
    QString m_setText;
    QString m_lineBreak = QStringLiteral("\n");
};
