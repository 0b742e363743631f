// The question asked before quitting: its buttons, and the answers given by keys.
// What each answer does is tested through the tray controller.

#include "QuitConfirmation.h"
#include "AlertDriver.h"
#include "IsolatedTestMain.h"

#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

using Response = QuitConfirmation::Response;

class QuitConfirmationTest : public QObject {
    Q_OBJECT
private slots:
    void alertAsksWithThreeButtonsInOrder();
    void keysAndClosingAnswerToo();
};

void QuitConfirmationTest::alertAsksWithThreeButtonsInOrder() {
    std::unique_ptr<QMessageBox> alert(QuitConfirmation::createAlert());
    alert->show();
    QVERIFY(QTest::qWaitForWindowExposed(alert.get()));
    // Without a tray, running in the background leaves nothing on screen: the way back is told.
    const QString wayBack = QStringLiteral("start Typolet again from the application menu");
    QVERIFY(!alert->informativeText().contains(wayBack));
    QVERIFY(std::unique_ptr<QMessageBox>(QuitConfirmation::createAlert(nullptr, false))
                ->informativeText()
                .contains(wayBack));

    QAbstractButton* quit = AlertDriver::buttonTitled(alert.get(), QStringLiteral("Quit"));
    QAbstractButton* background =
        AlertDriver::buttonTitled(alert.get(), QStringLiteral("Run in Background"));
    QAbstractButton* cancel = AlertDriver::buttonTitled(alert.get(), QStringLiteral("Cancel"));
    QVERIFY(quit && background && cancel);
    QCOMPARE(alert->buttons().size(), 3);
    // Each has a key of its own.
    for (const QAbstractButton* button : {quit, background, cancel})
        QVERIFY(!QKeySequence::mnemonic(button->text()).isEmpty());
    // Left to right in this order, whatever the desktop's button conventions.
    const auto x = [&](QAbstractButton* b) { return b->mapTo(alert.get(), QPoint(0, 0)).x(); };
    QVERIFY(x(quit) < x(background));
    QVERIFY(x(background) < x(cancel));
}

// Return gives the default answer, Quit; Escape and closing the alert cancel.
void QuitConfirmationTest::keysAndClosingAnswerToo() {
    const auto key = [](Qt::Key k) {
        return [k](QMessageBox* alert) { QTest::keyClick(alert, k); };
    };
    const struct {
        const char* how;
        std::function<void(QMessageBox*)> act;
        Response answer;
    } cases[] = {
        {"Return", key(Qt::Key_Return), Response::Quit},
        {"Escape", key(Qt::Key_Escape), Response::Cancel},
        // An Alt key is a shortcut: it reaches the buttons once the alert is the active window.
        {"Alt+R",
         [](QMessageBox* alert) {
             QVERIFY(QTest::qWaitForWindowActive(alert));
             QTest::keyClick(alert, Qt::Key_R, Qt::AltModifier);
         },
         Response::RunInBackground},
        {"closed", [](QMessageBox* alert) { alert->close(); }, Response::Cancel},
    };
    for (const auto& c : cases) {
        AlertDriver driver(c.act);
        QVERIFY2(QuitConfirmation::ask() == c.answer, c.how);
        QCOMPARE(driver.acted(), 1);
    }
}

TYPOLET_ISOLATED_TEST_MAIN(QuitConfirmationTest)
#include "QuitConfirmationTest.moc"
