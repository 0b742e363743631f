// The listening engine over fake platform pieces: its start, the lines of each key, the
// notification it observes, and its own typing never coming back as input.
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "FakeKeyMonitor.h"
#include "FakePermissionProbe.h"
#include "KeyTranslator.h"
#include "LoopbackKeyboardOutput.h"
#include "NotificationCenter.h"
#include "RecordingKeyboardOutput.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"
#include "TextExpander.h"

#include <QtTest>

namespace {
constexpr uint32_t keyA = 38, keyS = 39, keySemicolon = 47, keyBackSpace = 22, keyShiftL = 50,
                   keyApostrophe = 48, keyE = 26;

// The US keys for the characters the loopback echoes.
QHash<QChar, uint32_t> usKeys() {
    return {{u'a', keyA}, {u's', keyS}, {u';', keySemicolon}, {u'e', keyE}};
}

struct Rig {
    TemporarySettings settings;
    ShortcutDataManager store{settings.path()};
    CompiledKeymapSource keymaps{QStringLiteral("us"), QStringLiteral("intl")};
    KeyTranslator translator{keymaps, QStringLiteral("en_US.UTF-8")};
    FakePermissionProbe permissions{true, true};
    FakeKeyMonitor monitor;
};
} // namespace

class TextExpanderMonitoringTest : public QObject {
    Q_OBJECT

private slots:
    void withoutInputMonitoringNothingIsWatched() {
        Rig rig;
        rig.permissions.observeGranted = false;
        RecordingKeyboardOutput output;
        CapturedDiagnostics diagnostics;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        QCOMPARE(diagnostics.lines, QStringList{QStringLiteral("Need input monitoring permissions")});
        QCOMPARE(rig.permissions.postQuestions, 0);
        QCOMPARE(rig.monitor.startCalls, 0);
        QVERIFY(!engine.isMonitoring());
    }

    void withoutAccessibilityNothingIsWatched() {
        Rig rig;
        rig.permissions.postGranted = false;
        RecordingKeyboardOutput output;
        CapturedDiagnostics diagnostics;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        QCOMPARE(diagnostics.lines, QStringList{QStringLiteral("Need accessibility permissions")});
        QCOMPARE(rig.monitor.startCalls, 0);
        QVERIFY(!engine.isMonitoring());
    }

    void monitorThatCannotStartIsReported() {
        Rig rig;
        FakeKeyMonitor failing(false);
        RecordingKeyboardOutput output;
        CapturedDiagnostics diagnostics;
        TextExpander engine(rig.store, {&rig.permissions, &failing, &rig.translator, &output});
        QCOMPARE(diagnostics.lines, QStringList{QStringLiteral("Failed to create event tap")});
        QCOMPARE(failing.startCalls, 1);
        QVERIFY(!engine.isMonitoring());
    }

    void eachKeyWritesItsLinesInOrder() {
        Rig rig;
        RecordingKeyboardOutput output;
        CapturedDiagnostics diagnostics;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        QVERIFY(engine.isMonitoring());
        QVERIFY(diagnostics.lines.isEmpty()); // a good start says nothing
        rig.monitor.press(keyA);
        QCOMPARE(diagnostics.lines,
                 QStringList({QStringLiteral("Event received: 10"), QStringLiteral("🔑 KeyCode: 38"),
                              QStringLiteral("✅ Got keyboard layout"),
                              QStringLiteral("📝 Translated char: a"), QStringLiteral("Key pressed: a"),
                              QStringLiteral("Current buffer: 'a'")}));
        QCOMPARE(engine.buffer(), QStringLiteral("a"));
    }

    void modifierKeysAloneAreNotKeyDowns() {
        Rig rig;
        RecordingKeyboardOutput output;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        CapturedDiagnostics diagnostics;
        rig.monitor.press(keyShiftL);
        QVERIFY(diagnostics.lines.isEmpty());
        rig.monitor.press(keyA);
        QCOMPARE(engine.buffer(), QStringLiteral("a"));
    }

    void deadKeysComposeIntoTheBuffer() {
        Rig rig;
        RecordingKeyboardOutput output;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        CapturedDiagnostics diagnostics;
        rig.monitor.press(keyApostrophe);
        QVERIFY(diagnostics.lines.contains(QStringLiteral("📝 Translated char: ")));
        QVERIFY(engine.deadKeyState != 0);
        rig.monitor.press(keyE);
        QCOMPARE(engine.buffer(), QStringLiteral("é"));
        QCOMPARE(engine.deadKeyState, 0u);
    }

    void shortcutsUpdatedWritesHowManyWereLoaded() {
        Rig rig;
        RecordingKeyboardOutput output;
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        CapturedDiagnostics diagnostics(false); // these lines are written in any case
        const QList<Shortcut> three{Shortcut::create(";a", "A", {}), Shortcut::create(";b", "B", {}),
                                    Shortcut::create(";c", "C", {})};
        NotificationCenter::defaultCenter().post(
            QStringLiteral("ShortcutsUpdated"), {{QStringLiteral("shortcuts"), QVariant::fromValue(three)}});
        QCOMPARE(diagnostics.lines,
                 QStringList({QStringLiteral("🔄 Shortcuts updated, reloading data..."),
                              QStringLiteral("📝 Loaded 3 shortcuts")}));

        diagnostics.lines.clear();
        NotificationCenter::defaultCenter().post(QStringLiteral("ShortcutsUpdated"));
        NotificationCenter::defaultCenter().post(
            QStringLiteral("ShortcutsUpdated"), {{QStringLiteral("shortcuts"), QStringLiteral("three")}});
        QCOMPARE(diagnostics.lines,
                 QStringList({QStringLiteral("🔄 Shortcuts updated, reloading data..."),
                              QStringLiteral("🔄 Shortcuts updated, reloading data...")}));
    }

    void typedContentNeverComesBackButBackspacesMay() {
        Rig rig;
        rig.store.appendShortcut(Shortcut::create(QStringLiteral(";as"), QStringLiteral("sea;as"), {}));
        LoopbackKeyboardOutput output(rig.monitor, usKeys(), keyBackSpace);
        TextExpander engine(rig.store, {&rig.permissions, &rig.monitor, &rig.translator, &output});
        CapturedDiagnostics diagnostics;
        for (const uint32_t key : {keySemicolon, keyA, keyS})
            rig.monitor.press(key);
        // The content ends with the command again: read back, it would expand forever.
        QTRY_COMPARE(output.calls.size(), 2);
        QCOMPARE(output.calls[0], RecordingKeyboardOutput::deletion(3));
        QCOMPARE(output.calls[1], RecordingKeyboardOutput::insertion(QStringLiteral("sea;as")));
        QCOMPARE(rig.monitor.discarded,
                 QList<uint32_t>({keyS, keyE, keyA, keySemicolon, keyA, keyS}));
        QCoreApplication::processEvents();
        QCOMPARE(diagnostics.lines.count(QStringLiteral("Key pressed: \b")), 3);
        QCOMPARE(diagnostics.lines.filter(QStringLiteral("✅ Match found!")).size(), 1);
        QCOMPARE(engine.buffer(), QString());
    }
};

QTEST_GUILESS_MAIN(TextExpanderMonitoringTest)
#include "TextExpanderMonitoringTest.moc"
