#pragma once

#include "Snippet.h"

#include <QUuid>
#include <QWidget>
#include <optional>

class CustomTextEditor;
class QCheckBox;
class PlaceholderBar;
class QComboBox;
class QLabel;
class QLineEdit;
class SnippetStore;
class TriggerOption;

// The fields of one snippet, the same in the "New Snippet" dialog and in the detail pane: the
// command, the line that says it is taken, the content with its placeholder menu and preview,
// then the options (expand only after a word ends, with the clash warning and its cure; match
// the command's case) and the category. Tab goes through them in that order, the order they are read in.
//
// Setting a field from the program is not an edit; edited() reports only what the user does.
class SnippetForm : public QWidget {
    Q_OBJECT
public:
    // Longer contents, or contents with a longer line, are shown in part and cannot be edited
    // here: laying out megabytes of text, or one line of a few hundred thousand characters,
    // would freeze the window (and the engine with it) for seconds.
    static constexpr qsizetype editableContentLimit = 1000000;
    static constexpr qsizetype editableLineLimit = 20000;

    explicit SnippetForm(SnippetStore& store, QWidget* parent = nullptr);

    // The snippet the form belongs to (null for a new one): its own command never clashes.
    void setSnippetId(const QUuid& id);

    QString command() const;
    void setCommand(const QString& command);
    // The whole content, also while the editor shows only its start.
    QString content() const;
    void setContent(const QString& content);
    bool contentIsCut() const { return m_cutContent.has_value(); }
    Snippet::Trigger trigger() const;
    void setTrigger(Snippet::Trigger trigger);
    // "Match the command's case".
    bool matchCase() const;
    void setMatchCase(bool matchCase);
    QUuid categoryId() const;
    // The category shown; also the one shown again when a chosen category is deleted.
    void setCategoryId(const QUuid& id);

    // The refusal under the command; the next edit of the command takes it back.
    void showCommandError(const QString& message);
    bool showingCommandError() const;

    QLineEdit* commandField() const { return m_commandField; }
    CustomTextEditor* contentEditor() const { return m_contentEditor; }
    TriggerOption* triggerOption() const { return m_triggerOption; }
    QCheckBox* matchCaseBox() const { return m_matchCase; }
    QComboBox* categoryBox() const { return m_categoryBox; }
    PlaceholderBar* placeholderBar() const { return m_placeholders; }
    // The form's last stop for Tab; what follows the form comes after it.
    QWidget* lastControl() const;

signals:
    // The user changed a field (typing, the option, the category, a cure chosen or forgotten).
    void edited();

private:
    void fillCategories();
    static bool isEditable(const QString& content);

    SnippetStore& m_store;
    QUuid m_snippetId;
    QUuid m_shownCategory;
    // The whole stored content while the editor shows only its start.
    std::optional<QString> m_cutContent;

    QLineEdit* m_commandField;
    QWidget* m_commandError;
    QLabel* m_commandErrorText;
    CustomTextEditor* m_contentEditor;
    PlaceholderBar* m_placeholders;
    QLabel* m_cutContentNote;
    TriggerOption* m_triggerOption;
    QCheckBox* m_matchCase;
    QComboBox* m_categoryBox;
};
