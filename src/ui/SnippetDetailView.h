#pragma once

#include "Snippet.h"

#include <QUuid>
#include <QWidget>

class QLabel;
class QPropertyAnimation;
class QPushButton;
class SnippetForm;
class SnippetStore;
class ToastView;

// The right-hand pane for the selected snippet: its fields (SnippetForm), then a row with
// "Delete" (deleteRequested(); the window asks first) and "Save" (enabled while a field
// differs from the stored record; Ctrl+Return). A save is refused with the store's message
// when another snippet uses the same command exactly; the snippet's own command never counts.
// A successful save shows "Changes saved successfully!" for two seconds. Escape puts the
// stored record back.
//
// The pane follows the store: when the snippet changes elsewhere (a cure chosen in another
// form, an import, another program), each field the user has not edited takes the new value
// and each edited one keeps the user's. A save writes only the fields the user changed, so it
// never takes back a change made elsewhere.
class SnippetDetailView : public QWidget {
    Q_OBJECT
public:
    static constexpr double toastDuration = 2.0; // seconds
    static constexpr const char* toastMessage = QT_TR_NOOP("Changes saved successfully!");

    SnippetDetailView(SnippetStore& store, const QUuid& snippetId, QWidget* parent = nullptr);

    // Shows another snippet. Edits not yet saved are dropped (the window settles them first).
    // Showing the snippet already shown changes nothing.
    void setSnippetId(const QUuid& id);
    QUuid snippetId() const { return m_snippetId; }
    // Puts the stored record back in the fields, dropping every edit.
    void revert();
    // Whether the edits are saved (also when there were none).
    bool save();

    // Says how often the shown snippet was used ("Used 12 times, last yesterday"), as
    // `describe` puts it for the snippet's id; without one the line stays hidden.
    void setUsageDescriber(std::function<QString(const QUuid&)> describe);
    // Asks again: the counts changed.
    void refreshUsage();
    QLabel* usageLine() const { return m_usageLine; }
    bool isEdited() const { return m_isEdited; }
    bool showingToast() const { return m_showingToast; }

    SnippetForm* form() const { return m_form; }
    QPushButton* saveButton() const { return m_saveButton; }
    QPushButton* deleteButton() const { return m_deleteButton; }
    ToastView* toast() const { return m_toast; }

signals:
    // The fields came to differ from the stored record, or no longer do.
    void editedChanged(bool edited);
    void toastVisibilityChanged(bool showing);
    void deleteRequested(const QUuid& snippetId);
    // The user saved the shown snippet (the store has announced it already).
    void saved(const QUuid& snippetId);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* m_usageLine = nullptr;
    std::function<QString(const QUuid&)> m_describeUsage;

    void load();
    void followStore();
    void updateEdited();
    void setShowingToast(bool showing);
    void placeToast(bool shown);

    SnippetStore& m_store;
    QUuid m_snippetId;
    // The record as the fields were last given it; what differs from it is the user's edit.
    Snippet m_base;
    bool m_isEdited = false;
    bool m_showingToast = false;

    SnippetForm* m_form;
    QLabel* m_editedMarker;
    QPushButton* m_deleteButton;
    QPushButton* m_saveButton;
    ToastView* m_toast;
    QPropertyAnimation* m_toastAnimation;
};
