// The application delegate: its menus, the windows it opens, and the quit question in front of
// every termination request.

#include "AppDelegate.h"
#include "AlertDriver.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "RecordingLoginItemBackend.h"
#include "TemporarySettings.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSystemTrayIcon>
#include <QtTest>

namespace {
struct Fixture {
    TemporarySettings settings;
    LoginPreferences preferences{settings.path()};
    RecordingLoginItemBackend* backend = new RecordingLoginItemBackend;
    LoginItemManager loginItems{std::unique_ptr<LoginItemBackend>(backend)};
    QMainWindow mainWindow;
    AppDelegate delegate{loginItems, preferences};

    Fixture() {
        mainWindow.setWindowTitle(QStringLiteral("Typolet"));
        mainWindow.resize(600, 400);
        mainWindow.show();
        delegate.applicationDidFinishLaunching(&mainWindow);
    }
};

// Title and shortcut of each entry; separators as "-".
QStringList describe(const QMenu* menu) {
    QStringList entries;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions) {
        if (action->isSeparator())
            entries << QStringLiteral("-");
        else
            entries << action->text() + u'|' + action->shortcut().toString();
    }
    return entries;
}

QAction* entry(const QMenu* menu, const QString& title) {
    const QList<QAction*> actions = menu->actions();
    for (QAction* action : actions)
        if (action->text() == title)
            return action;
    return nullptr;
}

// Runs `work` inside the application's event loop and returns the loop's exit code: 0 when
// the work made the program quit, 99 when the loop was still running after it.
int runLoop(const std::function<void()>& work) {
    QObject scope; // drops the timers below if they have not fired when this returns
    QTimer::singleShot(0, &scope, [&scope, work] {
        work();
        QTimer::singleShot(0, &scope, [] { QCoreApplication::exit(99); });
    });
    return QCoreApplication::exec();
}
} // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT
private slots:
    void launchInstallsTheMenus();
    void withoutASystemTrayThereIsNoTrayIcon();
    void closingTheLastWindowDoesNotQuit();
    void menuEntriesOpenTheWindowsOnce();
    void openTypoletBringsBackEveryWindow();
    void shortcutsWorkInTheShellWindows();
    void trayMenuKeysWorkWhileItIsOpen();
    void quitEntriesAskFirst_data();
    void quitEntriesAskFirst();
    void quitRequestsFromOutsideAreRefusedUnlessConfirmed_data();
    void quitRequestsFromOutsideAreRefusedUnlessConfirmed();
    void runInBackgroundKeepsRunningWithoutWindows();
    void sessionEndAsksToo();
    void signalsEndItWithoutAsking();
};

void AppDelegateTest::launchInstallsTheMenus() {
    Fixture f;
    QCOMPARE(f.delegate.activationPolicy().policy(), ActivationPolicy::Policy::Regular);
    const QList<QAction*> top = f.mainWindow.menuBar()->actions();
    QCOMPARE(top.size(), 1);
    QCOMPARE(top.first()->text(), QStringLiteral("Typolet"));
    QCOMPARE(top.first()->menu(), f.delegate.applicationMenu());
    QCOMPARE(describe(f.delegate.applicationMenu()),
             QStringList({QStringLiteral("About Typolet|"), QStringLiteral("-"),
                          QStringLiteral("Preferences...|Ctrl+,"), QStringLiteral("-"),
                          QStringLiteral("Quit Typolet|Ctrl+Q")}));
    QVERIFY(f.delegate.statusMenu() != nullptr);
    QCOMPARE(describe(f.delegate.statusMenu()),
             QStringList({QStringLiteral("Open Typolet|Ctrl+O"), QStringLiteral("-"),
                          QStringLiteral("Quit|Ctrl+Q")}));
    // Nothing else is built up front.
    QCOMPARE(f.delegate.preferencesWindow(), nullptr);
    QCOMPARE(f.delegate.aboutWindow(), nullptr);
}

void AppDelegateTest::withoutASystemTrayThereIsNoTrayIcon() {
    QVERIFY2(!QSystemTrayIcon::isSystemTrayAvailable(), "the offscreen platform has no tray");
    Fixture f;
    QCOMPARE(f.delegate.statusItem(), nullptr);
    // The program still runs with its window.
    QVERIFY(f.mainWindow.isVisible());
}

