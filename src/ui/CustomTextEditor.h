#pragma once

#include <QPlainTextEdit>

// The multi-line editor for snippet content (Tab leaves it, Ctrl+Tab types a tab): plain text only (pasted styled text arrives as
// plain text), undo and redo, lines wrapped at the editor's width so there is never a
// horizontal scroller, a vertical scroller only while the text is taller than the editor, and
// no border or background of its own (the form draws those). The text sits 8 pixels below the
// top and above the bottom, flush with the sides.
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
    static constexpr int verticalInset = 8;

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
    void applyPalette();
    bool m_settingText = false;
    bool m_edited = false;
    QString m_setText;
    QString m_lineBreak = QStringLiteral("\n");
};
