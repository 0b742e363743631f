#pragma once

#include "Category.h"

#include <QDialog>
#include <functional>

class FocusableTextField;
class InputFieldFrame;
class PlainButton;
class QPushButton;
class SnippetStore;

// The "New Category" sheet (440 x 280): a name, required. The store decides duplicates
// (letter case ignored, spaces kept), shown as "A category with this name already exists"
// until the name is edited. On success `onAdd` receives the new category and the sheet
// closes. Escape cancels, Ctrl+Return adds.
class AddCategoryDialog : public QDialog {
    Q_OBJECT
public:
    using AddHandler = std::function<void(const Category& category)>;

    static constexpr int sheetWidth = 440;
    static constexpr int sheetHeight = 280;

    AddCategoryDialog(SnippetStore& store, AddHandler onAdd, QWidget* parent = nullptr);

    QString name() const;
    bool showingDuplicateError() const { return m_showingDuplicateError; }
    bool isNameFieldFocused() const { return m_isNameFieldFocused; }

    FocusableTextField* nameField() const { return m_nameField; }
    InputFieldFrame* nameFrame() const { return m_nameFrame; }
    QPushButton* addButton() const { return m_addButton; }
    PlainButton* cancelButton() const { return m_cancelButton; }

    void add();

private:
    void setShowingDuplicateError(bool showing);

    SnippetStore& m_store;
    AddHandler m_onAdd;
    bool m_showingDuplicateError = false;
    bool m_isNameFieldFocused = false;

    FocusableTextField* m_nameField;
    InputFieldFrame* m_nameFrame;
    QWidget* m_errorRow;
    PlainButton* m_cancelButton;
    QPushButton* m_addButton;
};
