#include "AddSnippetDialog.h"

#include "CustomTextEditor.h"
#include "Divider.h"
#include "FocusableTextField.h"
#include "FormBand.h"
#include "FormParts.h"
#include "InputFieldFrame.h"
#include "PlaceholderBar.h"
#include "PlainButton.h"
#include "SnippetStore.h"
#include "SymbolView.h"
#include "TriggerOption.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

AddSnippetDialog::AddSnippetDialog(SnippetStore& store, const QUuid& categoryId,
                                 AddedHandler onAdded,
                                 QWidget* parent)
    : QDialog(parent), m_store(store), m_categoryId(categoryId),
      m_onAdded(std::move(onAdded)) {
    setObjectName(QStringLiteral("addSnippetDialog"));
    setWindowTitle(tr("New Snippet"));
    setWindowModality(Qt::WindowModal);
    setFixedSize(sheetWidth, sheetHeight);
    setAutoFillBackground(true);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);

    // Header
    auto* header = new FormBand(this);
    auto* headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(24, 16, 24, 16);
    headerRow->addWidget(FormParts::text(tr("New Snippet"), UiTheme::title2(), header));
    headerRow->addStretch();
    root->addWidget(header);

    // Form
    auto* form = new QVBoxLayout();
    form->setContentsMargins(32, 24, 32, 24);
    form->setSpacing(24);

    auto* commandSection = new QVBoxLayout();
    commandSection->setSpacing(8);
    commandSection->addWidget(FormParts::heading(
        tr("Command"),
        tr("Enter a unique shortcut command that will expand to your content"), this));
    m_commandFrame = new InputFieldFrame(8, 10, this);
    m_commandField =
        new FocusableTextField(tr("Enter shortcut (e.g. ;hello)"), m_commandFrame);
    m_commandField->setObjectName(QStringLiteral("commandField"));
    m_commandField->setAccessibleName(tr("Command"));
    m_commandField->setFont(UiTheme::body());
    m_commandFrame->row()->addWidget(m_commandField, 1);
    commandSection->addWidget(m_commandFrame);
    m_errorRow = FormParts::errorRow(tr("This command already exists"), this);
    m_errorRow->setObjectName(QStringLiteral("duplicateError"));
    m_errorRow->setVisible(false);
    commandSection->addWidget(m_errorRow);
    m_triggerOption = new TriggerOption(m_store, this);
    commandSection->addWidget(m_triggerOption);
    form->addLayout(commandSection);

    auto* contentSection = new QVBoxLayout();
    contentSection->setSpacing(8);
    contentSection->addWidget(
        FormParts::heading(tr("Content"),
                           tr("Enter the text that will replace your command"), this));
    auto* contentFrame = new InputFieldFrame(8, 8, this);
    // 140 high; a little less while the placeholder lines below it show, so the sheet keeps
    // its size.
    contentFrame->setMinimumHeight(100);
    contentFrame->setMaximumHeight(140);
    m_contentEditor = new CustomTextEditor(contentFrame);
    m_contentEditor->setObjectName(QStringLiteral("contentEditor"));
    m_contentEditor->setAccessibleName(tr("Content"));
    m_contentEditor->setFont(UiTheme::system(13));
    contentFrame->row()->addWidget(m_contentEditor);
    m_placeholders = new PlaceholderBar(m_contentEditor, this);
    contentFrame->row()->addWidget(m_placeholders->menuButton(), 0, Qt::AlignTop);
    // Where the first typed line appears: just inside the editor's first line.
    m_contentPlaceholder = FormParts::secondaryText(tr("Enter your content here\u2026"),
                                                    UiTheme::body(), contentFrame);
    m_contentPlaceholder->setObjectName(QStringLiteral("contentPlaceholder"));
    m_contentPlaceholder->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_contentPlaceholder->adjustSize();
    m_contentPlaceholder->move(8, 8 + CustomTextEditor::verticalInset);
    contentSection->addWidget(contentFrame);
    contentSection->addWidget(m_placeholders);
    form->addLayout(contentSection);
    root->addLayout(form);
    root->addStretch(1);

    root->addWidget(new Divider(Qt::Horizontal, this));

    const FormParts::AddFooter footer = FormParts::addFooter(this, tr("Add Snippet"));
    m_cancelButton = footer.cancel;
    m_addButton = footer.add;
    root->addWidget(footer.band);

    connect(m_addButton, &QAbstractButton::clicked, this, &AddSnippetDialog::add);
    connect(m_commandField, &FocusableTextField::editingChanged, this, [this](bool editing) {
        m_isCommandFieldFocused = editing;
        m_commandFrame->setHighlighted(editing);
    });
    connect(m_commandField, &QLineEdit::textChanged, this, [this] {
        // Any edit of the command takes back the duplicate message.
        setShowingDuplicateError(false);
        updateState();
    });
    connect(m_contentEditor, &CustomTextEditor::textEdited, this, &AddSnippetDialog::updateState);
    connect(m_triggerOption, &TriggerOption::warningChanged, this, &AddSnippetDialog::fitHeight);
    updateState();
}

QString AddSnippetDialog::command() const {
    return m_commandField->text();
}
QString AddSnippetDialog::content() const {
    return m_contentEditor->text();
}

void AddSnippetDialog::updateState() {
    const bool contentEmpty = m_contentEditor->document()->isEmpty();
    m_contentPlaceholder->setVisible(contentEmpty);
    m_addButton->setEnabled(!SnippetStore::isBlankCommand(command()) && !contentEmpty);
    m_triggerOption->check(command(), QUuid());
}

void AddSnippetDialog::fitHeight() {
    // Taller while a warning under the command needs the room, never narrower.
    QLayout* root = layout();
    const int needed = root->hasHeightForWidth() ? root->totalHeightForWidth(sheetWidth)
                                                 : root->totalSizeHint().height();
    setFixedHeight(std::max(sheetHeight, needed));
}

void AddSnippetDialog::setShowingDuplicateError(bool showing) {
    m_showingDuplicateError = showing;
    m_errorRow->setVisible(showing);
}

void AddSnippetDialog::add() {
    const QString command = this->command();
    const QString content = this->content();
    if (content.isEmpty())
        return;
    const Snippet snippet =
        Snippet::create(command, content, m_categoryId, m_triggerOption->trigger());
    // The only refusal left once Add is enabled is a command in use.
    if (FormParts::refused(m_store.addSnippet(snippet), this)) {
        setShowingDuplicateError(true);
        return;
    }
    FormParts::refused(m_triggerOption->applyChosenCure(), this);
    if (m_onAdded)
        m_onAdded(snippet);
    accept();
}
