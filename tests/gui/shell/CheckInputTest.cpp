// What `typolet --check-input` says on this machine, run as a user would run it.
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFileInfo>
#include <QProcess>
#include <QtTest>

namespace {
// A desktop portal that offers a keyboard through its remote desktop.
class StandInPortal : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String("Get") ||
            message.arguments().value(0).toString() != QLatin1String("org.freedesktop.portal.RemoteDesktop"))
            return false;
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(7u))));
    }
};
} // namespace

class CheckInputTest : public QObject {
    Q_OBJECT

private slots:
    void checkInputTellsWhatIsMissingHere_data() {
        QTest::addColumn<QString>("backend");
        QTest::addColumn<bool>("portal");
        QTest::addColumn<QStringList>("says");
        // These machines have no input devices, no uinput and no display.
        QVERIFY2(!QFileInfo::exists("/dev/input") && !QFileInfo::exists("/dev/uinput"),
                 "this check expects a machine without input devices");
        QTest::newRow("evdev") << "evdev" << false
                               << QStringList{"Backend: evdev", "/dev/input does not exist",
                                              "/dev/uinput does not exist", "sudo modprobe uinput",
                                              "Typing: through the uinput virtual keyboard",
                                              "Keymap: from ",
                                              "Seeing keys: no. Typing keys: no."};
        QTest::newRow("evdev, a desktop portal") << "evdev" << true
                                                 << QStringList{"Typing: through the desktop's remote desktop portal, once you allow it",
                                                                "Seeing keys: no. Typing keys: yes."};
        QTest::newRow("x11") << "x11" << false << QStringList{"Backend: x11", "X display: cannot be opened"};
    }
    void checkInputTellsWhatIsMissingHere() {
        QFETCH(QString, backend);
        QFETCH(bool, portal);
        QFETCH(QStringList, says);
        QProcess typolet;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TYPOLET_BACKEND", backend);
        env.remove("DISPLAY");
        env.remove("WAYLAND_DISPLAY"); // no compositor to type through either
        PrivateBus bus; // the session bus, with or without a portal on it
        QVERIFY2(!bus.address.isEmpty(), "dbus-daemon did not start");
        env.insert("DBUS_SESSION_BUS_ADDRESS", bus.address);
        QDBusConnection portalSide = QDBusConnection::connectToBus(bus.address, "portal " + bus.address);
        StandInPortal standIn;
        if (portal) {
            QVERIFY(portalSide.registerVirtualObject("/org/freedesktop/portal/desktop", &standIn));
            QVERIFY(portalSide.registerService("org.freedesktop.portal.Desktop"));
        }
        typolet.setProcessEnvironment(env);
        typolet.start(TYPOLET_BINARY, {"--check-input"});
        // The stand-in answers from this event loop: it runs while typolet does.
        QTRY_VERIFY_WITH_TIMEOUT(typolet.state() == QProcess::NotRunning, 20000);
        QDBusConnection::disconnectFromBus(portalSide.name());
        const QString out = QString::fromUtf8(typolet.readAllStandardOutput());
        for (const QString& line : says)
            QVERIFY2(out.contains(line), qPrintable(out));
        QCOMPARE(typolet.exitStatus(), QProcess::NormalExit);
        QCOMPARE(typolet.exitCode(), 1);
    }
};

QTEST_GUILESS_MAIN(CheckInputTest)
#include "CheckInputTest.moc"
