#include "AlertDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>

AlertDriver::AlertDriver(std::function<void(QMessageBox*)> action, QObject* parent)
    : QObject(parent), m_action(std::move(action)) {
    connect(&m_timer, &QTimer::timeout, this, &AlertDriver::poll);
    m_timer.start(10);
}

void AlertDriver::poll() {
    auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (alert == nullptr || !alert->isVisible())
        return;
    m_timer.stop();
    ++m_acted;
    m_seenText = alert->text();
    m_action(alert);
}

QAbstractButton* AlertDriver::buttonTitled(QMessageBox* alert, const QString& title) {
    const QList<QAbstractButton*> buttons = alert->buttons();
    for (QAbstractButton* button : buttons)
        if (QString(button->text()).remove(QLatin1Char('&')) == title) // mnemonics aside
            return button;
    return nullptr;
}

std::function<void(QMessageBox*)> AlertDriver::click(const QString& title) {
    return [title](QMessageBox* alert) {
        if (QAbstractButton* button = buttonTitled(alert, title)) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
        qWarning("no button titled %s", qPrintable(title));
        alert->done(-1);
    };
}
