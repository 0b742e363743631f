// Which backend Typolet picks from the session.
#include "InputBackend.h"

#include <QtTest>

class InputBackendTest : public QObject {
    Q_OBJECT

private slots:
    void theSessionChoosesUnlessOverridden_data() {
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<bool>("evdev");
        QTest::newRow("X11 session") << QStringList{"XDG_SESSION_TYPE=x11", "DISPLAY=:0"} << false;
        QTest::newRow("Wayland session with XWayland")
            << QStringList{"XDG_SESSION_TYPE=wayland", "DISPLAY=:0", "WAYLAND_DISPLAY=wayland-0"}
            << true;
        QTest::newRow("compositor nested in X11")
            << QStringList{"XDG_SESSION_TYPE=x11", "WAYLAND_DISPLAY=wayland-1"} << false;
        QTest::newRow("no session type, Wayland display") << QStringList{"WAYLAND_DISPLAY=wayland-0"} << true;
        QTest::newRow("nothing known") << QStringList{} << false;
        QTest::newRow("forced evdev") << QStringList{"XDG_SESSION_TYPE=x11", "TYPOLET_BACKEND=evdev"} << true;
        QTest::newRow("forced x11") << QStringList{"XDG_SESSION_TYPE=wayland", "TYPOLET_BACKEND=X11"} << false;
        QTest::newRow("unknown override")
            << QStringList{"XDG_SESSION_TYPE=wayland", "TYPOLET_BACKEND=libinput"} << true;
    }
    void theSessionChoosesUnlessOverridden() {
        QFETCH(QStringList, environment);
        QFETCH(bool, evdev);
        QProcessEnvironment env;
        for (const QString& pair : environment)
            env.insert(pair.section('=', 0, 0), pair.section('=', 1));
        const InputBackend::Choice choice = InputBackend::choose(env);
        QCOMPARE(choice.kind == InputBackend::Kind::Evdev, evdev);
        QVERIFY(!choice.reason.isEmpty());
    }
};

QTEST_GUILESS_MAIN(InputBackendTest)
#include "InputBackendTest.moc"
