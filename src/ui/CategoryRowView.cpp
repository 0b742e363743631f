#include "CategoryRowView.h"

#include "EditCategoryDialog.h"
#include "MessageBoxes.h"
#include "SnippetStore.h"
#include "SymbolImage.h"
#include "UiTheme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

CategoryRowView::CategoryRowView(SnippetStore& store, Category category,
                                 int snippetCount, QWidget* parent)
    : QWidget(parent), m_store(store), m_category(std::move(category)),
      m_snippetCount(snippetCount) {
    setObjectName(QStringLiteral("categoryRow"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(14, 4, 14, 4);
    row->setSpacing(8);

    m_folder = new QLabel(this);
    m_folder->setObjectName(QStringLiteral("folderIcon"));
    row->addWidget(m_folder);

    auto* texts = new QVBoxLayout();
    texts->setSpacing(1);
    // One line each, cut at the row's edge: a long name never widens the sidebar.
    m_name = new QLabel(UiTheme::oneLine(m_category.name), this);
    m_name->setObjectName(QStringLiteral("categoryName"));
    m_name->setFont(UiTheme::titleFont());
    // A category limited to applications says where its snippets expand.
    const Category::Limit& limit = m_category.limit;
    m_name->setToolTip(
        !limit.limits() ? m_category.name
        : limit.kind == Category::Limit::Kind::onlyIn
            ? tr("%1\nOnly in %2").arg(m_category.name, limit.applications.join(QStringLiteral(", ")))
            : tr("%1\nEverywhere except %2")
                  .arg(m_category.name, limit.applications.join(QStringLiteral(", "))));
    m_count = new QLabel(countText(), this);
    m_count->setObjectName(QStringLiteral("categoryCount"));
    m_count->setFont(UiTheme::smallFont());
    for (QLabel* label : {m_name, m_count}) {
        label->setTextFormat(Qt::PlainText);
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        texts->addWidget(label);
    }
    row->addLayout(texts, 1);

    if (!isProtected()) {
        auto* buttons = new QHBoxLayout();
        buttons->setSpacing(8);
        // The list is the keyboard's stop; F2 and Delete reach these from there.
        const auto rowButton = [this, buttons](const QString& iconName, const QString& label) {
            auto* button = new QToolButton(this);
            button->setIcon(SymbolImage::icon(iconName));
            button->setToolTip(label);
            button->setAccessibleName(label);
            button->setAutoRaise(true);
            button->setFocusPolicy(Qt::NoFocus);
            buttons->addWidget(button);
            return button;
        };
        m_editButton = rowButton(QStringLiteral("document-edit"), tr("Edit Category"));
        m_editButton->setObjectName(QStringLiteral("editCategoryButton"));
        m_deleteButton = rowButton(QStringLiteral("edit-delete"), tr("Delete Category"));
        m_deleteButton->setObjectName(QStringLiteral("deleteCategoryButton"));
        row->addLayout(buttons);
        connect(m_editButton, &QAbstractButton::clicked, this, &CategoryRowView::showEditDialog);
        connect(m_deleteButton, &QAbstractButton::clicked, this, &CategoryRowView::showDeleteAlert);
    }
    applyColors();
}

bool CategoryRowView::isProtected() const {
    return Category::isProtected(m_category.id);
}

QString CategoryRowView::countText() const {
    return tr("%n snippet(s)", nullptr, m_snippetCount);
}

QString CategoryRowView::deleteMessage() const {
    return tr("Are you sure you want to delete '%1'?\nThis will permanently delete all %n "
              "snippet(s) in this category.",
              nullptr, m_snippetCount)
        .arg(m_category.name);
}

void CategoryRowView::setSnippetCount(int count) {
    if (m_snippetCount == count)
        return;
    m_snippetCount = count;
    m_count->setText(countText());
}

void CategoryRowView::setSelected(bool selected) {
    if (m_isSelected == selected)
        return;
    m_isSelected = selected;
    applyColors();
}

void CategoryRowView::applyColors() {
    // On the selected row's fill every text takes the selected text's role; the folder is the
    // desktop's own icon, drawn as a silhouette there so it reads on the fill too.
    const QPalette::ColorRole text = m_isSelected ? QPalette::HighlightedText : QPalette::WindowText;
    m_name->setForegroundRole(text);
    m_count->setForegroundRole(text);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    const QIcon folder = SymbolImage::icon(QStringLiteral("folder"));
    m_folder->setPixmap(m_isSelected ? SymbolImage::tinted(folder, QSize(size, size),
                                                           palette().color(QPalette::Active, text),
                                                           devicePixelRatioF())
                                     : folder.pixmap(size, size));
}

void CategoryRowView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyColors(); // light to dark, or another accent
}

void CategoryRowView::showEditDialog() {
    if (isProtected() || showingEditDialog())
        return;
    m_editDialog = new EditCategoryDialog(m_store, m_category, window(), m_openWindowClasses);
    m_editDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_editDialog->open();
}

void CategoryRowView::showDeleteAlert() {
    if (isProtected() || showingDeleteAlert())
        return;
    m_deleteAlert =
        MessageBoxes::confirmDelete(tr("Delete Category"), deleteMessage(), window());
    const Category category = m_category;
    SnippetStore* store = &m_store;
    QAbstractButton* confirm =
        m_deleteAlert->findChild<QPushButton*>(QStringLiteral("alertDeleteButton"));
    // The row itself goes away with its category, so the action holds what it needs.
    QWidget* window = this->window();
    connect(confirm, &QAbstractButton::clicked, store, [store, category, window] {
        MessageBoxes::refused(store->deleteCategory(category), window);
    });
    // Its snippets may live on in the default category; that is the answer Return gives.
    if (m_snippetCount > 0) {
        const QString fallback =
            store->category(Category::defaultCategoryId).value_or(Category::defaultCategory()).name;
        QPushButton* keep = m_deleteAlert->addButton(
            tr("Move Snippets to \u201C%1\u201D").arg(fallback), QMessageBox::AcceptRole);
        keep->setObjectName(QStringLiteral("alertKeepButton"));
        m_deleteAlert->setDefaultButton(keep);
        connect(keep, &QAbstractButton::clicked, store, [store, category, window] {
            MessageBoxes::refused(store->deleteCategory(category, true), window);
        });
    }
    m_deleteAlert->open();
}
