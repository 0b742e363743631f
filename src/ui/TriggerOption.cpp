#include "TriggerOption.h"

#include "FormParts.h"
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
    m_checkBox->setFont(UiTheme::caption());
    m_checkBox->setToolTip(tr("Wait for a space, Tab, Return or punctuation after the command; "
                              "it stays after the content."));
    column->addWidget(m_checkBox);

    m_warning = FormParts::coloredText(QString(), UiTheme::caption(), UiTheme::orange(), this);
    m_warning->setObjectName(QStringLiteral("clashWarning"));
    m_warning->setWordWrap(true);
    column->addWidget(m_warning);
    m_cure = new QPushButton(this);
    m_cure->setObjectName(QStringLiteral("clashCure"));
    m_cure->setFont(UiTheme::caption());
    m_cure->setFlat(true);
    m_cure->setCursor(Qt::PointingHandCursor);
    m_cure->setStyleSheet(QStringLiteral("QPushButton { color: %1; text-align: left; padding: 0; }")
                              .arg(UiTheme::accent(this).name()));
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

bool TriggerOption::showingClash() const { return !m_clash.message.isEmpty(); }

void TriggerOption::check(const QString& command, const QUuid& snippetId) {
    m_command = command;
    m_snippetId = snippetId;
    const QString shown = m_clash.message;
    m_clash = m_store.commandClash(command, snippetId, trigger());
    m_warning->setText(m_clash.message);
    m_cure->setText(tr("Expand \u201C%1\u201D only after a word ends").arg(m_clash.shorterCommand));
    m_warning->setVisible(showingClash());
    m_cure->setVisible(showingClash() && !m_clash.shorterCommand.isEmpty());
    if (m_clash.message != shown)
        emit warningChanged();
}

void TriggerOption::cure() {
    if (m_clash.shorterId.isNull()) {
        m_checkBox->setChecked(true); // this command is the shorter one
        return;
    }
    // The other snippet waits from now on; that is a change of it, saved at once.
    for (const Snippet& other : m_store.snippets()) {
        if (other.id != m_clash.shorterId)
            continue;
        FormParts::refused(m_store.updateSnippet(other, other.command, other.content,
                                                 std::nullopt, Snippet::Trigger::AfterWordEnd),
                           this);
        break;
    }
    check(m_command, m_snippetId);
}
