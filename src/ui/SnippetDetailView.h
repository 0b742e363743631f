#pragma once

#include "Snippet.h"

#include <QUuid>
#include <QWidget>
#include <functional>
#include <optional>

class CustomTextEditor;
class QComboBox;
class PlaceholderBar;
class PlainButton;
class QLabel;
class QLineEdit;
class QPropertyAnimation;
class QPushButton;
class SnippetStore;
class ToastView;
class TriggerOption;

// The right-hand pane for the selected snippet: its command and content in editable fields,
// "Save" (enabled while the texts or the option differ from the stored ones; Ctrl+Return) and
// "Delete" (handed back to the window, which asks for confirmation). A save is refused with
// "This command already exists" when another snippet uses the same command exactly; the
// snippet's own command never counts. A successful save shows "Changes saved successfully!"
// for two seconds. Escape puts the stored texts back.
//
// The pane always shows the store's current record: when the snippet changes elsewhere (a
// cure chosen in another form, an import, another program), each field the user has not
// edited takes the new value and each edited one keeps the user's. A save writes only the
// fields the user changed, so it never takes back a change made elsewhere.
class SnippetDetailView : public QWidget {
    Q_OBJECT
public:
    using UpdateHandler = std::function<void(const QString& command, const QString& content)>;
    using DeleteHandler = std::function<void()>;

    static constexpr double toastDuration = 2.0; // seconds
    // Longer contents, or contents with a longer line, are shown in part and cannot be edited
    // here: laying out megabytes of text, or one line of a few hundred thousand characters,
    // would freeze the window (and the engine with it) for seconds.
    static constexpr qsizetype editableContentLimit = 1000000;
    static constexpr qsizetype editableLineLimit = 20000;
    static constexpr const char* toastMessage = QT_TR_NOOP("Changes saved successfully!");

    SnippetDetailView(SnippetStore& store, const Snippet& snippet,
                       UpdateHandler onUpdate, DeleteHandler onDelete, QWidget* parent = nullptr);

    // Shows another snippet. Edits not yet saved are dropped (the window settles them first):
    // the texts come from the store. Showing the snippet already shown changes nothing.
    void setSnippet(const Snippet& snippet);
    // Puts the stored record back in the fields, dropping every edit.
    void revert();

    QUuid snippetId() const { return m_snippetId; }
    QString command() const;
    QString content() const;
    bool isEdited() const { return m_isEdited; }
    bool showingDuplicateError() const { return m_showingDuplicateError; }
    bool showingToast() const { return m_showingToast; }
    // The content is longer than the editor takes: it shows the start, read-only.
    bool contentIsCut() const { return m_cutContent.has_value(); }

    QLineEdit* commandField() const { return m_commandField; }
    TriggerOption* triggerOption() const { return m_triggerOption; }
    // The snippet's category: choosing another one is an edit, saved with the texts.
    QComboBox* categoryBox() const { return m_categoryBox; }
    QUuid categoryId() const;
    CustomTextEditor* contentEditor() const { return m_contentEditor; }
    QPushButton* saveButton() const { return m_saveButton; }
    PlainButton* deleteButton() const { return m_deleteButton; }
    ToastView* toast() const { return m_toast; }
    PlaceholderBar* placeholderBar() const { return m_placeholders; }

    // Whether the edits are saved (also when there were none).
    bool save();

    // Says how often the shown snippet was used ("Used 12 times, last yesterday"), as
    // `describe` puts it for the snippet's id; without one the line stays hidden.
    void setUsageDescriber(std::function<QString(const QUuid&)> describe);
    // Asks again: the counts changed.
    void refreshUsage();
    QLabel* usageLine() const { return m_usageLine; }

signals:
    // The fields came to differ from the stored record, or no longer do.
    void editedChanged(bool edited);
    // The toast appeared or went away.
    void toastVisibilityChanged(bool showing);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* m_usageLine = nullptr;
    std::function<QString(const QUuid&)> m_describeUsage;

    void load();
    void followStore();
    void fillCategories();
    void showCategory(const QUuid& id);
    void updateEdited();
    void showContent(const QString& content);
    static bool isEditable(const QString& content);
    void reload();
    void setShowingDuplicateError(bool showing);
    void setShowingToast(bool showing);
    void placeToast(bool shown);
    int toastTop() const;

    SnippetStore& m_store;
    QUuid m_snippetId;
    // The record as the fields were last given it; what differs from it is the user's edit.
    Snippet m_base;
    UpdateHandler m_onUpdate;
    DeleteHandler m_onDelete;
    bool m_isEdited = false;
    bool m_showingDuplicateError = false;
    bool m_showingToast = false;
    bool m_loading = false;

    QLineEdit* m_commandField;
    QLabel* m_duplicateError;
    TriggerOption* m_triggerOption;
    QComboBox* m_categoryBox;
    CustomTextEditor* m_contentEditor;
    QLabel* m_cutContentNote;
    PlaceholderBar* m_placeholders;
    // The whole stored content while the editor shows only its start.
    std::optional<QString> m_cutContent;
    QLabel* m_editedMarker;
    QPushButton* m_saveButton;
    PlainButton* m_deleteButton;
    ToastView* m_toast;
    QPropertyAnimation* m_toastAnimation;
};
