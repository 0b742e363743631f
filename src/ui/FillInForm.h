#pragma once

#include "PlaceholderText.h"
#include "RecentFieldValues.h"
#include "Snippet.h"

#include <QHash>
#include <QList>
#include <QWidget>

class QDialogButtonBox;
class QFormLayout;
class QLabel;

// The small form a content with fields ({{field:Name}}, {{area:Name}}, {{choice:Label=a|b}})
// opens before it is typed: one input per distinct name, filled with the values given last
// (within a day) or the defaults.
//
// Keys: Tab and Shift+Tab go from field to field; Return finishes (in a field of several lines
// it starts a new line, and Ctrl+Return finishes); Escape closes with nothing typed. The form
// types nothing itself: it hides and then says what was chosen, so that the application's
// window can have the focus back first.
class FillInForm : public QWidget {
    Q_OBJECT
public:
    explicit FillInForm(RecentFieldValues::Clock clock = {}, QWidget* parent = nullptr);

    // Shows the fields of `snippet`'s content, centred on the screen that holds `around` (the
    // window the user was typing in), and puts the keyboard in the first.
    void present(const Snippet& snippet, const QRect& around = {});
    // Shows the form again with `note` in place of its fields (what happened to the last
    // answer); Return or Escape then only closes it.
    void showNote(const QString& note);

    // The inputs, in the order of the content (QLineEdit, QComboBox or QPlainTextEdit).
    const QList<QWidget*>& inputs() const { return m_inputs; }
    QString noteText() const;
    // What each field holds now, by name.
    QHash<QString, QString> values() const;

signals:
    // Return: the values, by name; the form has closed.
    void filled(const QHash<QString, QString>& values);
    // Escape or the window's close button: closed with nothing chosen.
    void dismissed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void clearFields();
    void finish();

    RecentFieldValues m_recent;
    QUuid m_snippet;
    QList<PlaceholderText::FormField> m_fields;
    QList<QWidget*> m_inputs;
    QWidget* m_fieldArea;
    QFormLayout* m_fieldLayout;
    QLabel* m_note;
    QDialogButtonBox* m_buttons;
    bool m_answered = true; // a shown form is answered once; closing afterwards says nothing
};
