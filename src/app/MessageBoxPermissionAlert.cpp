#include "MessageBoxPermissionAlert.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

MessageBoxPermissionAlert::MessageBoxPermissionAlert(UrlOpener opener)
    : m_opener(opener ? std::move(opener)
                      : UrlOpener([](const QUrl& url) { return QDesktopServices::openUrl(url); })) {
}

QUrl MessageBoxPermissionAlert::openableUrl(const QUrl& url) {
    if (url.scheme() != QLatin1String("qrc"))
        return url;
    QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    QDir().mkpath(folder);
    const QString target = QDir(folder).filePath(url.fileName());
    QFile::remove(target);
    if (!QFile::copy(QLatin1Char(':') + url.path(), target))
        return {};
    QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return QUrl::fromLocalFile(target);
}

void MessageBoxPermissionAlert::showPermissionAlert(const QString& title, const QString& message,
                                                    const QString& helpUrl) {
    QMessageBox alert(QMessageBox::Warning, title, title);
    alert.setInformativeText(message);
    // Buttons in the order given; the first is the default and answers 1000.
    QPushButton* open =
        alert.addButton(QCoreApplication::translate("MessageBoxPermissionAlert", "Open Help"), QMessageBox::AcceptRole);
    alert.addButton(QCoreApplication::translate("MessageBoxPermissionAlert", "Later"), QMessageBox::RejectRole);
    alert.setDefaultButton(open);
    alert.exec();
    const int response =
        alert.clickedButton() == open ? firstButtonResponse : firstButtonResponse + 1;
    if (response != firstButtonResponse)
        return;
    const QUrl url(helpUrl);
    if (!url.isValid())
        return;
    const QUrl target = openableUrl(url);
    if (target.isValid())
        m_opener(target);
}
