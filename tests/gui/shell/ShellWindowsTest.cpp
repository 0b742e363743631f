// The Preferences and About windows are built once and reused; "Open Typolet" brings every
// window back, closed ones included.

#include "ShellWindows.h"
#include "AboutView.h"
#include "ActivationPolicy.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "PreferencesView.h"
#include "RecordingLoginItemBackend.h"
#include "TemporarySettings.h"
#include "ToggleSwitch.h"

#include <QDialog>
#include <QPointer>
#include <QScreen>
#include <QtTest>

namespace {
struct Fixture {
    TemporarySettings settings;
    LoginPreferences preferences{settings.path()};
    RecordingLoginItemBackend* backend = new RecordingLoginItemBackend;
    LoginItemManager loginItems{std::unique_ptr<LoginItemBackend>(backend)};
    ShellWindows windows{loginItems, preferences};
};

int windowsNamed(const QString& name) {
    int count = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        count += w->objectName() == name ? 1 : 0;
    return count;
}

bool hasOnlyACloseButton(const QWidget* window) {
    const Qt::WindowFlags flags = window->windowFlags();
    return flags.testFlag(Qt::WindowCloseButtonHint) && flags.testFlag(Qt::WindowTitleHint) &&
           !flags.testFlag(Qt::WindowMinimizeButtonHint) &&
           !flags.testFlag(Qt::WindowMaximizeButtonHint);
}
} // namespace

class ShellWindowsTest : public QObject {
    Q_OBJECT
private slots:
    void nothingIsBuiltBeforeItIsAskedFor();
    void preferencesIsBuiltOnceAndReused();
    void preferencesKeepsItsStateWhenClosed();
    void aboutIsBuiltOnceAndReused();
    void windowsAreCentredOnTheScreen();
    void openAppBringsBackEveryWindow();
    void windowListLeavesOutWhatIsNotAWindow();
};

void ShellWindowsTest::nothingIsBuiltBeforeItIsAskedFor() {
    Fixture f;
    QCOMPARE(f.windows.preferencesWindow(), nullptr);
    QCOMPARE(f.windows.aboutWindow(), nullptr);
    QCOMPARE(windowsNamed(QStringLiteral("preferencesWindow")), 0);
}

void ShellWindowsTest::preferencesIsBuiltOnceAndReused() {
    Fixture f;
    f.windows.openPreferencesWindow();
    QPointer<QWidget> first = f.windows.preferencesWindow();
    QVERIFY(first);
    QVERIFY(QTest::qWaitForWindowExposed(first));
    QCOMPARE(first->windowTitle(), QStringLiteral("Preferences"));
    QCOMPARE(first->size(), QSize(500, 400));
    QCOMPARE(first->minimumSize(), first->maximumSize()); // not resizable
    QVERIFY(hasOnlyACloseButton(first));
    QVERIFY(first->isAncestorOf(f.windows.preferencesView()));
    PreferencesView* view = f.windows.preferencesView();

    f.windows.openPreferencesWindow();
    QCOMPARE(f.windows.preferencesWindow(), first.data());
    QCOMPARE(f.windows.preferencesView(), view);
    QCOMPARE(windowsNamed(QStringLiteral("preferencesWindow")), 1);
    QVERIFY(first->isVisible());
    // Its first appearance applied the start-at-login default, once.
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));
}

void ShellWindowsTest::preferencesKeepsItsStateWhenClosed() {
    Fixture f;
    f.windows.openPreferencesWindow();
    QPointer<QWidget> window = f.windows.preferencesWindow();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    ToggleSwitch* toggle = f.windows.preferencesView()->startAtLoginSwitch();
    QVERIFY(toggle->isChecked());
    QTest::mouseClick(toggle, Qt::LeftButton, {}, toggle->rect().center());
    QVERIFY(!toggle->isChecked());

    QVERIFY(window->close());
    QVERIFY(window); // closing only hides
    QVERIFY(!window->isVisible());

    f.windows.openPreferencesWindow();
    QCOMPARE(f.windows.preferencesWindow(), window.data());
    QVERIFY(window->isVisible());
    QCOMPARE(f.windows.preferencesView()->startAtLoginSwitch(), toggle);
    QVERIFY(!toggle->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));
}

