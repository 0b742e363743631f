#include "ContentView.h"

#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "CategoryListModel.h"
#include "CategoryRowDelegate.h"
#include "CategoryRowView.h"
#include "MessageBoxes.h"
#include "SnippetStore.h"
#include "StoreMessages.h"
#include "SnippetDetailView.h"
#include "SnippetFilterModel.h"
#include "SnippetForm.h"
#include "SnippetListModel.h"
#include "SnippetRowDelegate.h"
#include "SymbolImage.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QToolButton>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <limits>

namespace {
constexpr int headerHorizontalPadding = 16;
constexpr int headerVerticalPadding = 8;

QToolButton* iconButton(const QString& iconName, const QString& label, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(SymbolImage::icon(iconName));
    button->setText(label);
    button->setToolTip(label);
    button->setAccessibleName(label);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

QFrame* line(Qt::Orientation orientation, QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setFrameShape(orientation == Qt::Vertical ? QFrame::VLine : QFrame::HLine);
    frame->setFrameShadow(QFrame::Sunken);
    return frame;
}

void styleList(QListView* list) {
    list->setFrameShape(QFrame::NoFrame);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setUniformItemSizes(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setMouseTracking(true);
    list->viewport()->setAttribute(Qt::WA_Hover);
    // The lists sit on the window background like a sidebar, not in a white well (by role,
    // so a switch between light and dark follows).
    list->viewport()->setBackgroundRole(QPalette::Window);
}
} // namespace

ContentView::ContentView(SnippetStore& store, QWidget* parent)
    : QWidget(parent), m_store(store),
      m_categoryModel(new CategoryListModel(store, this)),
      m_snippetModel(new SnippetListModel(store, this)),
      m_filterModel(new SnippetFilterModel(*m_snippetModel, this)) {
    setObjectName(QStringLiteral("contentView"));
    // Marked while the shown snippet has edits not yet saved (also as a window of its own).
    setWindowTitle(QStringLiteral("Typolet[*]"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    // Problems with the library file: records that could not be read, a save that failed.
    m_problemBanner = new QLabel(this);
    m_problemBanner->setObjectName(QStringLiteral("problemBanner"));
    m_problemBanner->setWordWrap(true);
    m_problemBanner->setTextFormat(Qt::RichText);
    m_problemBanner->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse |
                                             Qt::LinksAccessibleByKeyboard);
    m_problemBanner->setContentsMargins(12, 8, 12, 8);
    // The desktop's own colours for a note that stands apart from the window.
    m_problemBanner->setAutoFillBackground(true);
    m_problemBanner->setBackgroundRole(QPalette::ToolTipBase);
    m_problemBanner->setForegroundRole(QPalette::ToolTipText);
    m_problemBanner->setVisible(false);
    outer->addWidget(m_problemBanner);
    // The link offered while damaged records have no copy anywhere: saving writes over them.
    connect(m_problemBanner, &QLabel::linkActivated, this, [this] {
        m_saveProblem = false;
        m_problemBanner->setVisible(false);
        m_store.saveOverDamagedRecords();
    });
    showLoadProblem();
    connect(&m_store, &SnippetStore::saveFailed, this, [this](const DataError& error) {
        QString text = tr("Your last change is kept in Typolet but is not on disk yet. %1")
                           .arg(StoreMessages::text(error).toHtmlEscaped());
        if (m_store.damagedRecordsUnkept())
            text += QStringLiteral(" <a href=\"save\">%1</a>").arg(tr("Save anyway"));
        m_saveProblem = true;
        showProblem(text);
    });
    connect(&m_store, &SnippetStore::allSaved, this, [this] {
        if (!m_saveProblem)
            return;
        m_saveProblem = false;
        m_problemBanner->setVisible(false);
        showLoadProblem();
    });
    auto* root = new QHBoxLayout;
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);
    outer->addLayout(root, 1);
    root->addWidget(buildSidebar());
    root->addWidget(line(Qt::Vertical, this));
    root->addWidget(buildSnippetColumn());
    root->addWidget(line(Qt::Vertical, this));
    root->addWidget(buildDetailPane(), 1);
    setMinimumSize(sidebarWidth + snippetColumnWidth + 2 + 340, 420);

    // The models hear about store changes first (they connected first), so these handlers
    // see the new rows.
    connect(&m_store, &SnippetStore::categoriesChanged, this,
            &ContentView::categoriesChanged);
    connect(&m_store, &SnippetStore::snippetsChanged, this,
            &ContentView::snippetsChanged);
    connect(m_categoryModel, &QAbstractItemModel::dataChanged, this,
            &ContentView::updateCategoryCounts);

    rebuildCategoryRows();
    updatePlaceholder();
    setSelectedCategory({});
}

ContentView::~ContentView() = default;

void ContentView::showLoadProblem() {
    if (const QString why = m_store.loadError(); !why.isEmpty()) {
        showProblem(tr("Typolet cannot read your library, %1: %2. Nothing is written over it "
                       "until it can be read; changes you make meanwhile are kept in Typolet.")
                        .arg(m_store.settingsPath().toHtmlEscaped(), why.toHtmlEscaped()));
        return;
    }
    const int unreadable = m_store.unreadableRecords();
    if (unreadable == 0)
        return;
    if (!m_store.backupPath().isEmpty()) {
        showProblem(tr("%n record(s) in your library could not be read and are not shown. The "
                       "file as it was is kept in %1.",
                       nullptr, unreadable)
                        .arg(m_store.backupPath().toHtmlEscaped()));
        return;
    }
    showProblem(tr("%n record(s) in your library could not be read and are not shown, and no "
                   "copy of the file could be kept (is the disk full?). Nothing is saved over "
                   "them until a copy can be kept, or you <a href=\"save\">save anyway</a>.",
                   nullptr, unreadable));
}

void ContentView::showProblem(const QString& text) {
    m_problemBanner->setText(text);
    m_problemBanner->setVisible(true);
}

QWidget* ContentView::buildSidebar() {
    auto* sidebar = new QWidget(this);
    sidebar->setObjectName(QStringLiteral("sidebar"));
    sidebar->setFixedWidth(sidebarWidth);
    auto* column = new QVBoxLayout(sidebar);
    column->setContentsMargins(0, 0, 0, 0);

    auto* header = new QHBoxLayout();
    header->setContentsMargins(headerHorizontalPadding, headerVerticalPadding,
                               headerHorizontalPadding, headerVerticalPadding);
    auto* title = new QLabel(tr("Categories"), sidebar);
    title->setFont(UiTheme::titleFont());
    header->addWidget(title);
    header->addStretch();
    m_addCategoryButton = iconButton(QStringLiteral("folder-new"), tr("Add Category"), sidebar);
    m_addCategoryButton->setObjectName(QStringLiteral("addCategoryButton"));
    header->addWidget(m_addCategoryButton);
    column->addLayout(header);

    m_categoryList = new QListView(sidebar);
    m_categoryList->setAccessibleName(tr("Categories"));
    // Snippets dragged from the middle column land on a category.
    m_categoryList->setDragDropMode(QAbstractItemView::DropOnly);
    m_categoryList->setDropIndicatorShown(true);
    // Delete deletes the category after the question, F2 renames it.
    m_categoryList->installEventFilter(this);
    m_categoryList->setObjectName(QStringLiteral("categoryList"));
    styleList(m_categoryList);
    m_categoryList->setItemDelegate(new CategoryRowDelegate(m_categoryList));
    m_categoryList->setModel(m_categoryModel);
    column->addWidget(m_categoryList, 1);

    connect(m_addCategoryButton, &QAbstractButton::clicked, this,
            &ContentView::showAddCategoryDialog);
    connect(m_categoryList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ContentView::userSelectedCategory);
    connect(m_categoryModel, &QAbstractItemModel::modelReset, this, [this] {
        rebuildCategoryRows();
        syncCategorySelection();
    });
    return sidebar;
}

QWidget* ContentView::buildSnippetColumn() {
    auto* panel = new QWidget(this);
    panel->setObjectName(QStringLiteral("snippetColumn"));
    panel->setFixedWidth(snippetColumnWidth);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);

    auto* header = new QHBoxLayout();
    header->setContentsMargins(headerHorizontalPadding, headerVerticalPadding,
                               headerHorizontalPadding, headerVerticalPadding);
    header->setSpacing(8);
    m_title = new QLabel(panel);
    m_title->setObjectName(QStringLiteral("title"));
    m_title->setFont(UiTheme::titleFont());
    m_title->setTextFormat(Qt::PlainText);
    // A long name is cut at the edge, never widening the column.
    m_title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    header->addWidget(m_title, 1);
    m_searchField = new QLineEdit(panel);
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setPlaceholderText(tr("Search snippets"));
    m_searchField->setMaximumWidth(200);
    m_searchField->setMaxLength(std::numeric_limits<int>::max());
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setAccessibleName(tr("Search snippets"));
    for (QToolButton* clear : m_searchField->findChildren<QToolButton*>())
        clear->setAccessibleName(tr("Clear search"));
    // Escape clears the search, Down goes on into the results.
    m_searchField->installEventFilter(this);
    header->addWidget(m_searchField);
    m_addSnippetButton =
        iconButton(QStringLiteral("list-add"), tr("Add Snippet"), panel);
    m_addSnippetButton->setObjectName(QStringLiteral("addSnippetButton"));
    header->addWidget(m_addSnippetButton);
    column->addLayout(header);

    m_snippetList = new QListView(panel);
    m_snippetList->setAccessibleName(tr("Snippets"));
    m_snippetList->setDragDropMode(QAbstractItemView::DragOnly);
    m_snippetList->setDefaultDropAction(Qt::MoveAction);
    m_snippetList->setContextMenuPolicy(Qt::CustomContextMenu);
    m_snippetList->installEventFilter(this); // Delete
    connect(m_snippetList, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { showSnippetMenu(m_snippetList->viewport()->mapToGlobal(at)); });
    m_snippetList->setObjectName(QStringLiteral("snippetList"));
    styleList(m_snippetList);
    // Several at once (Ctrl, Shift) to drag onto a category or move from the context menu.
    m_snippetList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_snippetList->setItemDelegate(
        new SnippetRowDelegate([this](const QUuid& id) { requestDelete(id); }, m_snippetList));
    m_snippetList->setModel(m_filterModel);
    column->addWidget(m_snippetList, 1);
    m_elsewhereButton = new QPushButton(panel);
    m_elsewhereButton->setObjectName(QStringLiteral("elsewhereButton"));
    m_elsewhereButton->setFlat(true);
    m_elsewhereButton->setVisible(false);
    column->addWidget(m_elsewhereButton, 0, Qt::AlignHCenter);
    connect(m_elsewhereButton, &QAbstractButton::clicked, this, [this] {
        setSelectedCategory(std::nullopt);
        m_snippetList->setFocus(Qt::OtherFocusReason);
    });

    connect(m_searchField, &QLineEdit::textChanged, this, &ContentView::setSearchText);
    connect(m_addSnippetButton, &QAbstractButton::clicked, this,
            &ContentView::showAddSnippetDialog);
    connect(m_snippetList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ContentView::userSelectedSnippet);
    return panel;
}

QWidget* ContentView::buildDetailPane() {
    m_detailStack = new QStackedWidget(this);
    m_detailStack->setObjectName(QStringLiteral("detailPane"));
    m_detailPlaceholder = new QLabel(tr("Select a snippet to view details"), m_detailStack);
    m_detailPlaceholder->setObjectName(QStringLiteral("detailPlaceholder"));
    m_detailPlaceholder->setAlignment(Qt::AlignCenter);
    m_detailPlaceholder->setWordWrap(true);
    m_detailStack->addWidget(m_detailPlaceholder);
    return m_detailStack;
}

// ---- state

QList<Snippet> ContentView::filteredSnippets() const {
    QList<Snippet> shown;
    shown.reserve(m_filterModel->rowCount());
    for (int row = 0; row < m_filterModel->rowCount(); ++row)
        shown.append(m_snippetModel->snippetAt(
            m_filterModel->mapToSource(m_filterModel->index(row, 0)).row()));
    return shown;
}

QString ContentView::title() const {
    return m_titleText;
}

CategoryRowView* ContentView::categoryRow(const QUuid& categoryId) const {
    const int row = m_categoryModel->rowOf(categoryId);
    if (row < 0)
        return nullptr;
    return qobject_cast<CategoryRowView*>(m_categoryList->indexWidget(m_categoryModel->index(row)));
}

bool ContentView::showingDetailPlaceholder() const {
    return m_detailStack->currentWidget() == m_detailPlaceholder;
}

void ContentView::setSelectedCategory(std::optional<Category> category) {
    m_selectedCategory = std::move(category);
    m_titleText = m_selectedCategory ? m_selectedCategory->name : tr("All Snippets");
    m_title->setText(UiTheme::oneLine(m_titleText));
    m_title->setToolTip(m_titleText);
    {
        QScopedValueRollback guard(m_syncing, true);
        m_filterModel->setCategoryFilter(
            m_selectedCategory ? std::optional<QUuid>(m_selectedCategory->id) : std::nullopt);
    }
    syncCategorySelection();
    dropHiddenSnippet();
    syncSnippetSelection();
    updateElsewhereCount();
    emit selectionChanged();
}

bool ContentView::isShown(const Snippet& snippet) const {
    const int sourceRow = m_snippetModel->rowOf(snippet.id);
    return sourceRow >= 0 && m_filterModel->mapFromSource(m_snippetModel->index(sourceRow)).isValid();
}

void ContentView::dropHiddenSnippet() {
    // The detail pane shows only what the list shows; edits not yet saved stay in view until
    // they are settled (a category change asks before it comes here).
    if (!m_selectedSnippet || isShown(*m_selectedSnippet) ||
        (m_detailView && m_detailView->isEdited()))
        return;
    m_selectedSnippet.reset();
    updateDetailPane();
}

void ContentView::setSelectedSnippet(std::optional<Snippet> snippet) {
    m_selectedSnippet = std::move(snippet);
    // A snippet the list hides brings its category (or, with a search, every snippet) along;
    // clearing the snippet leaves the category alone.
    if (m_selectedSnippet && !isShown(*m_selectedSnippet)) {
        const std::optional<Category> own =
            m_store.category(m_store.shownCategoryId(*m_selectedSnippet));
        setSelectedCategory(m_searchText.isEmpty() ? own : std::nullopt);
    }
    syncSnippetSelection();
    updateDetailPane();
    emit selectionChanged();
}

void ContentView::setSearchText(const QString& text) {
    // The pane never shows a snippet the list hides: a search that would hide the snippet
    // being edited first settles the edits, and a cancelled question keeps the search as it was.
    if (m_detailView && m_detailView->isEdited() && m_selectedSnippet &&
        !SnippetFilterModel::matches(m_selectedSnippet->command, m_selectedSnippet->content,
                                     text) &&
        !settleEdits()) {
        const QSignalBlocker quiet(m_searchField);
        m_searchField->setText(m_searchText);
        return;
    }
    m_searchText = text;
    if (m_searchField->text() != text)
        m_searchField->setText(text); // comes back here through textChanged
    {
        QScopedValueRollback guard(m_syncing, true);
        m_filterModel->setSearchText(text);
    }
    dropHiddenSnippet();
    syncSnippetSelection();
    updateElsewhereCount();
}

int ContentView::matchesElsewhere() const {
    if (!m_selectedCategory || m_searchText.isEmpty())
        return 0;
    int matching = 0;
    for (const Snippet& snippet : m_store.snippets())
        if (SnippetFilterModel::matches(snippet.command, snippet.content, m_searchText))
            ++matching;
    return matching - m_filterModel->rowCount();
}

void ContentView::updateElsewhereCount() {
    const int elsewhere = matchesElsewhere();
    m_elsewhereButton->setText(tr("%n more in other categories", nullptr, elsewhere));
    m_elsewhereButton->setVisible(elsewhere > 0);
}

void ContentView::updatePlaceholder() {
    m_detailPlaceholder->setText(m_store.snippets().isEmpty()
                                     ? tr("Add a snippet, then type its command anywhere")
                                     : tr("Select a snippet to view details"));
}

void ContentView::syncCategorySelection() {
    QScopedValueRollback guard(m_syncing, true);
    const int row = m_selectedCategory ? m_categoryModel->rowOf(m_selectedCategory->id)
                                       : CategoryListModel::allSnippetsRow;
    QItemSelectionModel* selection = m_categoryList->selectionModel();
    if (row < 0) {
        selection->clearSelection();
    } else {
        const QModelIndex index = m_categoryModel->index(row);
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        m_categoryList->scrollTo(index);
    }
    for (int r = 0; r < m_categoryModel->rowCount(); ++r) {
        if (auto* rowView = qobject_cast<CategoryRowView*>(
                m_categoryList->indexWidget(m_categoryModel->index(r))))
            rowView->setSelected(r == row);
    }
}

void ContentView::syncSnippetSelection() {
    QScopedValueRollback guard(m_syncing, true);
    QItemSelectionModel* selection = m_snippetList->selectionModel();
    const int sourceRow = m_selectedSnippet ? m_snippetModel->rowOf(m_selectedSnippet->id) : -1;
    const QModelIndex index = sourceRow < 0
                                  ? QModelIndex()
                                  : m_filterModel->mapFromSource(m_snippetModel->index(sourceRow));
    if (!index.isValid()) {
        selection->clearSelection();
        return;
    }
    // One of several selected keeps the others selected.
    selection->setCurrentIndex(index, selection->isSelected(index)
                                          ? QItemSelectionModel::NoUpdate
                                          : QItemSelectionModel::ClearAndSelect);
    m_snippetList->scrollTo(index);
}

void ContentView::userSelectedCategory() {
    if (m_syncing)
        return;
    const QModelIndexList rows = m_categoryList->selectionModel()->selectedRows();
    const std::optional<Category> category =
        rows.isEmpty() ? std::nullopt : m_categoryModel->categoryAt(rows.first().row());
    const std::optional<QUuid> id =
        category ? std::optional<QUuid>(category->id) : std::nullopt;
    const auto go = [this, id] { setSelectedCategory(id ? m_store.category(*id) : std::nullopt); };
    // Only a category that hides the snippet being edited leaves it.
    if (!id || !m_selectedSnippet || m_store.shownCategoryId(*m_selectedSnippet) == *id) {
        go();
        return;
    }
    leaveEditsThen(go);
}

void ContentView::userSelectedSnippet() {
    if (m_syncing)
        return;
    // Of several selected, the detail pane shows the one the keyboard or mouse is on.
    const QItemSelectionModel* selection = m_snippetList->selectionModel();
    const QModelIndexList rows = selection->selectedRows();
    const QModelIndex shown = selection->isSelected(selection->currentIndex())
                                  ? selection->currentIndex()
                                  : (rows.isEmpty() ? QModelIndex() : rows.first());
    const QUuid id = shown.isValid()
                         ? m_snippetModel->snippetAt(m_filterModel->mapToSource(shown).row()).id
                         : QUuid();
    if (m_selectedSnippet && m_selectedSnippet->id == id)
        return;
    leaveEditsThen([this, id] { setSelectedSnippet(m_store.snippet(id)); });
}

void ContentView::leaveEditsThen(std::function<void()> go) {
    if (!m_detailView || !m_detailView->isEdited()) {
        go();
        return;
    }
    // The lists show the snippet being edited until the edits are settled; the question comes
    // once the click has finished with the list.
    syncCategorySelection();
    syncSnippetSelection();
    QTimer::singleShot(0, this, [this, go = std::move(go)] {
        if (settleEdits())
            go();
    });
}

bool ContentView::settleEdits() {
    if (!m_detailView || !m_detailView->isEdited() || !m_selectedSnippet)
        return true;
    if (m_saveEditsOnLeave)
        return m_detailView->save();
    QMessageBox question(QMessageBox::Warning, unsavedTitle(),
                         tr("Do you want to save the changes to \u201C%1\u201D?")
                             .arg(m_store.snippet(m_detailView->snippetId())
                                      .value_or(*m_selectedSnippet)
                                      .command),
                         QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window());
    question.setInformativeText(tr("If you don't save, your changes are lost."));
    question.setDefaultButton(QMessageBox::Save);
    question.setEscapeButton(QMessageBox::Cancel);
    question.setWindowModality(Qt::WindowModal);
    switch (question.exec()) {
    case QMessageBox::Save:
        return m_detailView->save();
    case QMessageBox::Discard:
        m_detailView->revert();
        return true;
    default:
        return false;
    }
}

void ContentView::setUsageDescriber(std::function<QString(const QUuid&)> describe) {
    m_describeUsage = std::move(describe);
    if (m_detailView)
        m_detailView->setUsageDescriber(m_describeUsage);
}

void ContentView::refreshUsage() {
    if (m_detailView)
        m_detailView->refreshUsage();
}

void ContentView::updateDetailPane() {
    if (!m_selectedSnippet) {
        m_detailStack->setCurrentWidget(m_detailPlaceholder);
        return;
    }
    if (!m_detailView) {
        m_detailView = new SnippetDetailView(m_store, m_selectedSnippet->id, m_detailStack);
        m_detailStack->addWidget(m_detailView);
        m_detailView->setUsageDescriber(m_describeUsage);
        connect(m_detailView, &SnippetDetailView::deleteRequested, this,
                &ContentView::requestDelete);
        // A snippet saved into another category is followed there, not dropped from view.
        connect(m_detailView, &SnippetDetailView::saved, this,
                [this](const QUuid& id) { setSelectedSnippet(m_store.snippet(id)); });
        connect(m_detailView, &SnippetDetailView::editedChanged, this,
                [this](bool edited) { window()->setWindowModified(edited); });
    } else {
        m_detailView->setSnippetId(m_selectedSnippet->id);
    }
    m_detailStack->setCurrentWidget(m_detailView);
}

// ---- store changes

void ContentView::rebuildCategoryRows() {
    // Rows are widgets (they carry buttons, dialogs and message boxes); categories are few.
    for (int row = 0; row < m_categoryModel->rowCount(); ++row) {
        const QModelIndex index = m_categoryModel->index(row);
        const std::optional<Category> category = m_categoryModel->categoryAt(row);
        // "All Snippets" is shown like a category that cannot be renamed or deleted.
        auto* rowView =
            category ? new CategoryRowView(m_store, *category,
                                           m_categoryModel->snippetCount(category->id))
                     : new CategoryRowView(m_store, Category(Category::defaultCategoryId,
                                                             tr("All Snippets"), 0),
                                           m_categoryModel->totalCount());
        rowView->setOpenWindowClasses(m_openWindowClasses);
        m_categoryList->setIndexWidget(index, rowView);
    }
}

void ContentView::setOpenWindowClasses(ApplicationLimitEditor::WindowClasses openWindows) {
    m_openWindowClasses = std::move(openWindows);
    rebuildCategoryRows();
}

void ContentView::updateCategoryCounts() {
    for (int row = 0; row < m_categoryModel->rowCount(); ++row) {
        const std::optional<Category> category = m_categoryModel->categoryAt(row);
        if (auto* rowView = qobject_cast<CategoryRowView*>(
                m_categoryList->indexWidget(m_categoryModel->index(row))))
            rowView->setSnippetCount(category ? m_categoryModel->snippetCount(category->id)
                                              : m_categoryModel->totalCount());
    }
}

void ContentView::categoriesChanged() {
    // A rename replaces the category object; keep the selection on the current one, and drop
    // it when the category is gone.
    if (m_selectedCategory)
        setSelectedCategory(m_store.category(m_selectedCategory->id));
    else
        syncCategorySelection();
}

void ContentView::snippetsChanged() {
    updatePlaceholder();
    updateElsewhereCount();
    // The selection is the store's record as it is now (a save, an import, another program).
    if (m_selectedSnippet)
        if (const std::optional<Snippet> stored = m_store.snippet(m_selectedSnippet->id))
            m_selectedSnippet = stored;
    if (m_selectedSnippet && m_snippetModel->rowOf(m_selectedSnippet->id) < 0) {
        // Deleted with its category, or elsewhere: there is nothing left to show.
        m_selectedSnippet.reset();
        updateDetailPane();
        emit selectionChanged();
    }
    dropHiddenSnippet();
    syncSnippetSelection();
}

// ---- actions

void ContentView::showAddSnippetDialog() {
    if (showingAddSnippetDialog() || !settleEdits())
        return;
    m_addSnippetDialog = new AddSnippetDialog(
        m_store, m_selectedCategory ? m_selectedCategory->id : Category::defaultCategoryId,
        window());
    m_addSnippetDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_addSnippetDialog, &AddSnippetDialog::added, this,
            [this](const QUuid& id) { setSelectedSnippet(m_store.snippet(id)); });
    m_addSnippetDialog->open();
    m_addSnippetDialog->form()->commandField()->setFocus(Qt::OtherFocusReason);
}

