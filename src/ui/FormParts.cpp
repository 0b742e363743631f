#include "FormParts.h"

#include "StoreMessages.h"
#include <QDialog>
#include <QKeySequence>
#include <QShortcut>
#include "FormBand.h"

#include "PlainButton.h"
#include "PrimaryButtonStyle.h"
#include "SymbolImage.h"
#include "SymbolView.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

QLabel* FormParts::text(const QString& text, const QFont& font, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* FormParts::secondaryText(const QString& text, const QFont& font, QWidget* parent) {
    QLabel* label = FormParts::text(text, font, parent);
    UiTheme::setForeground(label, UiTheme::secondaryLabel(parent ? parent->palette()
                                                                 : label->palette()));
    return label;
}

QLabel* FormParts::coloredText(const QString& text, const QFont& font, const QColor& color,
                               QWidget* parent) {
    QLabel* label = FormParts::text(text, font, parent);
    // The hue says what it is (an error, a warning); it is deepened until it reads.
    UiTheme::setForeground(
        label, UiTheme::readable(color, (parent ? parent->palette() : label->palette())
                                            .color(QPalette::Window)));
    return label;
}

QWidget* FormParts::heading(const QString& title, const QString& hint, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(text(title, UiTheme::headline(), box));
    auto* hintLabel = secondaryText(hint, UiTheme::caption(), box);
    hintLabel->setWordWrap(true);
    column->addWidget(hintLabel);
    return box;
}

SymbolView* FormParts::symbol(const QString& symbolName, int pixelSize, const QColor& color,
                              QWidget* parent) {
    auto* view = new SymbolView(symbolName, pixelSize, parent);
    view->setColor(color);
    return view;
}

QWidget* FormParts::errorRow(const QString& message, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(symbol(QStringLiteral("exclamationmark.circle"), 12, UiTheme::red(), row));
    auto* label = coloredText(message, UiTheme::caption(), UiTheme::red(), row);
    label->setObjectName(QStringLiteral("errorMessage"));
    layout->addWidget(label, 1);
    return row;
}

QPushButton* FormParts::primaryButton(const QString& symbolName, const QString& text,
                                      int iconSpacing, QWidget* parent, QMargins labelPadding,
                                      int labelMinimumWidth) {
    auto* button = new QPushButton(text, parent);
    button->setIcon(
        QIcon(SymbolImage::pixmap(symbolName, 14,
                                  button->palette().color(QPalette::Active, QPalette::HighlightedText),
                                  button->devicePixelRatioF())));
    button->setIconSize(QSize(14, 14));
    button->setFont(UiTheme::system(14));
    PrimaryButtonStyle::apply(button, labelPadding, iconSpacing, labelMinimumWidth);
    return button;
}

PlainButton* FormParts::cancelButton(QWidget* parent) {
    auto* button =
        new PlainButton(QStringLiteral("xmark.circle.fill"), tr("Cancel"), parent);
    button->setFont(UiTheme::system(14));
    button->setSymbolSize(14);
    button->setSpacing(6);
    button->setPadding(QMargins(12, 6, 12, 6));
    button->setColorRole(UiTheme::secondaryTextRole);
    button->setToolTip(tr("Cancel"));
    return button;
}

QMessageBox* FormParts::deleteAlert(const QString& title, const QString& message, QWidget* parent) {
    auto* alert = new QMessageBox(parent);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(title);
    // Rich text for a bold title; the message is escaped so a command such as "<b>" shows
    // exactly as typed.
    alert->setTextFormat(Qt::RichText);
    alert->setText(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()));
    // pre-wrap: runs of spaces and line breaks stay as they are, so a command of spaces is
    // quoted faithfully.
    alert->setInformativeText(QStringLiteral("<span style=\"white-space:pre-wrap\">%1</span>")
                                  .arg(message.toHtmlEscaped()));
    if (auto* info = alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        info->setTextFormat(Qt::RichText);
        info->setWordWrap(true);
        info->setMinimumWidth(320);
        info->setMaximumWidth(420);
    }
    QPushButton* deleteButton =
        alert->addButton(tr("Delete"), QMessageBox::DestructiveRole);
    deleteButton->setObjectName(QStringLiteral("alertDeleteButton"));
    QPushButton* cancel = alert->addButton(tr("Cancel"), QMessageBox::RejectRole);
    cancel->setObjectName(QStringLiteral("alertCancelButton"));
    // Return never destroys: the safe answer is the default.
    alert->setDefaultButton(cancel);
    alert->setEscapeButton(cancel);
    return alert;
}

bool FormParts::refused(const std::optional<DataError>& error, QWidget* parent) {
    if (!error)
        return false;
    if (error->kind() != DataError::Kind::notSaved)
        return true;
    QMessageBox::warning(parent, tr("Could Not Save"), StoreMessages::text(*error));
    return false;
}

void FormParts::submitOnCtrlReturn(QWidget* owner, QAbstractButton* submit) {
    for (const QKeySequence& keys :
         {QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter)}) {
        auto* binding = new QShortcut(keys, owner);
        binding->setContext(Qt::WindowShortcut);
        QObject::connect(binding, &QShortcut::activated, submit, [submit] {
            if (submit->isEnabled())
                submit->click();
        });
    }
}

FormParts::AddFooter FormParts::addFooter(QDialog* sheet, const QString& toolTip) {
    auto* band = new FormBand(sheet);
    auto* buttons = new QHBoxLayout(band);
    buttons->setContentsMargins(16, 16, 16, 16);
    buttons->setSpacing(16);
    buttons->addStretch();
    PlainButton* cancel = cancelButton(band);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    buttons->addWidget(cancel);
    QPushButton* add = primaryButton(QStringLiteral("checkmark.circle.fill"), tr("Add"), 6, band);
    add->setObjectName(QStringLiteral("addButton"));
    add->setToolTip(toolTip);
    buttons->addWidget(add);
    QObject::connect(cancel, &QAbstractButton::clicked, sheet, &QDialog::reject);
    submitOnCtrlReturn(sheet, add);
    return {band, cancel, add};
}
