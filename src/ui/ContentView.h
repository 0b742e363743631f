#pragma once

#include "AddCategoryView.h"
#include "AddShortcutView.h"
#include "Category.h"
#include "Shortcut.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>
#include <optional>

class CategoryListModel;
class CategoryRowView;
class ElidedLabel;
class PlainButton;
class QLabel;
class QLineEdit;
class QListView;
class QStackedWidget;
class ShortcutDataManager;
class ShortcutDetailView;
class ShortcutFilterModel;
class ShortcutListModel;

// The editor in the main window: categories on the left (250 wide), the snippets of the
// selected category with a search field in the middle (450 wide), and the selected snippet's
// editor on the right. It owns the selection, the search text, the sheets that add snippets
// and categories, and the confirmation before a snippet is deleted.
//
// Selection rules: selecting a snippet selects its category too (none when the category does
// not exist, which shows "All Snippets"); when shown with no category selected the first one
// is selected; a category just added becomes the selection once its sheet has closed.
class ContentView : public QWidget {
    Q_OBJECT
public:
    static constexpr int sidebarWidth = 250;
    static constexpr int snippetColumnWidth = 450;

    explicit ContentView(ShortcutDataManager& dataManager, QWidget* parent = nullptr);
    ~ContentView() override;

    ShortcutDataManager& dataManager() const { return m_dataManager; }

    CategoryRef selectedCategory() const { return m_selectedCategory; }
    std::optional<Shortcut> selectedShortcut() const { return m_selectedShortcut; }
    std::optional<Shortcut> shortcutToDelete() const { return m_shortcutToDelete; }
    QString searchText() const { return m_searchText; }
    // The snippets the middle column shows, in order.
    QList<Shortcut> filteredShortcuts() const;

    void setSelectedCategory(CategoryRef category);
    void setSelectedShortcut(std::optional<Shortcut> shortcut);
    void setSearchText(const QString& text);

    // A sheet or alert that has closed may linger until its deferred deletion; it no longer
    // counts as shown.
    bool showingAddSheet() const { return m_addSheet && m_addSheet->isVisible(); }
    bool showingAddCategorySheet() const {
        return m_addCategorySheet && m_addCategorySheet->isVisible();
    }
    bool showingDeleteAlert() const { return m_deleteAlert && m_deleteAlert->isVisible(); }

    void showAddSheet();
    void showAddCategorySheet();
    // Asks for confirmation before deleting the snippet with this id.
    void requestDelete(const QUuid& shortcutId);

    // The parts tests and screenshots reach for.
    QListView* categoryList() const { return m_categoryList; }
    QListView* shortcutList() const { return m_shortcutList; }
    QLineEdit* searchField() const { return m_searchField; }
    PlainButton* addSnippetButton() const { return m_addSnippetButton; }
    PlainButton* addCategoryButton() const { return m_addCategoryButton; }
    QString title() const;
    CategoryRowView* categoryRow(const QUuid& categoryId) const;
    ShortcutDetailView* detailView() const { return m_detailView; }
    bool showingDetailPlaceholder() const;
    AddShortcutView* addSheet() const { return m_addSheet; }
    AddCategoryView* addCategorySheet() const { return m_addCategorySheet; }
    QMessageBox* deleteAlert() const { return m_deleteAlert; }

signals:
    void selectionChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // Shows a problem with the library file above everything else, until the window closes.
    void showProblem(const QString& text);
    QWidget* buildSidebar();
    QWidget* buildSnippetColumn();
    QWidget* buildDetailPane();

    void deleteConfirmed();
    void updateFromDetail();
    void categoriesChanged();
    void shortcutsChanged();
    void rebuildCategoryRows();
    void updateCategoryCounts();
    void syncCategorySelection();
    void syncShortcutSelection();
    void updateDetailPane();
    void userSelectedCategory();
    void userSelectedShortcut();

    ShortcutDataManager& m_dataManager;
    CategoryListModel* m_categoryModel;
    ShortcutListModel* m_shortcutModel;
    ShortcutFilterModel* m_filterModel;

    CategoryRef m_selectedCategory;
    std::optional<Shortcut> m_selectedShortcut;
    std::optional<Shortcut> m_shortcutToDelete;
    QString m_searchText;
    bool m_syncing = false; // selection is being set by the program, not the user

    QListView* m_categoryList = nullptr;
    PlainButton* m_addCategoryButton = nullptr;
    ElidedLabel* m_title = nullptr;
    QLineEdit* m_searchField = nullptr;
    PlainButton* m_addSnippetButton = nullptr;
    QListView* m_shortcutList = nullptr;
    QStackedWidget* m_detailStack = nullptr;
    QLabel* m_detailPlaceholder = nullptr;
    QLabel* m_problemBanner = nullptr;
    ShortcutDetailView* m_detailView = nullptr;

    QPointer<AddShortcutView> m_addSheet;
    QPointer<AddCategoryView> m_addCategorySheet;
    QPointer<QMessageBox> m_deleteAlert;
};
