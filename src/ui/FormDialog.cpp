#include "FormDialog.h"

#include "SymbolImage.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>
#include <limits>

FormDialog::FormDialog(const QString& title, const QString& submitText, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    setMinimumWidth(400);
    auto* root = new QVBoxLayout(this);
    m_form = new QVBoxLayout();
    root->addLayout(m_form, 1);
    m_buttons = new QDialogButtonBox(this);
    // Standard buttons: the desktop's order, and its icons where the desktop shows them.
    m_submit = m_buttons->addButton(QDialogButtonBox::Ok);
    m_submit->setText(submitText);
    m_submit->setObjectName(QStringLiteral("submitButton"));
    m_cancel = m_buttons->addButton(QDialogButtonBox::Cancel);
    m_cancel->setObjectName(QStringLiteral("cancelButton"));
    root->addWidget(m_buttons);
    connect(m_submit, &QAbstractButton::clicked, this, &FormDialog::submit);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    submitOnCtrlReturn(this, m_submit);
    setReturnSubmits(true);
}

void FormDialog::setReturnSubmits(bool submits) {
    // QDialog presses its default button on Return; without one Return does nothing.
    m_returnSubmits = submits;
    m_submit->setDefault(submits);
    m_submit->setAutoDefault(submits);
    m_cancel->setAutoDefault(submits);
}

void FormDialog::submitOnCtrlReturn(QWidget* owner, QAbstractButton* submit) {
    for (const QKeySequence& keys :
         {QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter)}) {
        auto* binding = new QShortcut(keys, owner);
        binding->setContext(Qt::WindowShortcut);
        QObject::connect(binding, &QShortcut::activated, submit, [submit] {
            if (submit->isEnabled() && submit->isVisible())
                submit->click();
        });
    }
}

QWidget* FormDialog::errorLine(const QString& message, QWidget* parent) {
    auto* line = new QWidget(parent);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    auto* icon = new QLabel(line);
    const int size = line->style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(SymbolImage::icon(QStringLiteral("dialog-error")).pixmap(size, size));
    row->addWidget(icon, 0, Qt::AlignTop);
    auto* text = new QLabel(message, line);
    text->setObjectName(QStringLiteral("errorMessage"));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    row->addWidget(text, 1);
    line->setVisible(false);
    return line;
}

QLineEdit* FormDialog::addField(const QString& title, const QString& placeholder,
                                const QString& accessibleName) {
    auto* titleLabel = new QLabel(title, this);
    m_form->addWidget(titleLabel);
    auto* field = new QLineEdit(this);
    field->setPlaceholderText(placeholder);
    field->setAccessibleName(accessibleName);
    field->setMaxLength(std::numeric_limits<int>::max()); // never cut a stored text
    titleLabel->setBuddy(field);
    m_form->addWidget(field);
    m_error = errorLine(QString(), this);
    m_error->setObjectName(QStringLiteral("duplicateError"));
    m_form->addWidget(m_error);
    m_form->addStretch(1);
    connect(field, &QLineEdit::textChanged, m_error, &QWidget::hide);
    return field;
}

void FormDialog::showError(const QString& message) {
    m_error->findChild<QLabel*>(QStringLiteral("errorMessage"))->setText(message);
    m_error->setVisible(true);
}

void FormDialog::hideError() {
    if (m_error)
        m_error->hide();
}

bool FormDialog::showingError() const {
    return m_error && !m_error->isHidden();
}

void FormDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // The button box has just made its accepting button the default, as it does when shown.
    if (!m_returnSubmits)
        m_submit->setDefault(false);
}
