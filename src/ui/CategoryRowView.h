#pragma once

#include "Category.h"
#include "EditCategoryDialog.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

class ElidedLabel;
class PlainButton;
class SymbolView;
class SnippetStore;

// One row of the category sidebar: a folder symbol, the name and "<count> snippets", and,
// except for the built-in and reserved categories, an edit and a delete symbol. The row owns
// its rename sheet and its delete confirmation. On the selected row every symbol is white.
class CategoryRowView : public QWidget {
    Q_OBJECT
public:
    CategoryRowView(SnippetStore& store, Category category, int snippetCount,
                    QWidget* parent = nullptr);

    Category category() const { return m_category; }
    int snippetCount() const { return m_snippetCount; }
    void setSnippetCount(int count);

    bool isSelected() const { return m_isSelected; }
    void setSelected(bool selected);
    bool isProtected() const;

    // The count line as shown, e.g. "1 snippets".
    QString countText() const;
    // The delete confirmation's message for the current name and count.
    QString deleteMessage() const;

    bool showingEditSheet() const { return m_editSheet && m_editSheet->isVisible(); }
    bool showingDeleteAlert() const { return m_deleteAlert && m_deleteAlert->isVisible(); }

    SymbolView* folderSymbol() const { return m_folder; }
    PlainButton* editButton() const { return m_editButton; }
    PlainButton* deleteButton() const { return m_deleteButton; }
    EditCategoryDialog* editSheet() const { return m_editSheet; }
    QMessageBox* deleteAlert() const { return m_deleteAlert; }

    void showEditSheet();
    void showDeleteAlert();

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyColors();

    SnippetStore& m_store;
    Category m_category;
    int m_snippetCount;
    bool m_isSelected = false;

    SymbolView* m_folder;
    ElidedLabel* m_name;
    ElidedLabel* m_count;
    PlainButton* m_editButton = nullptr;
    PlainButton* m_deleteButton = nullptr;
    QPointer<EditCategoryDialog> m_editSheet;
    QPointer<QMessageBox> m_deleteAlert;
};