void ContentView::showAddCategoryDialog() {
    if (showingAddCategoryDialog())
        return;
    m_addCategoryDialog = new AddCategoryDialog(m_store, window(), m_openWindowClasses);
    m_addCategoryDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_addCategoryDialog, &AddCategoryDialog::added, this, [this](const QUuid& id) {
        // Selected once the dialog has started closing.
        QTimer::singleShot(0, this, [this, id] { setSelectedCategory(m_store.category(id)); });
    });
    m_addCategoryDialog->open();
    m_addCategoryDialog->nameField()->setFocus(Qt::OtherFocusReason);
}

QList<QUuid> ContentView::selectedSnippetIds() const {
    QList<QUuid> ids;
    const QModelIndexList rows = m_snippetList->selectionModel()->selectedRows();
    for (const QModelIndex& row : rows)
        ids.append(m_snippetModel->snippetAt(m_filterModel->mapToSource(row).row()).id);
    if (ids.isEmpty() && m_selectedSnippet)
        ids.append(m_selectedSnippet->id);
    return ids;
}

void ContentView::moveSelection(const QUuid& categoryId) {
    MessageBoxes::refused(m_store.moveSnippets(selectedSnippetIds(), categoryId), window());
}

QMenu* ContentView::snippetMenu() {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QMenu* moveTo = menu->addMenu(tr("Move to"));
    moveTo->setObjectName(QStringLiteral("moveToMenu"));
    const QList<QUuid> ids = selectedSnippetIds();
    for (const Category& category : m_store.categories()) {
        QAction* action = moveTo->addAction(category.name);
        action->setData(category.id);
        // Where every selected snippet already is: nothing to move.
        bool allThere = !ids.isEmpty();
        for (const QUuid& id : ids)
            if (const auto snippet = m_store.snippet(id); snippet && m_store.shownCategoryId(*snippet) != category.id)
                allThere = false;
        action->setEnabled(!allThere);
        connect(action, &QAction::triggered, this,
                [this, id = category.id] { moveSelection(id); });
    }
    moveTo->setEnabled(!ids.isEmpty());
    menu->addSeparator();
    QAction* remove = menu->addAction(tr("Delete\u2026"));
    remove->setEnabled(!ids.isEmpty());
    connect(remove, &QAction::triggered, this, &ContentView::deleteSelection);
    return menu;
}

