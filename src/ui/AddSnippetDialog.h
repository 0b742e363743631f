#pragma once

#include "Snippet.h"

#include <QDialog>
#include <QUuid>
#include <functional>

class CustomTextEditor;
class FocusableTextField;
class InputFieldFrame;
class PlaceholderBar;
class PlainButton;
class QLabel;
class QPushButton;
class SnippetStore;
class TriggerOption;

// The "New Snippet" sheet: a command and a content, both required. A command that an
// existing snippet already uses (exactly, letter case counts) is refused with "This command
// already exists" until the command is edited. On success the snippet, with both texts exactly
// as typed, is in the store (in the category given) and is handed to `onAdded`; the sheet
// closes. Escape cancels, Ctrl+Return adds; Return alone never submits (it belongs to the
// content editor).
class AddSnippetDialog : public QDialog {
    Q_OBJECT
public:
    using AddedHandler = std::function<void(const Snippet& added)>;

    static constexpr int sheetWidth = 480;
    static constexpr int sheetHeight = 480; // at least

    AddSnippetDialog(SnippetStore& store, const QUuid& categoryId, AddedHandler onAdded,
                    QWidget* parent = nullptr);

    QString command() const;
    QString content() const;
    TriggerOption* triggerOption() const { return m_triggerOption; }
    bool showingDuplicateError() const { return m_showingDuplicateError; }
    bool isCommandFieldFocused() const { return m_isCommandFieldFocused; }

    FocusableTextField* commandField() const { return m_commandField; }
    CustomTextEditor* contentEditor() const { return m_contentEditor; }
    QPushButton* addButton() const { return m_addButton; }
    PlainButton* cancelButton() const { return m_cancelButton; }
    PlaceholderBar* placeholderBar() const { return m_placeholders; }

private:
    void add();
    void setShowingDuplicateError(bool showing);
    void updateState();
    void fitHeight();

    SnippetStore& m_store;
    QUuid m_categoryId;
    AddedHandler m_onAdded;
    bool m_showingDuplicateError = false;
    bool m_isCommandFieldFocused = false;

    FocusableTextField* m_commandField;
    InputFieldFrame* m_commandFrame;
    QWidget* m_errorRow;
    TriggerOption* m_triggerOption;
    CustomTextEditor* m_contentEditor;
    QLabel* m_contentPlaceholder;
    PlaceholderBar* m_placeholders;
    PlainButton* m_cancelButton;
    QPushButton* m_addButton;
};
