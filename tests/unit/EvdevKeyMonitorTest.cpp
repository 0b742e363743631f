// The evdev key monitor reading real input_event records from socket pairs that stand in for
// keyboard nodes, with the keys read on a US layout.
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "FakeInputDevices.h"
#include "KeyTranslator.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
struct Session {
    QTemporaryDir folder;
    FakeInputDevices devices{folder.path()};
    CompiledKeymapSource keymap{QStringLiteral("us")};
    EvdevKeyboardFinder finder{devices, folder.path()};
    EvdevKeyMonitor monitor{keymap, devices, finder};
    KeyTranslator translator{keymap, QStringLiteral("en_US.UTF-8")};
    QList<KeyStroke> strokes;
    int clicks = 0;

    explicit Session(int keyboards = 1) {
        for (int i = 0; i < keyboards; ++i)
            devices.addNode(QStringLiteral("event%1").arg(i), QStringLiteral("Keyboard %1").arg(i), true);
        monitor.start([this](const KeyStroke& stroke) { strokes.append(stroke); });
        monitor.setPointerPressHandler([this] { ++clicks; });
    }
    int peer(int keyboard) const { return devices.peer(QStringLiteral("event%1").arg(keyboard)); }
    void key(int keyboard, uint16_t code, int32_t value) {
        FakeInputDevices::send(peer(keyboard), EV_KEY, code, value);
        FakeInputDevices::send(peer(keyboard), EV_SYN, SYN_REPORT, 0);
    }
    void tap(int keyboard, uint16_t code) {
        key(keyboard, code, 1);
        key(keyboard, code, 0);
    }
    // What the application was sent, as the engine reads it: a key-down, or the repeats of one.
    QString typed() {
        QString text;
        uint32_t deadKeys = 0;
        for (const KeyStroke& stroke : std::as_const(strokes))
            text += translator.translateKeyCode(stroke.keyCode, stroke.state, deadKeys)
                        .value_or(QStringLiteral("?"))
                        .repeated(std::max(1, stroke.repeats));
        return text;
    }
};
} // namespace

class EvdevKeyMonitorTest : public QObject {
    Q_OBJECT

private slots:
    void aCommandTypedWithShiftHeldReadsAsTheApplicationReadsIt() {
        Session session;
        for (const uint16_t code : {KEY_SEMICOLON, KEY_S, KEY_I, KEY_G})
            session.tap(0, code);
        session.key(0, KEY_LEFTSHIFT, 1);
        session.tap(0, KEY_A);
        session.tap(0, KEY_1);
        session.key(0, KEY_LEFTSHIFT, 0);
        session.tap(0, KEY_B);
        QTRY_COMPARE(session.typed(), QStringLiteral(";sigA!b"));
    }

    void aHeldKeyCountsItsRepeatsAsKeyDowns() {
        Session session;
        session.key(0, KEY_X, 1);
        for (int i = 0; i < 3; ++i)
            session.key(0, KEY_X, 2);
        session.key(0, KEY_X, 0);
        QTRY_COMPARE(session.typed(), QStringLiteral("xxxx"));
        QCOMPARE(session.strokes.last().repeats, 3);
        // The application repeats at the compositor's rate, not the kernel's.
        QVERIFY(session.strokes.last().repeatCountUncertain);
        QVERIFY(!session.strokes.first().repeatCountUncertain);
    }

    void lostEventsAreSkippedAndTheHeldKeysReadAgain_data() {
        QTest::addColumn<QList<uint16_t>>("downAfter");
        QTest::addColumn<QString>("typed");
        QTest::newRow("Shift let go meanwhile") << QList<uint16_t>{} << QStringLiteral("ab");
        QTest::newRow("Shift still held") << QList<uint16_t>{KEY_LEFTSHIFT} << QStringLiteral("aB");
    }
    void lostEventsAreSkippedAndTheHeldKeysReadAgain() {
        QFETCH(QList<uint16_t>, downAfter);
        QFETCH(QString, typed);
        Session session;
        CapturedDiagnostics diagnostics(false);
        session.tap(0, KEY_A);
        session.key(0, KEY_LEFTSHIFT, 1);
        session.devices.setKeysDown(QStringLiteral("event0"), downAfter);
        // The rest of a frame after the overflow is incomplete: the C never counts.
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_DROPPED, 0);
        FakeInputDevices::send(session.peer(0), EV_KEY, KEY_C, 1);
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_REPORT, 0);
        session.tap(0, KEY_B);
        QTRY_COMPARE(session.typed(), typed);
        QCOMPARE(session.clicks, 1); // what was typed before is no longer known to be there
        QCOMPARE(diagnostics.lines.filter(QStringLiteral("were lost")).size(), 1);
    }

    void aKeyboardThatVanishesMidStreamIsDroppedAndLetsGoOfItsKeys() {
        Session session(2);
        CapturedDiagnostics diagnostics(false);
        session.key(1, KEY_LEFTSHIFT, 1);
        QTRY_COMPARE(session.strokes.size(), 1);
        session.tap(0, KEY_A); // Shift on one keyboard shifts the other's letters
        QTRY_COMPARE(session.typed(), QStringLiteral("A"));
        // Half a frame and half a record, then the device is gone.
        FakeInputDevices::send(session.peer(1), EV_KEY, KEY_Z, 1);
        [[maybe_unused]] const auto written = ::write(session.peer(1), "\1\2\3", 3);
        ::shutdown(session.peer(1), SHUT_RDWR);
        QTRY_COMPARE(session.monitor.keyboardNames(), QStringList{QStringLiteral("Keyboard 0")});
        session.tap(0, KEY_A);
        QTRY_COMPARE(session.typed(), QStringLiteral("Aa"));
        QCOMPARE(diagnostics.lines.filter(QStringLiteral("went away")).size(), 1);
    }

    void locksFollowTheCompositorsLights() {
        Session session;
        FakeInputDevices::send(session.peer(0), EV_LED, LED_CAPSL, 1);
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_REPORT, 0);
        session.tap(0, KEY_Q);
        session.tap(0, KEY_CAPSLOCK);
        FakeInputDevices::send(session.peer(0), EV_LED, LED_CAPSL, 0);
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_REPORT, 0);
        session.tap(0, KEY_Q);
        session.key(0, BTN_LEFT, 1); // a pointer button on the keyboard is a click, not a key
        QTRY_COMPARE(session.typed(), QStringLiteral("Qq"));
        QCOMPARE(session.clicks, 1);
        // A keyboard plugged in with Num Lock lit: its keypad types digits from the start.
        session.devices.addNode("event1", "Keypad", true);
        session.devices.setLightsOn("event1", {LED_NUML});
        session.monitor.addKeyboard(
            session.devices.openForReading(session.folder.filePath("event1")), "Keypad");
        session.tap(1, KEY_KP1);
        QTRY_COMPARE(session.typed(), QStringLiteral("Qq1"));
    }
};

QTEST_GUILESS_MAIN(EvdevKeyMonitorTest)
#include "EvdevKeyMonitorTest.moc"
