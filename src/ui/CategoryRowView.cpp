#include "CategoryRowView.h"

#include "EditCategoryDialog.h"
#include "ElidedLabel.h"
#include "FormParts.h"
#include "PlainButton.h"
#include "SnippetStore.h"
#include "SymbolView.h"
#include "UiTheme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

CategoryRowView::CategoryRowView(SnippetStore& store, Category category,
                                 int snippetCount, QWidget* parent)
    : QWidget(parent), m_store(store), m_category(std::move(category)),
      m_snippetCount(snippetCount) {
    setObjectName(QStringLiteral("categoryRow"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(14, 4, 14, 4);
    row->setSpacing(8);

    m_folder = new SymbolView(QStringLiteral("folder"), 16, this);
    row->addWidget(m_folder);

    auto* texts = new QVBoxLayout();
    texts->setSpacing(1);
    m_name = new ElidedLabel(m_category.name, this);
    m_name->setObjectName(QStringLiteral("categoryName"));
    m_name->setFont(UiTheme::headline());
    texts->addWidget(m_name);
    m_count = new ElidedLabel(countText(), this);
    m_count->setObjectName(QStringLiteral("categoryCount"));
    m_count->setFont(UiTheme::caption());
    texts->addWidget(m_count);
    row->addLayout(texts, 1);

    if (!isProtected()) {
        auto* buttons = new QHBoxLayout();
        buttons->setSpacing(8);
        m_editButton = new PlainButton(QStringLiteral("pencil.circle.fill"), QString(), this);
        m_editButton->setObjectName(QStringLiteral("editCategoryButton"));
        m_editButton->setSymbolSize(14);
        m_editButton->setToolTip(tr("Edit Category"));
        buttons->addWidget(m_editButton);
        m_deleteButton = new PlainButton(QStringLiteral("trash.circle.fill"), QString(), this);
        m_deleteButton->setObjectName(QStringLiteral("deleteCategoryButton"));
        m_deleteButton->setSymbolSize(14);
        m_deleteButton->setToolTip(tr("Delete Category"));
        buttons->addWidget(m_deleteButton);
        row->addLayout(buttons);
        connect(m_editButton, &QAbstractButton::clicked, this, &CategoryRowView::showEditSheet);
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
    const QPalette& palette = this->palette();
    const QColor accent = UiTheme::accent(this);
    const QColor onSelection = palette.color(QPalette::Active, QPalette::HighlightedText);
    const QColor window = palette.color(QPalette::Window);
    m_folder->setColor(m_isSelected ? onSelection : accent);
    m_name->setColor(m_isSelected ? onSelection : palette.color(QPalette::WindowText));
    m_count->setColor(m_isSelected ? onSelection : UiTheme::secondaryText(this));
    if (m_editButton)
        m_editButton->setColor(m_isSelected ? onSelection : UiTheme::readable(accent, window));
    if (m_deleteButton)
        m_deleteButton->setColor(m_isSelected ? onSelection
                                              : UiTheme::readable(UiTheme::red(), window));
}

void CategoryRowView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyColors(); // light to dark, or another accent
}

void CategoryRowView::showEditSheet() {
    if (isProtected() || showingEditSheet())
        return;
    m_editSheet = new EditCategoryDialog(m_store, m_category, window());
    m_editSheet->setAttribute(Qt::WA_DeleteOnClose);
    m_editSheet->open();
}

void CategoryRowView::showDeleteAlert() {
    if (isProtected() || showingDeleteAlert())
        return;
    m_deleteAlert =
        FormParts::deleteAlert(tr("Delete Category"), deleteMessage(), window());
    const Category category = m_category;
    SnippetStore* store = &m_store;
    QAbstractButton* confirm =
        m_deleteAlert->findChild<QPushButton*>(QStringLiteral("alertDeleteButton"));
    // The row itself goes away with its category, so the action holds what it needs.
    QWidget* window = this->window();
    connect(confirm, &QAbstractButton::clicked, store, [store, category, window] {
        FormParts::refused(store->deleteCategory(category), window);
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
            FormParts::refused(store->deleteCategory(category, true), window);
        });
    }
    m_deleteAlert->open();
}
