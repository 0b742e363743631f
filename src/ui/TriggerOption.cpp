#include "TriggerOption.h"

#include "StoreMessages.h"
#include "SnippetStore.h"
#include "UiTheme.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

TriggerOption::TriggerOption(SnippetStore& store, QWidget* parent)
    : QWidget(parent), m_store(store) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);

    m_checkBox = new QCheckBox(tr("Expand only after a word ends"), this);
    m_checkBox->setObjectName(QStringLiteral("afterWordEnd"));
    m_checkBox->setToolTip(tr("Wait for a space, Tab, Return or punctuation after the command; "
                              "it stays after the content."));
    column->addWidget(m_checkBox);

    m_warning = UiTheme::smallLabel(QString(), this);
    m_warning->setObjectName(QStringLiteral("clashWarning"));
    column->addWidget(m_warning);
    m_cure = new QPushButton(this);
    m_cure->setObjectName(QStringLiteral("clashCure"));
    m_cure->setAutoDefault(false);
    column->addWidget(m_cure, 0, Qt::AlignLeft);
    m_warning->setVisible(false);
    m_cure->setVisible(false);

    connect(m_checkBox, &QCheckBox::toggled, this, [this] {
        check(m_command, m_snippetId);
        if (!m_settingTrigger)
            emit triggerEdited();
    });
    connect(m_cure, &QPushButton::clicked, this, &TriggerOption::cure);
}

Snippet::Trigger TriggerOption::trigger() const {
    return m_checkBox->isChecked() ? Snippet::Trigger::AfterWordEnd : Snippet::Trigger::Immediately;
}

void TriggerOption::setTrigger(Snippet::Trigger trigger) {
    m_settingTrigger = true;
    m_checkBox->setChecked(trigger == Snippet::Trigger::AfterWordEnd);
    m_settingTrigger = false;
}

bool TriggerOption::showingClash() const { return bool(m_clash); }

void TriggerOption::check(const QString& command, const QUuid& snippetId) {
    // A cure was chosen for the command as it was; another command needs its own choice.
    if (!m_chosenCure.isNull() && (command != m_command || snippetId != m_snippetId))
        forgetChosenCure();
    m_command = command;
    m_snippetId = snippetId;
    const QString shown = m_warning->text();
    QSet<QUuid> waiting;
    if (!m_chosenCure.isNull())
        waiting.insert(m_chosenCure);
    m_clash = m_store.commandClash(command, snippetId, trigger(), waiting, m_matchCase, m_categoryId);
    if (showingClash()) {
        m_warning->setText(StoreMessages::text(m_clash));
        m_cure->setText(
            tr("Expand \u201C%1\u201D only after a word ends").arg(m_clash.shorterCommand));
    } else if (!m_chosenCure.isNull()) {
        m_warning->setText(tr("When this snippet is saved, \u201C%1\u201D will expand only "
                              "after a word ends.")
                               .arg(m_chosenCureCommand));
    } else {
        m_warning->clear();
    }
    m_warning->setVisible(!m_warning->text().isEmpty());
    m_cure->setVisible(showingClash() && !m_clash.shorterCommand.isEmpty());
    if (m_warning->text() != shown)
        emit warningChanged();
}

void TriggerOption::setContext(bool matchCase, const QUuid& categoryId) {
    if (matchCase == m_matchCase && categoryId == m_categoryId)
        return;
    m_matchCase = matchCase;
    m_categoryId = categoryId;
    check(m_command, m_snippetId);
}

void TriggerOption::forgetChosenCure() {
    if (m_chosenCure.isNull())
        return;
    m_chosenCure = QUuid();
    m_chosenCureCommand.clear();
    emit chosenCureChanged();
}

void TriggerOption::cure() {
    if (m_clash.shorterId.isNull()) {
        m_checkBox->setChecked(true); // this command is the shorter one
        return;
    }
    // The other snippet is only changed with this form's own save.
    m_chosenCure = m_clash.shorterId;
    m_chosenCureCommand = m_clash.shorterCommand;
    check(m_command, m_snippetId);
    emit chosenCureChanged();
}

std::optional<DataError> TriggerOption::applyChosenCure() {
    const QUuid id = m_chosenCure;
    forgetChosenCure();
    const std::optional<Snippet> other = id.isNull() ? std::nullopt : m_store.snippet(id);
    std::optional<DataError> error;
    if (other && !other->expandsAfterWordEnd())
        error = m_store.updateSnippet(*other, other->command, other->content, std::nullopt,
                                      Snippet::Trigger::AfterWordEnd);
    check(m_command, m_snippetId);
    return error;
}
