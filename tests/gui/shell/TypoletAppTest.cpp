// Start-up as a whole: the order of the pieces, and a second launch that only wakes the first.

#include "TypoletApp.h"
#include "ActivationPolicy.h"
#include "TrayController.h"
#include "IsolatedTestMain.h"
#include "Autostart.h"
#include "AutostartPreferences.h"
#include "RecordingAutostartBackend.h"
#include "TemporarySettings.h"

#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Fixture {
    TemporarySettings settings;
    QTemporaryDir runtime;
    AutostartPreferences preferences{settings.path()};
    Autostart autostart{std::make_unique<RecordingAutostartBackend>()};
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
    void startsThePiecesInOrderAndOnlyOnce();
};

void TypoletAppTest::startsThePiecesInOrderAndOnlyOnce() {
    Fixture first;
    TypoletApp running(first.parts(), first.autostart, first.preferences, first.serverName());
    QVERIFY(running.start());
    QCOMPARE(first.steps, QStringList({QStringLiteral("engine"), QStringLiteral("permissions"),
                                       QStringLiteral("main view")}));
    QMainWindow* window = running.mainWindow();
    QVERIFY(running.trayController() && window && window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Typolet"));
    QVERIFY(qobject_cast<QLabel*>(window->centralWidget()) != nullptr);
    QVERIFY(window->width() >= TypoletApp::mainWidth);
    // The delegate's launch steps ran on this window.
    const QMenu* menu = running.trayController()->applicationMenu();
    QVERIFY(menu && window->menuBar()->actions().contains(menu->menuAction()));

    // A second launch while this one runs in the background starts nothing and wakes this one.
    running.trayController()->showPreferences();
    ActivationPolicy& policy = running.trayController()->activationPolicy();
    policy.setActivationPolicy(ActivationPolicy::Policy::Accessory);
    policy.hideApplication();
    QVERIFY(!window->isVisible());
    Fixture second;
    TypoletApp late(second.parts(), second.autostart, second.preferences, first.serverName());
    QVERIFY(!late.start());
    QCOMPARE(second.steps, QStringList());
    QVERIFY(!late.trayController() && !late.mainWindow());
    // The request arrives through the running one's event loop.
    QTRY_VERIFY_WITH_TIMEOUT(window->isVisible(), 20000);
    QVERIFY(running.trayController()->preferencesWindow()->isVisible());
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
}

TYPOLET_ISOLATED_TEST_MAIN(TypoletAppTest)
#include "TypoletAppTest.moc"
