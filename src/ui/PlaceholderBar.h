#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>
#include <optional>

class CustomTextEditor;
class QLabel;
class QToolButton;

// What a content editor shows about placeholders ({{date}}, {{cursor}}, ...): a button whose
// menu inserts one at the caret, a line previewing what the content types now (the clipboard's
// text for {{clipboard}}), and a warning for anything between double braces that is typed as
// written. The preview shows only for a content that placeholders change; it follows the
// editor as the user types, and the clock while the content shows the date or time. Both are
// one line each, so the form keeps its size: the warning names the first problem and how
// many there are, and its tooltip lists them all. A content with form fields has a line more:
// the fields its form asks for, in order.
//
// The form puts menuButton() beside its content field and this widget below it.
class PlaceholderBar : public QWidget {
    Q_OBJECT
public:
    explicit PlaceholderBar(CustomTextEditor* editor, QWidget* parent = nullptr);

    QToolButton* menuButton() const { return m_menuButton; }
    QString previewText() const;
    // The form's fields as the line under the preview lists them; empty without any.
    QString formText() const;
    // Every problem, one per line (the warning line's tooltip).
    QString warningText() const;
    bool isPreviewShown() const;
    bool isWarningShown() const;

    // Off while the editor shows only part of a content: a preview or warnings of that part
    // would mislead, and nothing can be inserted into it. Hides this widget, disables the button.
    void setAvailable(bool available);

    // Reads the editor's text again (also the clipboard's, when the content shows it).
    void refresh();

private:
    void insert(const QString& placeholder);
    // Inserts {{PREFIXNAMEREST}} with NAME selected.
    void insertField(const QString& prefix, const QString& name, const QString& rest);
    void askForDateFormat();
    std::optional<QString> clipboardText();

    CustomTextEditor* m_editor;
    QToolButton* m_menuButton;
    QWidget* m_previewRow;
    QLabel* m_preview;
    QWidget* m_formRow;
    QLabel* m_form;
    QLabel* m_warning;
    QString m_previewText;
    QString m_formText;
    QTimer m_clockTimer;
    // The clipboard's text as last read; read again after the clipboard changes.
    std::optional<std::optional<QString>> m_clipboard;
};
