// Which windows are hidden and shown again when Typolet goes to the background and comes back.

#include "AppWindows.h"
#include "IsolatedTestMain.h"

#include <QDialog>
#include <QtTest>

class ShellWindowsTest : public QObject {
    Q_OBJECT
private slots:
    void windowListLeavesOutWhatIsNotAWindow();
};

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
