// The application around the engine: what the session allows decides what is offered, and
// every change of the preferences reaches the engine at once.

#include "Autostart.h"
#include "IsolatedTestMain.h"
#include "Preferences.h"
#include "RecordingAutostartBackend.h"
#include "RecordingEngineBackend.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TrayController.h"
#include "TypoletApp.h"

#include <QAction>
#include <QMainWindow>
#include <QUuid>
#include <QtTest>

namespace {
struct Fixture {
    TemporarySettings settings;
    Preferences preferences{settings.path()};
    SnippetStore store{settings.path()};
    Autostart autostart{std::make_unique<RecordingAutostartBackend>()};
    RecordingEngineBackend engine;
    const QString serverName = QUuid::createUuid().toString(QUuid::Id128);
    TypoletApp app{engine, store, autostart, preferences, serverName};
};
} // namespace

class TypoletAppTest : public QObject {
    Q_OBJECT
private slots:
    void preferencesReachTheEngineAtOnce();
    void pauseKeysAreTakenWhereTheSessionAllows_data();
    void pauseKeysAreTakenWhereTheSessionAllows();
    void ownWindowsKeepTheirKeys();
};

void TypoletAppTest::preferencesReachTheEngineAtOnce() {
    Fixture f;
    QVERIFY(f.app.start());
    QVERIFY(f.engine.started);
    QCOMPARE(f.engine.applied.size(), 1);
    QCOMPARE(f.engine.applied.last(), f.preferences.engineSettings());
    const struct {
        const char* what;
        std::function<void(Preferences&)> change;
        std::function<bool(const EngineSettings&)> seen;
    } changes[] = {
        {"pause", [](Preferences& p) { p.setPaused(true); },
         [](const EngineSettings& s) { return s.paused; }},
        {"exclusions", [](Preferences& p) { p.setExcludedApplications({"XTerm"}); },
         [](const EngineSettings& s) { return s.excludedApplications == QStringList{"XTerm"}; }},
        {"undo", [](Preferences& p) { p.setUndoWithBackspace(false); },
         [](const EngineSettings& s) { return !s.undoWithBackspace; }},
        {"paste threshold", [](Preferences& p) { p.setPasteThreshold(7); },
         [](const EngineSettings& s) { return s.pasteThreshold == 7; }},
        {"no pasting", [](Preferences& p) { p.setPasteLongSnippets(false); },
         [](const EngineSettings& s) { return s.pasteThreshold == 0; }},
        {"layout", [](Preferences& p) { p.setKeyboardLayout("de(nodeadkeys)"); },
         [](const EngineSettings& s) { return s.keyboardLayout == "de(nodeadkeys)"; }},
    };
    for (const auto& c : changes) {
        const qsizetype before = f.engine.applied.size();
        c.change(f.preferences);
        QVERIFY2(f.engine.applied.size() > before, c.what);
        QVERIFY2(c.seen(f.engine.applied.last()), c.what);
        QVERIFY2(f.engine.applied.last() == f.preferences.engineSettings(), c.what);
    }
    // The layout the backend reads is shown in Preferences.
    emit f.engine.layoutInUseChanged(QStringLiteral("German, from the desktop's keyboard"));
    QCOMPARE(f.preferences.layoutInUse(), QStringLiteral("German, from the desktop's keyboard"));
}

void TypoletAppTest::pauseKeysAreTakenWhereTheSessionAllows_data() {
    QTest::addColumn<bool>("grabsGlobalKeys");
    QTest::addColumn<bool>("free");
    QTest::newRow("X11, keys free") << true << true;
    QTest::newRow("X11, keys taken") << true << false;
    QTest::newRow("Wayland") << false << true;
}

void TypoletAppTest::pauseKeysAreTakenWhereTheSessionAllows() {
    QFETCH(bool, grabsGlobalKeys);
    QFETCH(bool, free);
    Fixture f;
    f.engine.can.grabsGlobalKeys = grabsGlobalKeys;
    f.engine.grabSucceeds = free;
    if (grabsGlobalKeys && !free)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("is taken by another program"));
    QVERIFY(f.app.start());
    QCOMPARE(f.preferences.canGrabPauseKeys(), grabsGlobalKeys);
    QAction* pause = f.app.trayController()->pauseAction();
    if (!grabsGlobalKeys) {
        QVERIFY(f.engine.grabs.isEmpty());
        QVERIFY(!pause->text().contains(u'\t'));
        return;
    }
    const QKeySequence keys = f.preferences.pauseKeys();
    QCOMPARE(f.engine.grabs, QList<QKeyCombination>{keys[0]});
    // The menus show the keys only while they work.
    QCOMPARE(pause->text().contains(keys.toString(QKeySequence::NativeText)), free);
    if (!free)
        return;
    f.engine.pressGrabbedKeys();
    QVERIFY(f.preferences.paused());
    QVERIFY(f.engine.applied.last().paused);
    // Other keys chosen in Preferences are taken at once; none lets go of them.
    const QKeySequence other(Qt::CTRL | Qt::ALT | Qt::Key_P);
    f.preferences.setPauseKeys(other);
    QCOMPARE(f.engine.grabs.last(), other[0]);
    f.preferences.setPauseKeys(QKeySequence());
    QCOMPARE(f.engine.grabs.last(), QKeyCombination());
    QVERIFY(!pause->text().contains(u'\t'));
}

// A command typed into the snippet editor is text for the editor, never something to expand.
void TypoletAppTest::ownWindowsKeepTheirKeys() {
    Fixture f;
    QVERIFY(f.app.start());
    QVERIFY(QTest::qWaitForWindowActive(f.app.mainWindow()));
    QVERIFY(f.engine.keysIgnored());
    f.app.mainWindow()->hide();
    QTRY_VERIFY(!f.engine.keysIgnored());
}

// Two engines would expand every snippet twice.
TYPOLET_ISOLATED_TEST_MAIN(TypoletAppTest)
#include "TypoletAppTest.moc"
