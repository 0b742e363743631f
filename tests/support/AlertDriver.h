#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>

class QAbstractButton;
class QMessageBox;

// Answers the next application-modal alert once it is on screen, so code that blocks in an
// alert's modal loop can be tested. Polls the event loop that the alert itself runs.
class AlertDriver : public QObject {
    Q_OBJECT
public:
    explicit AlertDriver(std::function<void(QMessageBox*)> action, QObject* parent = nullptr);

    // Clicks the button with this title. Without such a button the alert is closed with an
    // unknown answer and a warning, so a test fails instead of hanging.
    static std::function<void(QMessageBox*)> click(const QString& title);
    static QAbstractButton* buttonTitled(QMessageBox* alert, const QString& title);

    // How many alerts it has acted on (it acts on one, then stops).
    int acted() const { return m_acted; }
    // The message text of the alert it acted on.
    QString seenText() const { return m_seenText; }

private:
    void poll();

    QTimer m_timer;
    std::function<void(QMessageBox*)> m_action;
    int m_acted = 0;
    QString m_seenText;
};
