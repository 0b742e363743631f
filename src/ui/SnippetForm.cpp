#include "SnippetForm.h"

#include "CustomTextEditor.h"
#include "FormDialog.h"
#include "PlaceholderBar.h"
#include "SnippetStore.h"
#include "TriggerOption.h"
#include "UiTheme.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <limits>

SnippetForm::SnippetForm(SnippetStore& store, QWidget* parent) : QWidget(parent), m_store(store) {
    setObjectName(QStringLiteral("snippetForm"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);

    auto* commandTitle = new QLabel(tr("Command"), this);
    column->addWidget(commandTitle);
    m_commandField = new QLineEdit(this);
    m_commandField->setObjectName(QStringLiteral("commandField"));
    m_commandField->setPlaceholderText(tr("Enter shortcut (e.g. ;hello)"));
    // QLineEdit stops at 32767 characters by default; saving must never cut a command.
    m_commandField->setMaxLength(std::numeric_limits<int>::max());
    m_commandField->setAccessibleName(tr("Command"));
    commandTitle->setBuddy(m_commandField);
    column->addWidget(m_commandField);
    m_commandError = FormDialog::errorLine(QString(), this);
    m_commandError->setObjectName(QStringLiteral("duplicateError"));
    m_commandErrorText = m_commandError->findChild<QLabel*>(QStringLiteral("errorMessage"));
    column->addWidget(m_commandError);

    auto* contentTitle = new QLabel(tr("Content"), this);
    column->addWidget(contentTitle);
    auto* contentRow = new QHBoxLayout();
    m_contentEditor = new CustomTextEditor(this);
    m_contentEditor->setObjectName(QStringLiteral("contentEditor"));
    m_contentEditor->setAccessibleName(tr("Content"));
    m_contentEditor->setPlaceholderText(tr("Enter your content here\u2026"));
    contentTitle->setBuddy(m_contentEditor);
    contentRow->addWidget(m_contentEditor, 1);
    m_placeholders = new PlaceholderBar(m_contentEditor, this);
    contentRow->addWidget(m_placeholders->menuButton(), 0, Qt::AlignTop);
    column->addLayout(contentRow, 1);
    column->addWidget(m_placeholders);
    m_cutContentNote = UiTheme::smallLabel(QString(), this);
    m_cutContentNote->setObjectName(QStringLiteral("cutContentNote"));
    m_cutContentNote->setVisible(false);
    column->addWidget(m_cutContentNote);

    m_triggerOption = new TriggerOption(m_store, this);
    column->addWidget(m_triggerOption);
    m_matchCase = new QCheckBox(tr("Match the command's case"), this);
    m_matchCase->setObjectName(QStringLiteral("matchCase"));
    m_matchCase->setToolTip(tr("The command is found in any letter case: typed with a capital "
                               "first letter, the content starts with a capital; typed all in "
                               "capitals, the content is typed in capitals."));
    column->addWidget(m_matchCase);

    auto* categoryRow = new QHBoxLayout();
    auto* categoryTitle = new QLabel(tr("Category"), this);
    categoryRow->addWidget(categoryTitle);
    m_categoryBox = new QComboBox(this);
    m_categoryBox->setObjectName(QStringLiteral("categoryBox"));
    m_categoryBox->setAccessibleName(tr("Category"));
    categoryTitle->setBuddy(m_categoryBox);
    categoryRow->addWidget(m_categoryBox);
    categoryRow->addStretch(1);
    column->addLayout(categoryRow);

    // Reading order: command, content, then the options.
    setTabOrder(m_commandField, m_contentEditor);
    setTabOrder(m_contentEditor, m_placeholders->menuButton());
    setTabOrder(m_placeholders->menuButton(), m_triggerOption->checkBox());
    setTabOrder(m_triggerOption->checkBox(), m_triggerOption->cureButton());
    setTabOrder(m_triggerOption->cureButton(), m_matchCase);
    setTabOrder(m_matchCase, m_categoryBox);

    // Warned while the command is typed, and for the stored one as it is shown.
    connect(m_commandField, &QLineEdit::textChanged, this,
            [this](const QString& command) { m_triggerOption->check(command, m_snippetId); });
    connect(m_commandField, &QLineEdit::textEdited, this, [this] {
        m_commandError->setVisible(false);
        emit edited();
    });
    connect(m_contentEditor, &CustomTextEditor::textEdited, this, &SnippetForm::edited);
    connect(m_triggerOption, &TriggerOption::triggerEdited, this, &SnippetForm::edited);
    connect(m_triggerOption, &TriggerOption::chosenCureChanged, this, &SnippetForm::edited);
    // Every change of the box but the form's own (which it makes with signals blocked).
    connect(m_categoryBox, &QComboBox::currentIndexChanged, this, &SnippetForm::edited);
    connect(m_matchCase, &QCheckBox::clicked, this, &SnippetForm::edited);
    // Both decide which other commands clash with this one.
    const auto updateClashContext = [this] {
        m_triggerOption->setContext(matchCase(), categoryId());
    };
    connect(m_matchCase, &QCheckBox::toggled, this, updateClashContext);
    connect(m_categoryBox, &QComboBox::currentIndexChanged, this, updateClashContext);
    connect(&m_store, &SnippetStore::categoriesChanged, this, &SnippetForm::fillCategories);
    fillCategories();
}

void SnippetForm::setSnippetId(const QUuid& id) {
    m_snippetId = id;
    m_triggerOption->check(command(), m_snippetId);
}

QString SnippetForm::command() const {
    return m_commandField->text();
}

void SnippetForm::setCommand(const QString& command) {
    if (command == m_commandField->text())
        return;
    m_commandField->setText(command);
    m_commandField->setCursorPosition(0);
}

QString SnippetForm::content() const {
    return m_cutContent ? *m_cutContent : m_contentEditor->text();
}

Snippet::Trigger SnippetForm::trigger() const {
    return m_triggerOption->trigger();
}

void SnippetForm::setTrigger(Snippet::Trigger trigger) {
    m_triggerOption->setTrigger(trigger);
}

bool SnippetForm::matchCase() const {
    return m_matchCase->isChecked();
}

void SnippetForm::setMatchCase(bool matchCase) {
    m_matchCase->setChecked(matchCase);
}

QUuid SnippetForm::categoryId() const {
    return m_categoryBox->currentData().toUuid();
}

void SnippetForm::setCategoryId(const QUuid& id) {
    m_shownCategory = id;
    {
        const QSignalBlocker quiet(m_categoryBox);
        m_categoryBox->setCurrentIndex(m_categoryBox->findData(id));
    }
    m_triggerOption->setContext(matchCase(), categoryId());
}

void SnippetForm::fillCategories() {
    // A rename or a new category keeps the choice; a chosen category that is gone falls back
    // to the one the form was given.
    const QUuid chosen = m_categoryBox->count() > 0 ? categoryId() : m_shownCategory;
    const QSignalBlocker quiet(m_categoryBox);
    m_categoryBox->clear();
    for (const Category& category : m_store.categories())
        m_categoryBox->addItem(category.name, category.id);
    const int index = m_categoryBox->findData(chosen);
    m_categoryBox->setCurrentIndex(index >= 0 ? index : m_categoryBox->findData(m_shownCategory));
    m_triggerOption->setContext(matchCase(), categoryId());
}

void SnippetForm::showCommandError(const QString& message) {
    m_commandErrorText->setText(message);
    m_commandError->setVisible(true);
}

bool SnippetForm::showingCommandError() const {
    return !m_commandError->isHidden();
}

QWidget* SnippetForm::lastControl() const {
    return m_categoryBox;
}

bool SnippetForm::isEditable(const QString& content) {
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

void SnippetForm::setContent(const QString& content) {
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
