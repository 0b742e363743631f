// The Preferences view: the start-at-login switch shows and writes only the stored value.

#include "PreferencesView.h"
#include "CapsuleBadge.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "PreferenceCard.h"
#include "RecordingLoginItemBackend.h"
#include "SectionHeader.h"
#include "ShellStyle.h"
#include "TemporarySettings.h"
#include "ToggleSwitch.h"
#include "ToneLabel.h"

#include <QLabel>
#include <QtTest>
#include <memory>

namespace {
// A Preferences view over its own settings file and a recording login-item backend.
struct Fixture {
    TemporarySettings settings;
    LoginPreferences preferences{settings.path()};
    RecordingLoginItemBackend* backend = new RecordingLoginItemBackend;
    LoginItemManager loginItems{std::unique_ptr<LoginItemBackend>(backend)};
    PreferencesView view{loginItems, preferences};

    void show(QWidget* widget = nullptr) {
        widget = widget ? widget : &view;
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
    }
};

} // namespace

class PreferencesViewTest : public QObject {
    Q_OBJECT
private slots:
    void switchShowsAndWritesOnlyTheStoredValue();
};

void PreferencesViewTest::switchShowsAndWritesOnlyTheStoredValue() {
    Fixture f;
    ToggleSwitch* toggle = f.view.startAtLoginSwitch();
    QVERIFY(!toggle->isChecked() && f.backend->calls.isEmpty());
    f.show(); // the first appearance ever turns it on and registers the login item
    QVERIFY(toggle->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>({true, true}));

    f.backend->calls.clear();
    QTest::mouseClick(toggle, Qt::LeftButton, {}, toggle->rect().center());
    QVERIFY(!toggle->isChecked());
    QCOMPARE(f.settings.read(QStringLiteral("startAtLogin")).toBool(), false);
    toggle->setFocus(Qt::TabFocusReason);
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(toggle->isChecked());
    QVERIFY(f.preferences.startAtLogin());
    f.preferences.setStartAtLogin(false); // changed elsewhere: the switch follows
    QVERIFY(!toggle->isChecked());

    // The next run shows the stored value and leaves it as it is.
    LoginPreferences nextRun(f.settings.path());
    PreferencesView again(f.loginItems, nextRun);
    f.show(&again);
    QVERIFY(!again.startAtLoginSwitch()->isChecked());
    QCOMPARE(f.backend->calls, QList<bool>());
}

TYPOLET_ISOLATED_TEST_MAIN(PreferencesViewTest)
#include "PreferencesViewTest.moc"
