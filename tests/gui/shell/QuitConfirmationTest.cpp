// The question asked before quitting: its texts and buttons, and what each answer does.

#include "QuitConfirmation.h"
#include "ActivationPolicy.h"
#include "AlertDriver.h"
#include "IsolatedTestMain.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {
const auto click = &AlertDriver::click;
const auto buttonTitled = &AlertDriver::buttonTitled;

// Two windows standing for the main window and Preferences.
struct Windows {
    QWidget main;
    QWidget preferences;
    Windows() {
        main.show();
        preferences.show();
    }
    bool allVisible() const { return main.isVisible() && preferences.isVisible(); }
    bool noneVisible() const { return !main.isVisible() && !preferences.isVisible(); }
};
} // namespace

class QuitConfirmationTest : public QObject {
    Q_OBJECT
private slots:
    void alertAsksWithThreeButtonsInOrder();
    void eachButtonGivesItsAnswer_data();
    void eachButtonGivesItsAnswer();
    void escapeAndClosingCancel();
    void quitLetsTerminationGoAhead();
    void runInBackgroundHidesEverythingAndRefuses();
    void cancelLeavesEverythingAsItWas();
};

void QuitConfirmationTest::alertAsksWithThreeButtonsInOrder() {
    std::unique_ptr<QMessageBox> alert(QuitConfirmation::createAlert());
    alert->show();
    QVERIFY(QTest::qWaitForWindowExposed(alert.get()));
    QCOMPARE(alert->text(), QStringLiteral("Quit Typolet?"));
    QCOMPARE(alert->informativeText(),
             QStringLiteral(
                 "Do you want to quit Typolet completely or keep it running in the background?"));
    QCOMPARE(alert->icon(), QMessageBox::NoIcon);

    QAbstractButton* quit = buttonTitled(alert.get(), QStringLiteral("Quit"));
    QAbstractButton* background = buttonTitled(alert.get(), QStringLiteral("Run in Background"));
    QAbstractButton* cancel = buttonTitled(alert.get(), QStringLiteral("Cancel"));
    QVERIFY(quit && background && cancel);
    QCOMPARE(alert->buttons().size(), 3);
    // Left to right in this order, whatever the desktop's button conventions.
    const auto x = [&](QAbstractButton* b) { return b->mapTo(alert.get(), QPoint(0, 0)).x(); };
    QVERIFY(x(quit) < x(background));
    QVERIFY(x(background) < x(cancel));
    QCOMPARE(alert->defaultButton(), quit);
    QCOMPARE(alert->escapeButton(), cancel);
}

void QuitConfirmationTest::eachButtonGivesItsAnswer_data() {
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("response");
    QTest::newRow("Quit") << QStringLiteral("Quit") << 1000;
    QTest::newRow("Run in Background") << QStringLiteral("Run in Background") << 1001;
    QTest::newRow("Cancel") << QStringLiteral("Cancel") << 1002;
}

void QuitConfirmationTest::eachButtonGivesItsAnswer() {
    QFETCH(QString, button);
    QFETCH(int, response);
    AlertDriver driver(click(button));
    const QuitConfirmation::Response answer = QuitConfirmation::ask();
    QCOMPARE(driver.acted(), 1);
    QCOMPARE(static_cast<int>(answer), response);
}

void QuitConfirmationTest::escapeAndClosingCancel() {
    {
        AlertDriver driver([](QMessageBox* alert) { QTest::keyClick(alert, Qt::Key_Escape); });
        QCOMPARE(QuitConfirmation::ask(), QuitConfirmation::Response::Cancel);
        QCOMPARE(driver.acted(), 1);
    }
    {
        AlertDriver driver([](QMessageBox* alert) { alert->close(); });
        QCOMPARE(QuitConfirmation::ask(), QuitConfirmation::Response::Cancel);
        QCOMPARE(driver.acted(), 1);
    }
    {
        // Return answers with the default button.
        AlertDriver driver([](QMessageBox* alert) { QTest::keyClick(alert, Qt::Key_Return); });
        QCOMPARE(QuitConfirmation::ask(), QuitConfirmation::Response::Quit);
        QCOMPARE(driver.acted(), 1);
    }
}

void QuitConfirmationTest::quitLetsTerminationGoAhead() {
    Windows windows;
    ActivationPolicy policy;
    QuitConfirmation confirmation(policy);
    AlertDriver driver(click(QStringLiteral("Quit")));
    QCOMPARE(confirmation.confirmQuit(), QuitConfirmation::TerminateReply::Now);
    QCOMPARE(driver.acted(), 1);
    QVERIFY(windows.allVisible());
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
}

void QuitConfirmationTest::runInBackgroundHidesEverythingAndRefuses() {
    Windows windows;
    ActivationPolicy policy;
    QSignalSpy policyChanges(&policy, &ActivationPolicy::policyChanged);
    QuitConfirmation confirmation(policy);
    AlertDriver driver(click(QStringLiteral("Run in Background")));
    QCOMPARE(confirmation.confirmQuit(), QuitConfirmation::TerminateReply::Cancel);
    QCOMPARE(driver.acted(), 1);
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Accessory);
    QCOMPARE(policyChanges.size(), 1);
    QVERIFY(windows.noneVisible());

    // "Open Typolet" brings them back.
    policy.bringAllWindowsForward();
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
    QVERIFY(windows.allVisible());
}

void QuitConfirmationTest::cancelLeavesEverythingAsItWas() {
    Windows windows;
    ActivationPolicy policy;
    QSignalSpy policyChanges(&policy, &ActivationPolicy::policyChanged);
    QuitConfirmation confirmation(policy);
    AlertDriver driver(click(QStringLiteral("Cancel")));
    QCOMPARE(confirmation.confirmQuit(), QuitConfirmation::TerminateReply::Cancel);
    QCOMPARE(driver.acted(), 1);
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
    QCOMPARE(policyChanges.size(), 0);
    QVERIFY(windows.allVisible());
}

TYPOLET_ISOLATED_TEST_MAIN(QuitConfirmationTest)
#include "QuitConfirmationTest.moc"
