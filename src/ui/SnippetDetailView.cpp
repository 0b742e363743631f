#include "SnippetDetailView.h"

#include "StoreMessages.h"
#include "CustomTextEditor.h"
#include "FormBand.h"
#include "FormParts.h"
#include "InputFieldFrame.h"
#include "PlaceholderBar.h"
#include "PlainButton.h"
#include "SnippetStore.h"
#include "ToastView.h"
#include "TriggerOption.h"
#include "UiTheme.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QShortcut>
#include <QToolButton>
#include <QTimer>
#include <QVBoxLayout>
#include <limits>

namespace {
// Below the toolbar, so the message never covers Save or Delete.
constexpr int toastGap = 8;
}

SnippetDetailView::SnippetDetailView(SnippetStore& store, const Snippet& snippet,
                                       UpdateHandler onUpdate, DeleteHandler onDelete,
                                       QWidget* parent)
    : QWidget(parent), m_store(store), m_snippetId(snippet.id),
      m_onUpdate(std::move(onUpdate)), m_onDelete(std::move(onDelete)) {
    setObjectName(QStringLiteral("snippetDetailView"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);

    // Toolbar: Save, then Delete, at the right.
    auto* toolbar = new FormBand(this);
    auto* toolbarRow = new QHBoxLayout(toolbar);
    toolbarRow->setContentsMargins(16, 12, 16, 12);
    toolbarRow->setSpacing(8);
    m_editedMarker = FormParts::secondaryText(tr("Edited"), UiTheme::subheadline(), toolbar);
    m_editedMarker->setObjectName(QStringLiteral("editedMarker"));
    m_editedMarker->setVisible(false);
    toolbarRow->addWidget(m_editedMarker);
    m_usageLine = FormParts::secondaryText({}, UiTheme::subheadline(), toolbar);
    m_usageLine->setObjectName(QStringLiteral("usageLine"));
    m_usageLine->setVisible(false);
    toolbarRow->addWidget(m_usageLine);
    toolbarRow->addStretch();
    m_saveButton =
        FormParts::primaryButton(QStringLiteral("square.and.arrow.down.fill"),
                                 tr("Save"), 4, toolbar, QMargins(0, 6, 0, 6), 80);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setToolTip(tr("Save Changes"));
    toolbarRow->addWidget(m_saveButton);
    m_deleteButton =
        new PlainButton(QStringLiteral("trash.circle.fill"), tr("Delete"), toolbar);
    m_deleteButton->setObjectName(QStringLiteral("deleteButton"));
    m_deleteButton->setFont(UiTheme::system(14));
    m_deleteButton->setSymbolSize(14);
    m_deleteButton->setSpacing(4);
    m_deleteButton->setPadding(QMargins(0, 6, 0, 6));
    m_deleteButton->setMinimumWidth(80);
    m_deleteButton->setColor(
        UiTheme::readable(UiTheme::red(), UiTheme::bandBackground(toolbar)));
    m_deleteButton->setToolTip(tr("Delete Snippet"));
    toolbarRow->addWidget(m_deleteButton);
    column->addWidget(toolbar);

    // Form
    auto* form = new QVBoxLayout();
    form->setContentsMargins(24, 20, 24, 20);
    form->setSpacing(24);

    auto* commandSection = new QVBoxLayout();
    commandSection->setSpacing(6);
    commandSection->addWidget(
        FormParts::secondaryText(tr("Command"), UiTheme::subheadline(), this));
    m_commandField = new QLineEdit(this);
    m_commandField->setObjectName(QStringLiteral("commandField"));
    m_commandField->setPlaceholderText(tr("Command"));
    // QLineEdit stops at 32767 characters by default; saving must never cut a command.
    m_commandField->setMaxLength(std::numeric_limits<int>::max());
    m_commandField->setAccessibleName(tr("Command"));
    m_commandField->setFont(UiTheme::body());
    commandSection->addWidget(m_commandField);
    m_duplicateError = FormParts::coloredText(tr("This command already exists"),
                                              UiTheme::caption(), UiTheme::red(), this);
    m_duplicateError->setObjectName(QStringLiteral("duplicateError"));
    m_duplicateError->setVisible(false);
    commandSection->addWidget(m_duplicateError);
    m_triggerOption = new TriggerOption(m_store, this);
    commandSection->addWidget(m_triggerOption);
    // Warned while the command is typed, and for the stored one as it is shown.
    connect(m_commandField, &QLineEdit::textChanged, this, [this](const QString& command) {
        m_triggerOption->check(command, m_snippetId);
    });
    connect(m_triggerOption, &TriggerOption::triggerEdited, this, [this] {
        if (!m_loading)
            updateEdited();
    });
    connect(m_triggerOption, &TriggerOption::chosenCureChanged, this,
            &SnippetDetailView::updateEdited);
    form->addLayout(commandSection);

    auto* categorySection = new QVBoxLayout();
    categorySection->setSpacing(6);
    QLabel* categoryTitle = FormParts::secondaryText(tr("Category"), UiTheme::subheadline(), this);
    categorySection->addWidget(categoryTitle);
    m_categoryBox = new QComboBox(this);
    m_categoryBox->setObjectName(QStringLiteral("categoryBox"));
    m_categoryBox->setAccessibleName(tr("Category"));
    categoryTitle->setBuddy(m_categoryBox);
    categorySection->addWidget(m_categoryBox, 0, Qt::AlignLeft);
    form->addLayout(categorySection);
    connect(m_categoryBox, &QComboBox::currentIndexChanged, this, [this] {
        if (!m_loading)
            updateEdited();
    });
    connect(&m_store, &SnippetStore::categoriesChanged, this, &SnippetDetailView::fillCategories);

    auto* contentSection = new QVBoxLayout();
    contentSection->setSpacing(6);
    contentSection->addWidget(
        FormParts::secondaryText(tr("Content"), UiTheme::subheadline(), this));
    auto* contentFrame = new InputFieldFrame(6, 8, this);
    m_contentEditor = new CustomTextEditor(contentFrame);
    m_contentEditor->setObjectName(QStringLiteral("contentEditor"));
    m_contentEditor->setAccessibleName(tr("Content"));
    m_contentEditor->setFont(UiTheme::system(13));
    contentFrame->row()->addWidget(m_contentEditor);
    m_placeholders = new PlaceholderBar(m_contentEditor, this);
    contentFrame->row()->addWidget(m_placeholders->menuButton(), 0, Qt::AlignTop);
    contentSection->addWidget(contentFrame, 1);
    contentSection->addWidget(m_placeholders);
    m_cutContentNote = FormParts::secondaryText(QString(), UiTheme::caption(), this);
    m_cutContentNote->setObjectName(QStringLiteral("cutContentNote"));
    m_cutContentNote->setWordWrap(true);
    m_cutContentNote->setVisible(false);
    contentSection->addWidget(m_cutContentNote);
    form->addLayout(contentSection, 1);
    column->addLayout(form, 1);

    // The toast floats above everything, at the top centre.
    m_toast = new ToastView(tr(toastMessage), this);
    m_toast->hide();
    m_toastAnimation = new QPropertyAnimation(m_toast, "pos", this);
    m_toastAnimation->setDuration(300);
    connect(m_toastAnimation, &QPropertyAnimation::finished, this, [this] {
        if (!m_showingToast)
            m_toast->hide();
    });

    connect(m_saveButton, &QAbstractButton::clicked, this, &SnippetDetailView::save);
    connect(m_deleteButton, &QAbstractButton::clicked, this, [this] {
        if (m_onDelete)
            m_onDelete();
    });
    // Window-wide, like a key equivalent: wherever the keyboard is in the window, the pane's
    // Save answers it (only while the pane is shown and Save is enabled).
    FormParts::submitOnCtrlReturn(this, m_saveButton);
    connect(m_commandField, &QLineEdit::textChanged, this, [this] {
        if (m_loading)
            return;
        updateEdited();
        setShowingDuplicateError(false);
    });
    connect(m_contentEditor, &CustomTextEditor::textEdited, this, [this] {
        if (!m_loading)
            updateEdited();
    });
    connect(&m_store, &SnippetStore::snippetsChanged, this, &SnippetDetailView::followStore);
    auto* revertKey = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    revertKey->setContext(Qt::WidgetWithChildrenShortcut);
    connect(revertKey, &QShortcut::activated, this, &SnippetDetailView::revert);

    // The texts as given, then as stored (they differ when the snippet changed meanwhile).
    m_base = snippet;
    fillCategories();
    m_commandField->setText(snippet.command);
    showContent(snippet.content);
    load();
    updateEdited();
}

QString SnippetDetailView::command() const {
    return m_commandField->text();
}
QString SnippetDetailView::content() const {
    return m_cutContent ? *m_cutContent : m_contentEditor->text();
}

void SnippetDetailView::setSnippet(const Snippet& snippet) {
    if (snippet.id == m_snippetId)
        return;
    m_snippetId = snippet.id;
    reload();
}

void SnippetDetailView::setUsageDescriber(std::function<QString(const QUuid&)> describe) {
    m_describeUsage = std::move(describe);
    refreshUsage();
}

void SnippetDetailView::refreshUsage() {
    const QString text = m_describeUsage ? m_describeUsage(m_snippetId) : QString();
    m_usageLine->setText(text);
    m_usageLine->setVisible(!text.isEmpty());
}

void SnippetDetailView::load() {
    const std::optional<Snippet> stored = m_store.snippet(m_snippetId);
    if (!stored)
        return;
    // Loading is not an edit: Save stays as it is.
    m_loading = true;
    m_base = *stored;
    m_triggerOption->forgetChosenCure();
    m_triggerOption->setTrigger(stored->trigger);
    m_commandField->setText(stored->command);
    m_commandField->setCursorPosition(0);
    showContent(stored->content);
    showCategory(m_store.shownCategoryId(*stored));
    refreshUsage();
    m_loading = false;
}

QUuid SnippetDetailView::categoryId() const {
    return m_categoryBox->currentData().toUuid();
}

void SnippetDetailView::showCategory(const QUuid& id) {
    m_categoryBox->setCurrentIndex(m_categoryBox->findData(id));
}

void SnippetDetailView::fillCategories() {
    // A rename or a new category keeps the choice; a chosen category that is gone falls back
    // to the stored one.
    const QUuid chosen = m_categoryBox->count() > 0 ? categoryId() : QUuid();
    const bool loading = std::exchange(m_loading, true);
    m_categoryBox->clear();
    for (const Category& category : m_store.categories())
        m_categoryBox->addItem(category.name, category.id);
    const int index = m_categoryBox->findData(chosen);
    if (index >= 0 && m_categoryBox->count() > 0 && !m_base.id.isNull())
        m_categoryBox->setCurrentIndex(index);
    else
        showCategory(m_store.shownCategoryId(m_base));
    m_loading = loading;
    if (!m_loading)
        updateEdited();
}

void SnippetDetailView::followStore() {
    const std::optional<Snippet> stored = m_store.snippet(m_snippetId);
    if (!stored)
        return; // the window takes the pane away
    if (stored->command == m_base.command && stored->content == m_base.content &&
        stored->trigger == m_base.trigger && stored->categoryId == m_base.categoryId)
        return;
    // Fields the user left alone show the new value; edited ones keep the edit.
    m_loading = true;
    if (command() == m_base.command && stored->command != m_base.command) {
        m_commandField->setText(stored->command);
        m_commandField->setCursorPosition(0);
    }
    if (content() == m_base.content && stored->content != m_base.content)
        showContent(stored->content);
    if (m_triggerOption->trigger() == m_base.trigger)
        m_triggerOption->setTrigger(stored->trigger);
    if (categoryId() == m_store.shownCategoryId(m_base))
        showCategory(m_store.shownCategoryId(*stored));
    m_base = *stored;
    m_loading = false;
    m_triggerOption->check(command(), m_snippetId);
    updateEdited();
}

bool SnippetDetailView::isEditable(const QString& content) {
    if (content.size() > editableContentLimit)
        return false;
    qsizetype lineStart = 0;
    for (qsizetype i = 0; i < content.size(); ++i) {
        const QChar c = content.at(i);
        if (c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            lineStart = i + 1;
        else if (i - lineStart >= editableLineLimit)
            return false;
    }
    return true;
}

void SnippetDetailView::showContent(const QString& content) {
    if (isEditable(content)) {
        m_cutContent.reset();
        m_contentEditor->setReadOnly(false);
        m_contentEditor->setText(content);
        m_cutContentNote->setVisible(false);
        m_placeholders->setAvailable(true);
        return;
    }
    m_cutContent = content;
    qsizetype shown = editableLineLimit;
    if (content.at(shown - 1).isHighSurrogate())
        --shown; // never half a character
    m_contentEditor->setReadOnly(true);
    m_contentEditor->setText(content.left(shown));
    m_cutContentNote->setText(
        tr("This content is %L1 characters long. The editor shows the first %L2 and cannot "
           "change it; the command can still be changed and saved.")
            .arg(content.size())
            .arg(shown));
    m_cutContentNote->setVisible(true);
    m_placeholders->setAvailable(false);
}

void SnippetDetailView::reload() {
    load();
    updateEdited();
    setShowingDuplicateError(false);
}

void SnippetDetailView::revert() {
    reload();
}

void SnippetDetailView::updateEdited() {
    const bool edited = command() != m_base.command || content() != m_base.content ||
                        m_triggerOption->trigger() != m_base.trigger ||
                        categoryId() != m_store.shownCategoryId(m_base) ||
                        !m_triggerOption->chosenCure().isNull();
    m_saveButton->setEnabled(edited);
    m_editedMarker->setVisible(edited);
    if (edited == m_isEdited)
        return;
    m_isEdited = edited;
    emit editedChanged(edited);
}

void SnippetDetailView::setShowingDuplicateError(bool showing) {
    m_showingDuplicateError = showing;
    m_duplicateError->setVisible(showing);
}

bool SnippetDetailView::save() {
    const std::optional<Snippet> stored = m_store.snippet(m_snippetId);
    if (!stored)
        return true; // deleted meanwhile; nothing to save into
    // Only what the user changed: a field left alone keeps what the store has now.
    const QString command = this->command() != m_base.command ? this->command() : stored->command;
    const QString content = this->content() != m_base.content ? this->content() : stored->content;
    const std::optional<Snippet::Trigger> trigger =
        m_triggerOption->trigger() != m_base.trigger ? std::optional(m_triggerOption->trigger())
                                                     : std::nullopt;
    const std::optional<QUuid> category =
        categoryId() != m_store.shownCategoryId(m_base) ? std::optional(categoryId()) : std::nullopt;
    const std::optional<DataError> error =
        m_store.updateSnippet(*stored, command, content, category, trigger);
    if (FormParts::refused(error, this)) {
        m_duplicateError->setText(StoreMessages::text(*error));
        setShowingDuplicateError(true);
        return false;
    }
    FormParts::refused(m_triggerOption->applyChosenCure(), this);
    // The store announced the saved record, which the fields already show.
    updateEdited();
    if (m_onUpdate)
        m_onUpdate(command, content);
    setShowingToast(true);
    // Each save schedules its own hide; an earlier save's hide may end a later toast early,
    // which is fine for a confirmation that only says "it worked".
    QTimer::singleShot(int(toastDuration * 1000), this, [this] { setShowingToast(false); });
    return true;
}

void SnippetDetailView::setShowingToast(bool showing) {
    if (m_showingToast == showing)
        return;
    m_showingToast = showing;
    placeToast(showing);
    emit toastVisibilityChanged(showing);
}

int SnippetDetailView::toastTop() const {
    return m_saveButton->parentWidget()->geometry().bottom() + toastGap;
}

void SnippetDetailView::placeToast(bool shown) {
    m_toast->adjustSize();
    const int x = (width() - m_toast->width()) / 2;
    // The whole widget, shadow included, stays below the toolbar: even its transparent margin
    // would take the clicks meant for Save or Delete.
    const QPoint visible(x, toastTop());
    const QPoint above(x, -m_toast->height());
    m_toastAnimation->stop();
    if (shown) {
        m_toast->move(above);
        m_toast->show();
        m_toast->raise();
        m_toastAnimation->setEasingCurve(QEasingCurve::OutBack);
        m_toastAnimation->setStartValue(above);
        m_toastAnimation->setEndValue(visible);
    } else {
        m_toastAnimation->setEasingCurve(QEasingCurve::InCubic);
        m_toastAnimation->setStartValue(m_toast->pos());
        m_toastAnimation->setEndValue(above);
    }
    m_toastAnimation->start();
}

void SnippetDetailView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_showingToast && m_toastAnimation->state() != QAbstractAnimation::Running)
        m_toast->move((width() - m_toast->width()) / 2, toastTop());
}
