#include "SnippetDetailView.h"

#include "FormDialog.h"
#include "MessageBoxes.h"
#include "SnippetForm.h"
#include "StoreMessages.h"
#include "SnippetStore.h"
#include "SymbolImage.h"
#include "ToastView.h"
#include "TriggerOption.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

namespace {
// The toast's distance from the top of the pane.
constexpr int toastTop = 8;
} // namespace

SnippetDetailView::SnippetDetailView(SnippetStore& store, const QUuid& snippetId, QWidget* parent)
    : QWidget(parent), m_store(store), m_snippetId(snippetId),
      m_form(new SnippetForm(store, this)) {
    setObjectName(QStringLiteral("snippetDetailView"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(m_form, 1);

    // The buttons close the pane, after the fields they act on.
    auto* buttons = new QHBoxLayout();
    m_editedMarker = UiTheme::smallLabel(tr("Edited"), this);
    m_editedMarker->setObjectName(QStringLiteral("editedMarker"));
    m_editedMarker->setVisible(false);
    buttons->addWidget(m_editedMarker);
    // How often the snippet went out, for those who count ("Used 12 times, last yesterday").
    m_usageLine = UiTheme::smallLabel({}, this);
    m_usageLine->setObjectName(QStringLiteral("usageLine"));
    m_usageLine->setVisible(false);
    buttons->addWidget(m_usageLine);
    buttons->addStretch(1);
    m_deleteButton =
        new QPushButton(SymbolImage::icon(QStringLiteral("edit-delete")), tr("Delete"), this);
    m_deleteButton->setObjectName(QStringLiteral("deleteButton"));
    m_deleteButton->setToolTip(tr("Delete Snippet"));
    buttons->addWidget(m_deleteButton);
    m_saveButton =
        new QPushButton(SymbolImage::icon(QStringLiteral("document-save")), tr("Save"), this);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setToolTip(tr("Save Changes"));
    buttons->addWidget(m_saveButton);
    column->addLayout(buttons);
    setTabOrder(m_form->lastControl(), m_deleteButton);
    setTabOrder(m_deleteButton, m_saveButton);

    // The toast floats above everything, at the top centre.
    m_toast = new ToastView(tr(toastMessage), this);
    m_toast->hide();
    m_toastAnimation = new QPropertyAnimation(m_toast, "pos", this);
    m_toastAnimation->setDuration(300);
    connect(m_toastAnimation, &QPropertyAnimation::finished, this, [this] {
        if (!m_showingToast)
            m_toast->hide();
    });

    connect(m_form, &SnippetForm::edited, this, &SnippetDetailView::updateEdited);
    connect(m_saveButton, &QAbstractButton::clicked, this, &SnippetDetailView::save);
    connect(m_deleteButton, &QAbstractButton::clicked, this,
            [this] { emit deleteRequested(m_snippetId); });
    // Window-wide: wherever the keyboard is in the window, the pane's Save answers it (only
    // while the pane is shown and Save is enabled).
    FormDialog::submitOnCtrlReturn(this, m_saveButton);
    // The form refills its categories first (it connected first); the choice may have changed.
    connect(&m_store, &SnippetStore::categoriesChanged, this, &SnippetDetailView::updateEdited);
    connect(&m_store, &SnippetStore::snippetsChanged, this, &SnippetDetailView::followStore);
    auto* revertKey = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    revertKey->setContext(Qt::WidgetWithChildrenShortcut);
    connect(revertKey, &QShortcut::activated, this, &SnippetDetailView::revert);
    load();
}

void SnippetDetailView::setSnippetId(const QUuid& id) {
    if (id == m_snippetId)
        return;
    m_snippetId = id;
    load();
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
    m_base = *stored;
    m_form->triggerOption()->forgetChosenCure();
    m_form->setSnippetId(m_snippetId);
    m_form->setTrigger(stored->trigger);
    m_form->setMatchCase(stored->matchCase);
    m_form->setCommand(stored->command);
    m_form->setContent(stored->content);
    m_form->setCategoryId(m_store.shownCategoryId(*stored));
    refreshUsage();
    updateEdited();
}

void SnippetDetailView::revert() {
    load();
}

void SnippetDetailView::followStore() {
    const std::optional<Snippet> stored = m_store.snippet(m_snippetId);
    if (!stored)
        return; // the window takes the pane away
    if (stored->command == m_base.command && stored->content == m_base.content &&
        stored->trigger == m_base.trigger && stored->categoryId == m_base.categoryId &&
        stored->matchCase == m_base.matchCase)
        return;
    // Fields the user left alone show the new value; edited ones keep the edit.
    if (m_form->command() == m_base.command)
        m_form->setCommand(stored->command);
    if (m_form->content() == m_base.content && stored->content != m_base.content)
        m_form->setContent(stored->content);
    if (m_form->trigger() == m_base.trigger)
        m_form->setTrigger(stored->trigger);
    if (m_form->matchCase() == m_base.matchCase)
        m_form->setMatchCase(stored->matchCase);
    if (m_form->categoryId() == m_store.shownCategoryId(m_base))
        m_form->setCategoryId(m_store.shownCategoryId(*stored));
    m_base = *stored;
    m_form->setSnippetId(m_snippetId); // checks the command against the library as it is now
    updateEdited();
}

void SnippetDetailView::updateEdited() {
    const bool edited = m_form->command() != m_base.command ||
                        m_form->content() != m_base.content ||
                        m_form->trigger() != m_base.trigger ||
                        m_form->matchCase() != m_base.matchCase ||
                        m_form->categoryId() != m_store.shownCategoryId(m_base) ||
                        !m_form->triggerOption()->chosenCure().isNull();
    m_saveButton->setEnabled(edited);
    m_editedMarker->setVisible(edited);
    if (edited == m_isEdited)
        return;
    m_isEdited = edited;
    emit editedChanged(edited);
}

bool SnippetDetailView::save() {
    const std::optional<Snippet> stored = m_store.snippet(m_snippetId);
    if (!stored)
        return true; // deleted meanwhile; nothing to save into
    // Only what the user changed: a field left alone keeps what the store has now.
    const QString command =
        m_form->command() != m_base.command ? m_form->command() : stored->command;
    const QString content =
        m_form->content() != m_base.content ? m_form->content() : stored->content;
    const std::optional<Snippet::Trigger> trigger =
        m_form->trigger() != m_base.trigger ? std::optional(m_form->trigger()) : std::nullopt;
    const std::optional<QUuid> category = m_form->categoryId() != m_store.shownCategoryId(m_base)
                                              ? std::optional(m_form->categoryId())
                                              : std::nullopt;
    const std::optional<bool> matchCase =
        m_form->matchCase() != m_base.matchCase ? std::optional(m_form->matchCase()) : std::nullopt;
    const std::optional<DataError> error =
        m_store.updateSnippet(*stored, command, content, category, trigger, matchCase);
    if (MessageBoxes::refused(error, this)) {
        m_form->showCommandError(StoreMessages::text(*error));
        return false;
    }
    MessageBoxes::refused(m_form->triggerOption()->applyChosenCure(), this);
    // The saved record: the fields already show what was saved, and what was left alone
    // takes what the store has now.
    load();
    emit saved(m_snippetId);
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

void SnippetDetailView::placeToast(bool shown) {
    m_toast->adjustSize();
    const int x = (width() - m_toast->width()) / 2;
    const QPoint visible(x, toastTop);
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
        m_toast->move((width() - m_toast->width()) / 2, toastTop);
}
