#include "QuitConfirmation.h"

#include "AppWindows.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <memory>

QString QuitConfirmation::messageText() { return tr("Quit Typolet?"); }
QString QuitConfirmation::informativeText() {
    return tr("Do you want to quit Typolet completely or keep it running in the background?");
}
QString QuitConfirmation::noTrayText() {
    return tr("This desktop has no system tray, so Typolet shows no icon while it runs in the "
              "background. To bring its window back, start Typolet again from the application "
              "menu.");
}

QuitConfirmation::QuitConfirmation(AppWindows& windows) : m_windows(windows) {}

QMessageBox* QuitConfirmation::createAlert(QWidget* parent, bool hasTray) {
    auto* alert = new QMessageBox(parent);
    alert->setWindowTitle(QStringLiteral("Typolet"));
    alert->setText(messageText());
    alert->setInformativeText(hasTray ? informativeText()
                                      : informativeText() + QStringLiteral("\n\n") + noTrayText());
    alert->setIcon(QMessageBox::NoIcon);
    // The question stands out above its explanation.
    if (auto* question = alert->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont bold = question->font();
        bold.setBold(true);
        question->setFont(bold);
    }
    // One role for all three keeps them in the order they are added, whatever order the
    // desktop would give accept and reject buttons.
    // Each answer has its Alt key: Q, R, C.
    QPushButton* quit = alert->addButton(tr("&Quit"), QMessageBox::ActionRole);
    quit->setObjectName(QStringLiteral("quitButton"));
    QPushButton* background = alert->addButton(tr("&Run in Background"), QMessageBox::ActionRole);
    background->setObjectName(QStringLiteral("runInBackgroundButton"));
    QPushButton* cancel = alert->addButton(tr("&Cancel"), QMessageBox::ActionRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    // Some breathing room around the titles, which the default style keeps tight.
    const QList<QAbstractButton*> buttons = alert->buttons();
    for (QAbstractButton* button : buttons)
        button->setMinimumWidth(button->sizeHint().width() + 16);
    alert->setDefaultButton(quit);
    alert->setEscapeButton(cancel);
    return alert;
}

QuitConfirmation::Response QuitConfirmation::ask(QWidget* parent) {
    const std::unique_ptr<QMessageBox> alert(
        createAlert(parent, QSystemTrayIcon::isSystemTrayAvailable()));
    alert->setWindowModality(Qt::ApplicationModal);
    alert->exec();
    QAbstractButton* clicked = alert->clickedButton();
    const QString answer = clicked != nullptr ? clicked->objectName() : QString();
    if (answer == QLatin1String("quitButton"))
        return Response::Quit;
    if (answer == QLatin1String("runInBackgroundButton"))
        return Response::RunInBackground;
    return Response::Cancel;
}

bool QuitConfirmation::confirmQuit() {
    switch (ask()) {
    case Response::Quit:
        return true;
    case Response::RunInBackground:
        m_windows.hideAll();
        return false;
    case Response::Cancel:
        break;
    }
    return false;
}
