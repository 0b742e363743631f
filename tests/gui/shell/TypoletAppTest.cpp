// Start-up as a whole: the order of the pieces, and a second launch that only wakes the first.

#include "TypoletApp.h"
#include "ActivationPolicy.h"
#include "AppDelegate.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "RecordingLoginItemBackend.h"
#include "TemporarySettings.h"

#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Fixture {
    TemporarySettings settings;
    QTemporaryDir runtime;
    LoginPreferences preferences{settings.path()};
    LoginItemManager loginItems{std::make_unique<RecordingLoginItemBackend>()};
    QStringList steps;

    TypoletApp::Parts parts() {
        return {[this] { steps << QStringLiteral("engine"); },
                [this] { steps << QStringLiteral("permissions"); },
                [this] {
                    steps << QStringLiteral("main view");
                    return std::make_unique<QLabel>(QStringLiteral("snippets"));
                }};
    }
    QString serverName() const { return runtime.filePath(QStringLiteral("typolet.socket")); }
};
} // namespace

class TypoletAppTest : public QObject {
    Q_OBJECT
private slots:
    void startsThePiecesInOrder();
    void secondLaunchStartsNothingAndWakesTheFirst();
};

void TypoletAppTest::startsThePiecesInOrder() {
    Fixture f;
    TypoletApp app(f.parts(), f.loginItems, f.preferences, f.serverName());
    QCOMPARE(app.appDelegate(), nullptr);
    QVERIFY(app.start());
    QCOMPARE(f.steps, QStringList({QStringLiteral("engine"), QStringLiteral("permissions"),
                                   QStringLiteral("main view")}));
    QVERIFY(app.appDelegate() != nullptr);
    QMainWindow* window = app.mainWindow();
    QVERIFY(window != nullptr);
    QVERIFY(window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Typolet"));
    QVERIFY(qobject_cast<QLabel*>(window->centralWidget()) != nullptr);
    QVERIFY(window->width() >= TypoletApp::mainWidth);
    // The launch steps ran: the application menu is on the main window.
    QCOMPARE(window->menuBar()->actions().size(), 1);
    QCOMPARE(window->menuBar()->actions().first()->text(), QStringLiteral("Typolet"));
    QCOMPARE(app.appDelegate()->activationPolicy().policy(), ActivationPolicy::Policy::Regular);
    QVERIFY(!QApplication::quitOnLastWindowClosed());
}

void TypoletAppTest::secondLaunchStartsNothingAndWakesTheFirst() {
    Fixture first;
    TypoletApp running(first.parts(), first.loginItems, first.preferences, first.serverName());
    QVERIFY(running.start());
    running.appDelegate()->showPreferences();
    // As after "Run in Background".
    ActivationPolicy& policy = running.appDelegate()->activationPolicy();
    policy.setActivationPolicy(ActivationPolicy::Policy::Accessory);
    policy.hideApplication();
    QVERIFY(!running.mainWindow()->isVisible());

    Fixture second;
    TypoletApp late(second.parts(), second.loginItems, second.preferences, first.serverName());
    QVERIFY(!late.start());
    QCOMPARE(second.steps, QStringList());
    QCOMPARE(late.appDelegate(), nullptr);
    QCOMPARE(late.mainWindow(), nullptr);

    // The request arrives through the running one's event loop.
    QTRY_VERIFY_WITH_TIMEOUT(running.mainWindow()->isVisible(), 20000);
    QVERIFY(running.appDelegate()->preferencesWindow()->isVisible());
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
}

TYPOLET_ISOLATED_TEST_MAIN(TypoletAppTest)
#include "TypoletAppTest.moc"