void AppDelegateTest::closingTheLastWindowDoesNotQuit() {
    Fixture f;
    QVERIFY(!QApplication::quitOnLastWindowClosed());
    QSignalSpy terminating(&f.delegate, &AppDelegate::terminating);
    const int code = runLoop([&] { f.mainWindow.close(); });
    QCOMPARE(code, 99);
    QCOMPARE(terminating.size(), 0);
}

void AppDelegateTest::menuEntriesOpenTheWindowsOnce() {
    Fixture f;
    QAction* preferences = entry(f.delegate.applicationMenu(), QStringLiteral("Preferences..."));
    QAction* about = entry(f.delegate.applicationMenu(), QStringLiteral("About Typolet"));
    QVERIFY(preferences && about);

    preferences->trigger();
    QWidget* preferencesWindow = f.delegate.preferencesWindow();
    QVERIFY(preferencesWindow && preferencesWindow->isVisible());
    QCOMPARE(preferencesWindow->windowTitle(), QStringLiteral("Preferences"));
    preferencesWindow->close();
    preferences->trigger();
    QCOMPARE(f.delegate.preferencesWindow(), preferencesWindow);
    QVERIFY(preferencesWindow->isVisible());

    about->trigger();
    QWidget* aboutWindow = f.delegate.aboutWindow();
    QVERIFY(aboutWindow && aboutWindow->isVisible());
    QCOMPARE(aboutWindow->windowTitle(), QStringLiteral("About Typolet"));
    about->trigger();
    QCOMPARE(f.delegate.aboutWindow(), aboutWindow);
    // Showing them does not change the presentation.
    QCOMPARE(f.delegate.activationPolicy().policy(), ActivationPolicy::Policy::Regular);
}

void AppDelegateTest::openTypoletBringsBackEveryWindow() {
    Fixture f;
    f.delegate.showPreferences();
    f.delegate.showAbout();
    f.delegate.preferencesWindow()->close();
    f.delegate.aboutWindow()->close();
    f.mainWindow.close();

    entry(f.delegate.statusMenu(), QStringLiteral("Open Typolet"))->trigger();
    QVERIFY(f.mainWindow.isVisible());
    QVERIFY(f.delegate.preferencesWindow()->isVisible());
    QVERIFY(f.delegate.aboutWindow()->isVisible());
}

void AppDelegateTest::shortcutsWorkInTheShellWindows() {
    Fixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.mainWindow));
    QTest::keyClick(&f.mainWindow, Qt::Key_Comma, Qt::ControlModifier);
    QWidget* preferencesWindow = f.delegate.preferencesWindow();
    QVERIFY(preferencesWindow != nullptr);
    QVERIFY(QTest::qWaitForWindowActive(preferencesWindow));

    // Ctrl+Q in Preferences asks the quit question; "Cancel" keeps everything.
    AlertDriver driver(AlertDriver::click(QStringLiteral("Cancel")));
    QSignalSpy terminating(&f.delegate, &AppDelegate::terminating);
    QTest::keyClick(preferencesWindow, Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(driver.acted(), 1);
    QCOMPARE(driver.seenText(), QStringLiteral("Quit Typolet?"));
    QCOMPARE(terminating.size(), 0);
    QVERIFY(preferencesWindow->isVisible());
}

void AppDelegateTest::trayMenuKeysWorkWhileItIsOpen() {
    Fixture f;
    f.delegate.activationPolicy().hideApplication();
    QMenu* menu = f.delegate.statusMenu();
    menu->popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(menu));
    // Ctrl+O in the open menu: "Open Typolet", without clashing with the menu bar's keys.
    QTest::keyClick(menu, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(f.mainWindow.isVisible());
    QVERIFY(!menu->isVisible());

    // Ctrl+Q in the open menu: the quit question, asked once.
    menu->popup(QPoint(10, 10));
    QVERIFY(QTest::qWaitForWindowExposed(menu));
    AlertDriver driver(AlertDriver::click(QStringLiteral("Cancel")));
    QTest::keyClick(menu, Qt::Key_Q, Qt::ControlModifier);
    QCOMPARE(driver.acted(), 1);
    QCOMPARE(driver.seenText(), QStringLiteral("Quit Typolet?"));
}

