#include "MessageBoxes.h"

#include "StoreMessages.h"
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

QMessageBox* MessageBoxes::confirmDelete(const QString& title, const QString& message,
                                         QWidget* parent) {
    auto* box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(title);
    // Rich text for a bold title; the message is escaped so a command such as "<b>" shows
    // exactly as typed.
    box->setTextFormat(Qt::RichText);
    box->setText(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()));
    // pre-wrap: runs of spaces and line breaks stay as they are, so a command of spaces is
    // quoted faithfully.
    box->setInformativeText(QStringLiteral("<span style=\"white-space:pre-wrap\">%1</span>")
                                .arg(message.toHtmlEscaped()));
    if (auto* info = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        info->setTextFormat(Qt::RichText);
        info->setWordWrap(true);
        info->setMinimumWidth(320);
        info->setMaximumWidth(420);
    }
    QPushButton* deleteButton = box->addButton(tr("Delete"), QMessageBox::DestructiveRole);
    deleteButton->setObjectName(QStringLiteral("alertDeleteButton"));
    QPushButton* cancel = box->addButton(QMessageBox::Cancel);
    cancel->setObjectName(QStringLiteral("alertCancelButton"));
    // Return never destroys: the safe answer is the default.
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    return box;
}

bool MessageBoxes::refused(const std::optional<DataError>& error, QWidget* parent) {
    if (!error)
        return false;
    if (!error->isUnsaved())
        return true;
    QMessageBox::warning(parent, tr("Could Not Save"), StoreMessages::text(*error));
    return false;
}
