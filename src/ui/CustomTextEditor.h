#pragma once

#include <QPlainTextEdit>

// The multi-line editor for snippet content: plain text only (pasted styled text arrives as
// plain text), undo and redo, lines wrapped at the editor's width so there is never a
// horizontal scroller, a vertical scroller only while the text is taller than the editor, and
// no border or background of its own (the form draws those). The text sits 8 pixels below the
// top and above the bottom, flush with the sides.
//
// setText() writes only when the text differs, so giving the editor the text it already shows
// keeps the cursor and the selection where the user left them.
class CustomTextEditor : public QPlainTextEdit {
    Q_OBJECT
public:
    static constexpr int verticalInset = 8;

    explicit CustomTextEditor(QWidget* parent = nullptr);

    QString text() const { return toPlainText(); }
    void setText(const QString& text);

signals:
    // The user changed the text (typing, pasting, undo); not emitted by setText().
    void textEdited(const QString& text);

private:
    void applyPalette();
    bool m_settingText = false;
};
