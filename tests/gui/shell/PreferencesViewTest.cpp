// The Preferences view: the start-at-login box turns the autostart entry on and off and
// shows whether Typolet will start at login; every other setting reaches its preference.

#include "PreferencesView.h"
#include "IsolatedTestMain.h"
#include "Autostart.h"
#include "Preferences.h"
#include "RecordingAutostartBackend.h"
#include "TemporarySettings.h"

#include "KeyboardLayoutCatalogue.h"

#include <QCheckBox>
#include <QComboBox>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>
#include <memory>

namespace {
// A Preferences view over its own settings file and a recording login-item backend.
struct Fixture {
    TemporarySettings settings;
    Preferences preferences{settings.path()};
    RecordingAutostartBackend* backend = new RecordingAutostartBackend;
    Autostart autostart{std::unique_ptr<AutostartBackend>(backend)};
    PreferencesView view{autostart, preferences};

    void show(QWidget* widget = nullptr) {
        widget = widget ? widget : &view;
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
    }
};

// Clicks the box itself: a wide row's middle may be past its text, where a click does nothing.
void clickBox(QCheckBox* box) {
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->height() / 2, box->height() / 2));
}
} // namespace

class PreferencesViewTest : public QObject {
    Q_OBJECT
private slots:
    void startAtLoginTurnsTheEntryOnAndOffAndShowsTheTruth();
    void keyboardLayoutShowsWhatIsInUseAndKeepsTheChoice();
};

void PreferencesViewTest::startAtLoginTurnsTheEntryOnAndOffAndShowsTheTruth() {
    Fixture f;
    QCheckBox* toggle = f.view.startAtLoginBox();
    QVERIFY(!toggle->isChecked() && f.backend->calls.isEmpty());
    f.show(); // the first appearance ever turns it on and writes the autostart entry
    QVERIFY(toggle->isChecked() && f.backend->registered);

    f.backend->calls.clear();
    clickBox(toggle);
    QVERIFY(!toggle->isChecked() && !f.backend->registered);
    QCOMPARE(f.settings.read(QStringLiteral("startAtLogin")).toBool(), false);
    toggle->setFocus(Qt::TabFocusReason);
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(toggle->isChecked() && f.backend->registered);
    QCOMPARE(f.backend->calls, QList<bool>({false, true}));

    // A change that fails puts the box back to what will happen.
    f.backend->unregisterError = QStringLiteral("entry is locked");
    QTest::keyClick(toggle, Qt::Key_Space);
    QVERIFY(toggle->isChecked() && f.preferences.startAtLogin());

    // Each setting is written where the next start reads it (the engine's side is the
    // application's test).
    clickBox(f.view.undoBox());
    QCOMPARE(f.settings.read(QStringLiteral("undoWithBackspace")).toBool(), false);
    clickBox(f.view.saveEditsBox());
    QVERIFY(Preferences(f.settings.path()).saveEditsOnLeave());
    // Paste off: the threshold box is disabled; a threshold out of range reads as the nearest.
    f.view.pasteThresholdBox()->setValue(250);
    QCOMPARE(Preferences(f.settings.path()).effectivePasteThreshold(), 250);
    clickBox(f.view.pasteBox());
    QVERIFY(!f.view.pasteThresholdBox()->isEnabled());
    QCOMPARE(Preferences(f.settings.path()).effectivePasteThreshold(), 0);
    f.settings.write(QStringLiteral("pasteThreshold"), -5);
    QCOMPARE(Preferences(f.settings.path()).pasteThreshold(), Preferences::minimumPasteThreshold);
    // Only the first combination of the pause keys counts; Insert Snippet's may be none.
    f.view.pauseKeysEdit()->setKeySequence(QKeySequence(QStringLiteral("Ctrl+Alt+P, Ctrl+X")));
    emit f.view.pauseKeysEdit()->editingFinished();
    QCOMPARE(Preferences(f.settings.path()).pauseKeys(), QKeySequence(QStringLiteral("Ctrl+Alt+P")));
    f.view.insertKeysEdit()->clear();
    emit f.view.insertKeysEdit()->editingFinished();
    QCOMPARE(Preferences(f.settings.path()).insertKeys(), QKeySequence());
    QSignalSpy clearing(&f.preferences, &Preferences::usageClearRequested);
    f.view.countUsageBox()->click();
    QVERIFY(!Preferences(f.settings.path()).countUsage());
    f.view.clearUsageButton()->click();
    QCOMPARE(clearing.size(), 1);

    // Exclusions are listed as they change, and Remove takes the selected one out.
    f.preferences.setExcludedApplications({"XTerm", "firefox"});
    QCOMPARE(f.view.exclusionList()->count(), 2);
    QVERIFY(!f.view.removeExclusionButton()->isEnabled());
    f.view.exclusionList()->setCurrentRow(0);
    f.view.removeExclusionButton()->click();
    QCOMPARE(f.preferences.excludedApplications(), QStringList{"firefox"});
    QCOMPARE(f.view.exclusionList()->count(), 1);

    // The entry removed by hand: the next time Preferences appears, the box is clear.
    f.view.hide();
    f.backend->registered = false;
    f.show();
    QVERIFY(!toggle->isChecked() && !f.preferences.startAtLogin());
}

void PreferencesViewTest::keyboardLayoutShowsWhatIsInUseAndKeepsTheChoice() {
    Fixture f;
    f.show();
    QComboBox* choice = f.view.layoutChoice();
    QVERIFY(!choice->isVisibleTo(&f.view)); // X11: the server's layout, nothing to choose

    const QString inUse = QStringLiteral("German");
    f.preferences.setLayoutInUse(inUse);
    QVERIFY(choice->isVisibleTo(&f.view));
    QVERIFY(f.view.layoutInUseLabel()->text().contains(inUse));

    // A variant from xkb-data is offered under its layout, and the choice is stored.
    const int variant = choice->findData(QStringLiteral("de(nodeadkeys)"));
    QVERIFY(variant > 0);
    choice->setCurrentIndex(variant);
    emit choice->activated(variant);
    QCOMPARE(f.settings.read(Preferences::keyboardLayoutKey).toString(),
             QStringLiteral("de(nodeadkeys)"));
    choice->setCurrentIndex(0);
    emit choice->activated(0);
    QCOMPARE(f.preferences.keyboardLayout(), QString());
}

TYPOLET_ISOLATED_TEST_MAIN(PreferencesViewTest)
#include "PreferencesViewTest.moc"