void ShellWindowsTest::aboutIsBuiltOnceAndReused() {
    Fixture f;
    f.windows.openAboutWindow();
    QPointer<QWidget> first = f.windows.aboutWindow();
    QVERIFY(first);
    QVERIFY(QTest::qWaitForWindowExposed(first));
    QCOMPARE(first->windowTitle(), QStringLiteral("About Typolet"));
    QCOMPARE(first->size(), QSize(240, 220));
    QVERIFY(hasOnlyACloseButton(first));
    QVERIFY(first->isAncestorOf(f.windows.aboutView()));
    QCOMPARE(f.windows.preferencesWindow(), nullptr);

    QVERIFY(first->close());
    QVERIFY(first);
    f.windows.openAboutWindow();
    QCOMPARE(f.windows.aboutWindow(), first.data());
    QVERIFY(first->isVisible());
    QCOMPARE(windowsNamed(QStringLiteral("aboutWindow")), 1);
}

void ShellWindowsTest::windowsAreCentredOnTheScreen() {
    Fixture f;
    f.windows.openPreferencesWindow();
    f.windows.openAboutWindow();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (QWidget* window : {f.windows.preferencesWindow(), f.windows.aboutWindow()}) {
        const QPoint offset = window->frameGeometry().center() - screen.center();
        QVERIFY2(qAbs(offset.x()) <= 1 && qAbs(offset.y()) <= 1, qPrintable(window->windowTitle()));
    }
}

void ShellWindowsTest::openAppBringsBackEveryWindow() {
    Fixture f;
    QWidget mainWindow;
    mainWindow.setWindowTitle(QStringLiteral("Typolet"));
    mainWindow.show();
    f.windows.openPreferencesWindow();
    f.windows.openAboutWindow();
    QVERIFY(QTest::qWaitForWindowExposed(f.windows.aboutWindow()));

    ActivationPolicy policy;
    policy.setActivationPolicy(ActivationPolicy::Policy::Accessory);
    f.windows.aboutWindow()->close();
    mainWindow.close();
    policy.hideApplication();
    QVERIFY(!mainWindow.isVisible());
    QVERIFY(!f.windows.preferencesWindow()->isVisible());
    QVERIFY(!f.windows.aboutWindow()->isVisible());

    policy.bringAllWindowsForward();
    QCOMPARE(policy.policy(), ActivationPolicy::Policy::Regular);
    QVERIFY(mainWindow.isVisible());
    QVERIFY(f.windows.preferencesWindow()->isVisible());
    QVERIFY(f.windows.aboutWindow()->isVisible());
}

void ShellWindowsTest::windowListLeavesOutWhatIsNotAWindow() {
    QWidget shown;
    shown.show();
    QWidget neverShown;
    QDialog sheet(&shown);
    sheet.show();
    sheet.hide();

    // Like the tray icon's window, which sits embedded in the panel.
    QWidget embedded(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    embedded.show();

    const QList<QWidget*> windows = ActivationPolicy::applicationWindows();
    QVERIFY(windows.contains(&shown));
    QVERIFY(!windows.contains(&neverShown));
    QVERIFY(!windows.contains(&sheet));
    QVERIFY(!windows.contains(&embedded));

    ActivationPolicy hiding;
    hiding.hideApplication();
    QVERIFY(!shown.isVisible());
    QVERIFY(embedded.isVisible());
    shown.show();

    ActivationPolicy policy;
    policy.bringAllWindowsForward();
    QVERIFY(!neverShown.isVisible());
    QVERIFY(!sheet.isVisible());
}

TYPOLET_ISOLATED_TEST_MAIN(ShellWindowsTest)
#include "ShellWindowsTest.moc"