void AppDelegateTest::quitEntriesAskFirst_data() {
    QTest::addColumn<bool>("fromTray");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("Quit Typolet, Quit") << false << QStringLiteral("Quit") << 0;
    QTest::newRow("Quit Typolet, Cancel") << false << QStringLiteral("Cancel") << 99;
    QTest::newRow("tray Quit, Quit") << true << QStringLiteral("Quit") << 0;
    QTest::newRow("tray Quit, Run in Background")
        << true << QStringLiteral("Run in Background") << 99;
}

void AppDelegateTest::quitEntriesAskFirst() {
    QFETCH(bool, fromTray);
    QFETCH(QString, answer);
    QFETCH(int, exitCode);
    Fixture f;
    QAction* quit = fromTray ? entry(f.delegate.statusMenu(), QStringLiteral("Quit"))
                             : entry(f.delegate.applicationMenu(), QStringLiteral("Quit Typolet"));
    QVERIFY(quit != nullptr);
    QSignalSpy terminating(&f.delegate, &AppDelegate::terminating);
    AlertDriver driver(AlertDriver::click(answer));
    QCOMPARE(runLoop([&] { quit->trigger(); }), exitCode);
    QCOMPARE(driver.acted(), 1); // asked once, also when the answer let the Quit event through
    QCOMPARE(terminating.size(), exitCode == 0 ? 1 : 0);
}

void AppDelegateTest::quitRequestsFromOutsideAreRefusedUnlessConfirmed_data() {
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("Quit") << QStringLiteral("Quit") << 0;
    QTest::newRow("Run in Background") << QStringLiteral("Run in Background") << 99;
    QTest::newRow("Cancel") << QStringLiteral("Cancel") << 99;
}

void AppDelegateTest::quitRequestsFromOutsideAreRefusedUnlessConfirmed() {
    QFETCH(QString, answer);
    QFETCH(int, exitCode);
    Fixture f;
    AlertDriver driver(AlertDriver::click(answer));
    // What the desktop's own quit request (or anyone calling quit()) looks like to Typolet.
    QCOMPARE(runLoop([] { QCoreApplication::quit(); }), exitCode);
    QCOMPARE(driver.acted(), 1);
}

void AppDelegateTest::runInBackgroundKeepsRunningWithoutWindows() {
    Fixture f;
    f.delegate.showPreferences();
    AlertDriver driver(AlertDriver::click(QStringLiteral("Run in Background")));
    QCOMPARE(runLoop([&] { f.delegate.quitApp(); }), 99);
    QCOMPARE(f.delegate.activationPolicy().policy(), ActivationPolicy::Policy::Accessory);
    QVERIFY(!f.mainWindow.isVisible());
    QVERIFY(!f.delegate.preferencesWindow()->isVisible());

    f.delegate.openApp();
    QCOMPARE(f.delegate.activationPolicy().policy(), ActivationPolicy::Policy::Regular);
    QVERIFY(f.mainWindow.isVisible());
    QVERIFY(f.delegate.preferencesWindow()->isVisible());
}

void AppDelegateTest::sessionEndAsksToo() {
    Fixture f;
    {
        AlertDriver driver(AlertDriver::click(QStringLiteral("Run in Background")));
        QVERIFY(!f.delegate.allowSessionEnd());
        QCOMPARE(driver.acted(), 1);
        QVERIFY(!f.mainWindow.isVisible());
    }
    {
        AlertDriver driver(AlertDriver::click(QStringLiteral("Cancel")));
        QVERIFY(!f.delegate.allowSessionEnd());
        QCOMPARE(driver.acted(), 1);
    }
    {
        AlertDriver driver(AlertDriver::click(QStringLiteral("Quit")));
        QVERIFY(f.delegate.allowSessionEnd());
        QCOMPARE(driver.acted(), 1);
    }
}

void AppDelegateTest::signalsEndItWithoutAsking() {
    Fixture f;
    QSignalSpy terminating(&f.delegate, &AppDelegate::terminating);
    // Any question would be answered "Cancel", which would keep the loop running.
    AlertDriver driver(AlertDriver::click(QStringLiteral("Cancel")));
    QCOMPARE(runLoop([&] { f.delegate.terminateWithoutAsking(); }), 0);
    QCOMPARE(driver.acted(), 0);
    QCOMPARE(terminating.size(), 1);
}

TYPOLET_ISOLATED_TEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
