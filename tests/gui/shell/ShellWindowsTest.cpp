// The Preferences and About windows, built once and reused; which windows are hidden and shown.

#include "ShellWindows.h"
#include "AboutView.h"
#include "AppWindows.h"
#include "IsolatedTestMain.h"
#include "Autostart.h"
#include "Preferences.h"
#include "PreferencesView.h"
#include "RecordingAutostartBackend.h"
#include "TemporarySettings.h"

#include <QDialog>
#include <QPointer>
#include <QScreen>
#include <QtTest>

class ShellWindowsTest : public QObject {
    Q_OBJECT
private slots:
    void eachWindowIsBuiltOnceAndReused_data();
    void eachWindowIsBuiltOnceAndReused();
    void windowListLeavesOutWhatIsNotAWindow();
};

void ShellWindowsTest::eachWindowIsBuiltOnceAndReused_data() {
    QTest::addColumn<bool>("about");
    QTest::newRow("Preferences") << false;
    QTest::newRow("About") << true;
}

void ShellWindowsTest::eachWindowIsBuiltOnceAndReused() {
    QFETCH(bool, about);
    TemporarySettings settings;
    Preferences preferences(settings.path());
    Autostart autostart(std::make_unique<RecordingAutostartBackend>());
    ShellWindows windows(autostart, preferences);
    const auto open = [&] {
        about ? windows.openAboutWindow() : windows.openPreferencesWindow();
        return about ? windows.aboutWindow() : windows.preferencesWindow();
    };
    QPointer<QWidget> window = open();
    QVERIFY(window && QTest::qWaitForWindowExposed(window));
    QCOMPARE(about ? windows.preferencesWindow() : windows.aboutWindow(), nullptr);
    QPointer<QWidget> view =
        about ? static_cast<QWidget*>(windows.aboutView()) : windows.preferencesView();
    QVERIFY(view && window->isAncestorOf(view));

    // Closing only hides; the next request shows the same window and view, state and all.
    QVERIFY(window->close());
    QVERIFY(window && !window->isVisible());
    QWidget* reopened = open();
    QCOMPARE(reopened, window.data());
    QVERIFY(window->isVisible());
    QVERIFY(view && window->isAncestorOf(view));
}

void ShellWindowsTest::windowListLeavesOutWhatIsNotAWindow() {
    QWidget shown;
    shown.show();
    QWidget neverShown;
    QDialog dialog(&shown);
    dialog.show();
    dialog.hide();
    // Like the tray icon's window, which sits embedded in the panel.
    QWidget embedded(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    embedded.show();

    // Only windows the user has seen are hidden and brought back.
    AppWindows windows;
    windows.hideAll();
    QVERIFY(!shown.isVisible());
    QVERIFY(embedded.isVisible());
    windows.showAll();
    QVERIFY(shown.isVisible());
    QVERIFY(!neverShown.isVisible());
    QVERIFY(!dialog.isVisible());
}

TYPOLET_ISOLATED_TEST_MAIN(ShellWindowsTest)
#include "ShellWindowsTest.moc"
