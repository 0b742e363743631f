// The evdev key monitor reading real input_event records from socket pairs that stand in for
// keyboard nodes, with the keys read on a US layout.
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "FakeInputDevices.h"
#include "KeyTranslator.h"
#include "LogindSessionWatch.h"
#include "PrivateBus.h"
#include "UinputKeyboardOutput.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTemporaryDir>
#include <QtTest>
#include <fcntl.h>

namespace {
// logind as far as a session's Active property goes: it answers GetSession and Properties.Get,
// and announces a change with PropertiesChanged, as logind does.
class StandInLogind : public QDBusVirtualObject {
public:
    explicit StandInLogind(const QDBusConnection& bus) : m_bus(bus) {}
    QStringList calls;
    bool active = true;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message.member() + u' ' + message.arguments().value(0).toString());
        if (message.member() == QLatin1String("GetSession")) {
            if (message.arguments().value(0).toString() != QLatin1String("7"))
                return connection.send(message.createErrorReply(
                    QStringLiteral("org.freedesktop.login1.NoSuchSession"), QStringLiteral("no")));
            return connection.send(message.createReply(
                QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/freedesktop/login1/session/_37")))));
        }
        if (message.member() == QLatin1String("Get"))
            return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(active))));
        return false;
    }
    void switchTo(bool nowActive) {
        active = nowActive;
        QDBusMessage changed = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/login1/session/_37"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
        changed << QStringLiteral("org.freedesktop.login1.Session")
                << QVariantMap{{QStringLiteral("Active"), nowActive}} << QStringList();
        m_bus.send(changed);
    }

