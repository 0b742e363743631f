// What `typolet --check-input` says on this machine, run as a user would run it.
#include <QFileInfo>
#include <QProcess>
#include <QtTest>

class CheckInputTest : public QObject {
    Q_OBJECT

private slots:
    void checkInputTellsWhatIsMissingHere_data() {
        QTest::addColumn<QString>("backend");
        QTest::addColumn<QStringList>("says");
        // These machines have no input devices, no uinput and no display.
        QVERIFY2(!QFileInfo::exists("/dev/input") && !QFileInfo::exists("/dev/uinput"),
                 "this check expects a machine without input devices");
        QTest::newRow("evdev") << "evdev"
                               << QStringList{"Backend: evdev", "/dev/input does not exist",
                                              "/dev/uinput does not exist", "sudo modprobe uinput",
                                              "Typing: through the uinput virtual keyboard",
                                              "Keymap: from ",
                                              "Seeing keys: no. Typing keys: no."};
        QTest::newRow("x11") << "x11" << QStringList{"Backend: x11", "X display: cannot be opened"};
    }
    void checkInputTellsWhatIsMissingHere() {
        QFETCH(QString, backend);
        QFETCH(QStringList, says);
        QProcess typolet;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TYPOLET_BACKEND", backend);
        env.remove("DISPLAY");
        env.remove("WAYLAND_DISPLAY"); // no compositor to type through either
        typolet.setProcessEnvironment(env);
        typolet.start(TYPOLET_BINARY, {"--check-input"});
        QVERIFY(typolet.waitForFinished());
        const QString out = QString::fromUtf8(typolet.readAllStandardOutput());
        for (const QString& line : says)
            QVERIFY2(out.contains(line), qPrintable(out));
        QCOMPARE(typolet.exitStatus(), QProcess::NormalExit);
        QCOMPARE(typolet.exitCode(), 1);
    }
};

QTEST_GUILESS_MAIN(CheckInputTest)
#include "CheckInputTest.moc"
