#include "FillInForm.h"

#include "WindowPlacement.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

FillInForm::FillInForm(RecentFieldValues::Clock clock, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::WindowStaysOnTopHint), m_recent(std::move(clock)),
      m_fieldArea(new QWidget(this)), m_fieldLayout(new QFormLayout(m_fieldArea)),
      m_note(new QLabel(this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
    setObjectName(QStringLiteral("fillInForm"));
    setAttribute(Qt::WA_QuitOnClose, false);
    m_fieldLayout->setContentsMargins(0, 0, 0, 0);
    m_note->setObjectName(QStringLiteral("fillInNote"));
    m_note->setWordWrap(true);
    m_note->hide();
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("Type"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &FillInForm::finish);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &FillInForm::close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_fieldArea);
    layout->addWidget(m_note);
    layout->addStretch();
    layout->addWidget(m_buttons);
}

void FillInForm::clearFields() {
    while (m_fieldLayout->rowCount() > 0)
        m_fieldLayout->removeRow(0); // deletes the label and the input
    m_inputs.clear();
    m_fields.clear();
}

void FillInForm::present(const Snippet& snippet, const QRect& around) {
    clearFields();
    m_snippet = snippet.id;
    m_answered = false;
    m_note->hide();
    m_fieldArea->show();
    m_buttons->show();
    setWindowTitle(snippet.command.isEmpty() ? tr("Fill In")
                                             : tr("Fill In “%1”").arg(snippet.command));
    const QHash<QString, QString> recent = m_recent.recall(snippet.id);
    m_fields = PlaceholderText(snippet.content).formFields();
    QWidget* previous = nullptr;
    for (const PlaceholderText::FormField& field : std::as_const(m_fields)) {
        const QString value = recent.value(field.name, PlaceholderText::defaultValue(field));
        QWidget* input = nullptr;
        switch (field.kind) {
        case PlaceholderText::Kind::Choice: {
            auto* box = new QComboBox(m_fieldArea);
            box->addItems(field.options);
            box->setCurrentIndex(std::max(0, int(field.options.indexOf(value))));
            input = box;
            break;
        }
        case PlaceholderText::Kind::Area: {
            auto* area = new QPlainTextEdit(m_fieldArea);
            area->setTabChangesFocus(true); // Tab goes on to the next field, as elsewhere
            area->setPlainText(value);
            area->moveCursor(QTextCursor::End); // added to, as a line field's text is replaced
            area->setFixedHeight(area->fontMetrics().lineSpacing() * 4 + 12);
            input = area;
            break;
        }
        default: {
            auto* line = new QLineEdit(value, m_fieldArea);
            line->selectAll(); // typed over at once, or kept with Tab
            input = line;
            break;
        }
        }
        input->setAccessibleName(field.name);
        input->installEventFilter(this);
        m_fieldLayout->addRow(field.name + QLatin1Char(':'), input);
        if (previous)
            setTabOrder(previous, input);
        previous = input;
        m_inputs.append(input);
    }
    adjustSize();
    resize(std::max(width(), 360), height());
    move(WindowPlacement::topLeft(size(), around));
    show();
    raise();
    activateWindow();
    if (!m_inputs.isEmpty())
        m_inputs.first()->setFocus();
}

void FillInForm::showNote(const QString& note) {
    clearFields();
    m_answered = true;
    m_fieldArea->hide();
    m_buttons->hide();
    m_note->setText(note);
    m_note->show();
    adjustSize();
    show();
    raise();
    activateWindow();
    setFocus();
}

QString FillInForm::noteText() const {
    return m_note->isVisible() ? m_note->text() : QString();
}

QHash<QString, QString> FillInForm::values() const {
    QHash<QString, QString> values;
    for (qsizetype i = 0; i < m_inputs.size(); ++i) {
        QWidget* input = m_inputs.at(i);
        QString value;
        if (const auto* line = qobject_cast<QLineEdit*>(input))
            value = line->text();
        else if (const auto* box = qobject_cast<QComboBox*>(input))
            value = box->currentText();
        else if (const auto* area = qobject_cast<QPlainTextEdit*>(input))
            value = area->toPlainText();
        values.insert(m_fields.at(i).name, value);
    }
    return values;
}

void FillInForm::finish() {
    if (m_answered)
        return;
    m_answered = true;
    const QHash<QString, QString> given = values();
    m_recent.remember(m_snippet, given);
    hide();
    emit filled(given);
}

void FillInForm::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    if (!std::exchange(m_answered, true))
        emit dismissed();
}

bool FillInForm::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        const bool control = key->modifiers().testFlag(Qt::ControlModifier);
        if (key->key() == Qt::Key_Escape) {
            close();
            return true;
        }
        // In a field of several lines Return is a line break; Ctrl+Return finishes everywhere.
        if (isReturn && (control || !qobject_cast<QPlainTextEdit*>(watched))) {
            finish();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FillInForm::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape || (isReturn && m_answered)) {
        close();
        return;
    }
    if (isReturn) {
        finish();
        return;
    }
    QWidget::keyPressEvent(event);
}