private:
    QDBusConnection m_bus;
};

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
        // What was typed before is no longer known to be there.
        QTRY_COMPARE(session.clicks, 1);
        session.tap(0, KEY_B);
        QTRY_COMPARE(session.typed(), typed);
        QCOMPARE(diagnostics.lines.filter(QStringLiteral("were lost")).size(), 1);
    }

    // The kernel's queue overflowed while Shift was tapped: its press is in the records read
    // together with the overflow's end, its release still queued. Asking the device for its
    // keys takes that release out of the queue (its effect is in the answer), so applying the
    // press read before would hold Shift for ever.
    void aResynchronisedKeyboardDoesNotApplyWhatItsAnswerHoldsAlready() {
        Session session;
        const int peer = session.peer(0);
        FakeInputDevices::send(peer, EV_SYN, SYN_DROPPED, 0);
        FakeInputDevices::send(peer, EV_SYN, SYN_REPORT, 0);
        FakeInputDevices::send(peer, EV_KEY, KEY_LEFTSHIFT, 1);
        FakeInputDevices::send(peer, EV_SYN, SYN_REPORT, 0);
        for (int i = 0; i < 60; ++i) // scan codes, as keyboards send them, up to one read's end
            FakeInputDevices::send(peer, EV_MSC, MSC_SCAN, 0x700e1);
        FakeInputDevices::send(peer, EV_KEY, KEY_LEFTSHIFT, 0);
        FakeInputDevices::send(peer, EV_SYN, SYN_REPORT, 0);
        session.devices.setKeysDown(QStringLiteral("event0"), {}); // let go when asked
        QTRY_COMPARE(session.clicks, 1);
        session.tap(0, KEY_A);
        QTRY_COMPARE(session.typed(), QStringLiteral("a"));
        QCOMPARE(session.monitor.currentState().baseMods, 0u);
    }

    // A group that a desktop service reports sets the group, the first layout included; keys
    // that switch groups go on from there; without any report the keys alone decide.
    void reportedGroupsAndGroupKeysBothCount() {
        Session session;
        QVERIFY(session.keymap.loadText(CompiledKeymapSource("us,ru", {}, "grp:caps_toggle").text()));
        std::optional<uint32_t> report;
        session.monitor.setGroupReport([&report] { return report; });
        const auto groupNow = [&session] { return session.monitor.currentState().group; };
        QCOMPARE(groupNow(), 0u);
        session.tap(0, KEY_CAPSLOCK);
        QTRY_COMPARE(groupNow(), 1u);
        report = 0; // switched back with the desktop's own controls
        QCOMPARE(groupNow(), 0u);
        session.tap(0, KEY_CAPSLOCK);
        QTRY_COMPARE(groupNow(), 1u);
        report = 1;
        QCOMPARE(groupNow(), 1u);
        session.tap(0, KEY_CAPSLOCK);
        QTRY_COMPARE(groupNow(), 0u);
        session.tap(0, KEY_Q);
        QTRY_COMPARE(session.typed(), QStringLiteral("q"));
    }

    // Another user's session takes the seat (fast user switching): the nodes opened before
    // would go on reading that user's keys. logind's Active property closes them, and opens
    // them again once the session is back; nothing is typed meanwhile.
    void anotherUsersSessionIsNeitherReadNorTypedInto() {
        PrivateBus bus;
        QVERIFY2(!bus.address.isEmpty(), "dbus-daemon did not start");
        QDBusConnection serviceSide = QDBusConnection::connectToBus(bus.address, "logind");
        QDBusConnection clientSide = QDBusConnection::connectToBus(bus.address, "typolet");
        StandInLogind logind(serviceSide);
        QVERIFY(serviceSide.registerVirtualObject(QStringLiteral("/org/freedesktop/login1"), &logind,
                                                  QDBusConnection::SubPath));
        QVERIFY(serviceSide.registerService(QStringLiteral("org.freedesktop.login1")));

        Session session;
        int pipe[2];
        QVERIFY(::pipe2(pipe, O_NONBLOCK | O_CLOEXEC) == 0);
        UinputKeyboardOutput output(session.keymap);
        output.setDevice(pipe[1]);
        LogindSessionWatch watch(clientSide);
        QObject::connect(&watch, &LogindSessionWatch::activeChanged, &session.monitor,
                         [&](bool active) {
                             session.monitor.setSessionActive(active);
                             output.setSessionActive(active);
                         });
        watch.start(QStringLiteral("7"));
        QTRY_VERIFY(logind.calls.contains(QStringLiteral("Get org.freedesktop.login1.Session")));
        const int before = session.peer(0);

        logind.switchTo(false);
        QTRY_VERIFY(session.monitor.keyboardNames().isEmpty());
        char byte;
        QTRY_COMPARE(::recv(before, &byte, 1, MSG_DONTWAIT), ssize_t(0)); // the node is closed
        bool finished = false;
        output.perform({ExpansionAction::type(QStringLiteral("secret"))}, [&] { finished = true; });
        QTRY_VERIFY(finished);
        input_event event;
        QCOMPARE(::read(pipe[0], &event, sizeof event), ssize_t(-1)); // nothing was typed

        // Back: logind gives the node's access back a moment after it says so.
        session.devices.setReadable(QStringLiteral("event0"), false);
        QSignalSpy back(&watch, &LogindSessionWatch::activeChanged);
        logind.switchTo(true);
        QTRY_COMPARE(back.size(), 1);
        QVERIFY(session.monitor.keyboardNames().isEmpty());
        session.devices.setReadable(QStringLiteral("event0"), true);
        QTRY_COMPARE(session.monitor.keyboardNames(), QStringList{QStringLiteral("Keyboard 0")});
        QVERIFY(session.peer(0) != before);
        session.tap(0, KEY_A);
        QTRY_COMPARE(session.typed(), QStringLiteral("a"));
        ::close(pipe[0]);
        ::close(pipe[1]);
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

    // The Caps Lock light is Caps Lock's only where the keymap says so: with grp_led:caps it
    // shows the second layout.
    void locksFollowTheCompositorsLights_data() {
        QTest::addColumn<QString>("layouts");
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("typed");
        QTest::newRow("the light shows Caps Lock") << "us" << "" << "Qq";
        QTest::newRow("the light shows the layout") << "us,ru" << "grp_led:caps" << "qq";
    }
    void locksFollowTheCompositorsLights() {
        QFETCH(QString, layouts);
        QFETCH(QString, options);
        QFETCH(QString, typed);
        Session session;
        QVERIFY(session.keymap.loadText(CompiledKeymapSource(layouts, {}, options).text()));
        FakeInputDevices::send(session.peer(0), EV_LED, LED_CAPSL, 1);
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_REPORT, 0);
        session.tap(0, KEY_Q);
        if (options.isEmpty())
            session.tap(0, KEY_CAPSLOCK);
        FakeInputDevices::send(session.peer(0), EV_LED, LED_CAPSL, 0);
        FakeInputDevices::send(session.peer(0), EV_SYN, SYN_REPORT, 0);
        session.tap(0, KEY_Q);
        session.key(0, BTN_LEFT, 1); // a pointer button on the keyboard is a click, not a key
        QTRY_COMPARE(session.typed(), typed);
        if (!options.isEmpty())
            return;
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