void ContentView::showSnippetMenu(const QPoint& globalPosition) {
    snippetMenu()->popup(globalPosition);
}

bool ContentView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_searchField && event->type() == QEvent::KeyPress) {
        const auto* press = static_cast<QKeyEvent*>(event);
        if (press->key() == Qt::Key_Escape && !m_searchField->text().isEmpty()) {
            setSearchText(QString());
            return true;
        }
        if (press->key() == Qt::Key_Down && m_filterModel->rowCount() > 0) {
            m_snippetList->setFocus(Qt::TabFocusReason);
            if (!m_snippetList->selectionModel()->hasSelection())
                m_snippetList->selectionModel()->setCurrentIndex(
                    m_filterModel->index(0, 0), QItemSelectionModel::ClearAndSelect);
            return true;
        }
    }
    if ((watched == m_snippetList || watched == m_categoryList) &&
        event->type() == QEvent::KeyPress) {
        const auto* press = static_cast<QKeyEvent*>(event);
        if (press->key() == Qt::Key_Delete && press->modifiers() == Qt::NoModifier) {
            if (watched == m_snippetList)
                deleteSelection();
            else if (CategoryRowView* row =
                         m_selectedCategory ? categoryRow(m_selectedCategory->id) : nullptr)
                row->showDeleteAlert();
            return true;
        }
        if (watched == m_categoryList && press->key() == Qt::Key_F2 && m_selectedCategory) {
            if (CategoryRowView* row = categoryRow(m_selectedCategory->id))
                row->showEditDialog();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ContentView::deleteSelection() {
    if (m_categoryList->hasFocus()) {
        if (m_selectedCategory) {
            if (CategoryRowView* row = categoryRow(m_selectedCategory->id))
                row->showDeleteAlert();
        }
        return;
    }
    const QList<QUuid> ids = selectedSnippetIds();
    if (ids.size() == 1)
        requestDelete(ids.first());
    else if (ids.size() > 1 && !showingDeleteAlert())
        requestDeleteMany(ids);
}

void ContentView::requestDeleteMany(const QList<QUuid>& ids) {
    m_deleteAlert = MessageBoxes::confirmDelete(
        tr("Confirm Delete"),
        tr("Are you sure you want to delete %n snippet(s)?", nullptr, int(ids.size())), window());
    auto* confirm = m_deleteAlert->findChild<QPushButton*>(QStringLiteral("alertDeleteButton"));
    connect(confirm, &QAbstractButton::clicked, this, [this, ids] {
        MessageBoxes::refused(m_store.removeSnippets(ids), window());
        setSelectedSnippet(std::nullopt);
    });
    m_deleteAlert->open();
}

void ContentView::requestDelete(const QUuid& snippetId) {
    const std::optional<Snippet> found = m_store.snippet(snippetId);
    if (!found || showingDeleteAlert())
        return;
    m_snippetToDelete = found;
    m_deleteAlert = MessageBoxes::confirmDelete(tr("Confirm Delete"),
                                           tr("Are you sure you want to delete '%1'?")
                                               .arg(m_snippetToDelete->command),
                                           window());
    auto* confirm = m_deleteAlert->findChild<QPushButton*>(QStringLiteral("alertDeleteButton"));
    connect(confirm, &QAbstractButton::clicked, this, &ContentView::deleteConfirmed);
    m_deleteAlert->open();
}

void ContentView::deleteConfirmed() {
    if (!m_snippetToDelete)
        return;
    const QUuid id = m_snippetToDelete->id;
    MessageBoxes::refused(m_store.removeSnippet(id), window());
    setSelectedSnippet(std::nullopt);
    m_snippetToDelete.reset();
}
