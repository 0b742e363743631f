#pragma once

#include "ApplicationLimitEditor.h"
#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "Category.h"
#include "Snippet.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <optional>

class CategoryListModel;
class CategoryRowView;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QPushButton;
class QToolButton;
class QStackedWidget;
class SnippetStore;
class SnippetDetailView;
class SnippetFilterModel;
class SnippetListModel;

// The editor in the main window: categories on the left (250 wide), the snippets of the
// selected category with a search field in the middle (450 wide), and the selected snippet's
// editor on the right. It owns the selection, the search text, the dialogs that add snippets
// and categories, and the confirmation before a snippet is deleted.
//
// Selection rules: "All Snippets", the first row of the category list, stands for no category
// and is where the window starts. Selecting a snippet the list hides selects its category
// too; the detail pane never shows a snippet the list hides: a category or a search that would
// hide the snippet being edited asks first to save or discard the edits, and a cancelled
// question keeps the category or the search as it was. A category just added becomes the
// selection once its dialog has closed. A search in
// one category says how many snippets match in the others.
class ContentView : public QWidget {
    Q_OBJECT
public:
    static constexpr int sidebarWidth = 250;
    static constexpr int snippetColumnWidth = 450;

    explicit ContentView(SnippetStore& store, QWidget* parent = nullptr);
    ~ContentView() override;

    SnippetStore& store() const { return m_store; }

    // Where the category forms find the window classes of the windows open now; none (the
    // default) where the session cannot tell which application has the focus.
    void setOpenWindowClasses(ApplicationLimitEditor::WindowClasses openWindows);

    std::optional<Category> selectedCategory() const { return m_selectedCategory; }
    std::optional<Snippet> selectedSnippet() const { return m_selectedSnippet; }
    std::optional<Snippet> snippetToDelete() const { return m_snippetToDelete; }
    QString searchText() const { return m_searchText; }
    // The snippets the middle column shows, in order.
    QList<Snippet> filteredSnippets() const;

    void setSelectedCategory(std::optional<Category> category);
    void setSelectedSnippet(std::optional<Snippet> snippet);
    void setSearchText(const QString& text);

    // A dialog or message box that has closed may linger until its deferred deletion; it no
    // longer counts as shown.
    bool showingAddSnippetDialog() const {
        return m_addSnippetDialog && m_addSnippetDialog->isVisible();
    }
    bool showingAddCategoryDialog() const {
        return m_addCategoryDialog && m_addCategoryDialog->isVisible();
    }
    bool showingDeleteAlert() const { return m_deleteAlert && m_deleteAlert->isVisible(); }

    // Settles edits of the shown snippet that are not saved yet, before the user leaves it or
    // the program ends: saved at once when the user chose so, otherwise the user is asked to
    // save, discard or cancel. True when the user may go on (nothing is left unsaved).
    bool settleEdits();
    // Edits are saved without a question when the user leaves a snippet.
    void setSaveEditsOnLeave(bool save) { m_saveEditsOnLeave = save; }
    bool savesEditsOnLeave() const { return m_saveEditsOnLeave; }
    static QString unsavedTitle() { return tr("Unsaved Changes"); }

    void showAddSnippetDialog();
    void showAddCategoryDialog();
    // The snippets selected in the middle column (the shown one when none is).
    QList<QUuid> selectedSnippetIds() const;
    // Puts the selected snippets in the category.
    void moveSelection(const QUuid& categoryId);
    // The snippet list's context menu ("Move to", "Delete…"), for the selection as it is.
    QMenu* snippetMenu();
    // Deletes what is selected, after the question: the category while the category list has
    // the keyboard, otherwise the snippet.
    void deleteSelection();
    // Asks for confirmation before deleting the snippet with this id.
    void requestDelete(const QUuid& snippetId);

    // The parts tests and screenshots reach for.
    QListView* categoryList() const { return m_categoryList; }
    QListView* snippetList() const { return m_snippetList; }
    QLineEdit* searchField() const { return m_searchField; }
    QToolButton* addSnippetButton() const { return m_addSnippetButton; }
    QToolButton* addCategoryButton() const { return m_addCategoryButton; }
    QString title() const;
    CategoryRowView* categoryRow(const QUuid& categoryId) const;
    // How often a snippet was used, in words, for the detail pane (see SnippetDetailView).
    void setUsageDescriber(std::function<QString(const QUuid&)> describe);
    // The counts changed: the detail pane says so again.
    void refreshUsage();
    SnippetDetailView* detailView() const { return m_detailView; }
    bool showingDetailPlaceholder() const;
    AddSnippetDialog* addSnippetDialog() const { return m_addSnippetDialog; }
    AddCategoryDialog* addCategoryDialog() const { return m_addCategoryDialog; }
    QMessageBox* deleteAlert() const { return m_deleteAlert; }

    // "N more in other categories" under a search in one category; selects "All Snippets".
    QPushButton* elsewhereButton() const { return m_elsewhereButton; }
    // Snippets that match the search outside the selected category.
    int matchesElsewhere() const;

signals:
    void selectionChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ApplicationLimitEditor::WindowClasses m_openWindowClasses;
    // Shows a problem with the library file above everything else, until the window closes.
    void showProblem(const QString& text);
    void showLoadProblem();
    QWidget* buildSidebar();
    QWidget* buildSnippetColumn();
    QWidget* buildDetailPane();

    void deleteConfirmed();
    void categoriesChanged();
    void snippetsChanged();
    void rebuildCategoryRows();
    void updateCategoryCounts();
    void syncCategorySelection();
    void syncSnippetSelection();
    void updateDetailPane();
    void showSnippetMenu(const QPoint& globalPosition);
    void requestDeleteMany(const QList<QUuid>& ids);
    bool isShown(const Snippet& snippet) const;
    void dropHiddenSnippet();
    void updateElsewhereCount();
    void updatePlaceholder();
    void userSelectedCategory();
    void userSelectedSnippet();
    // Once the edits are settled (asked after the click that left them has finished), `go`.
    void leaveEditsThen(std::function<void()> go);

    SnippetStore& m_store;
    CategoryListModel* m_categoryModel;
    SnippetListModel* m_snippetModel;
    SnippetFilterModel* m_filterModel;

    std::optional<Category> m_selectedCategory;
    std::optional<Snippet> m_selectedSnippet;
    std::optional<Snippet> m_snippetToDelete;
    QString m_searchText;
    bool m_syncing = false; // selection is being set by the program, not the user
    bool m_saveEditsOnLeave = false;

    QListView* m_categoryList = nullptr;
    QToolButton* m_addCategoryButton = nullptr;
    QLabel* m_title = nullptr;
    QString m_titleText;
    QLineEdit* m_searchField = nullptr;
    QToolButton* m_addSnippetButton = nullptr;
    QListView* m_snippetList = nullptr;
    QPushButton* m_elsewhereButton = nullptr;
    QStackedWidget* m_detailStack = nullptr;
    QLabel* m_detailPlaceholder = nullptr;
    QLabel* m_problemBanner = nullptr;
    bool m_saveProblem = false; // the banner says a save failed
    SnippetDetailView* m_detailView = nullptr;
    std::function<QString(const QUuid&)> m_describeUsage;

    QPointer<AddSnippetDialog> m_addSnippetDialog;
    QPointer<AddCategoryDialog> m_addCategoryDialog;
    QPointer<QMessageBox> m_deleteAlert;
};
