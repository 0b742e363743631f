// Typolet facing a missing display, a server without the extensions it needs, a server that
// goes away, and text it cannot type. (A layout changed while Typolet runs is read from the
// next key: TypingHabitsE2eTest::otherLayouts and the dead-key test of ExpansionE2eTest.)
#include "XSession.h"

#include <QtTest>

class FaultsE2eTest : public QObject {
    Q_OBJECT

private slots:
    void withoutDisplayItExplainsAndExits() {
        XSession session; // only for its temporary folder and environment
        session.stopServer();
        QProcess typolet;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), QStringLiteral(":31999"));
        env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), session.folder());
        env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        typolet.setProcessEnvironment(env);
        typolet.start(QStringLiteral(TYPOLET_EXECUTABLE), {});
        QVERIFY(typolet.waitForFinished(60000));
        const QString err = QString::fromUtf8(typolet.readAllStandardError());
        QCOMPARE(typolet.exitStatus(), QProcess::NormalExit);
        QCOMPARE(typolet.exitCode(), 1);
        QVERIFY2(err.contains(QStringLiteral("Typolet needs an X11 display and could not open one "
                                             "(DISPLAY is \":31999\")")),
                 qPrintable(err));
        // No server was reached, so nothing may be said about the extensions it lacks.
        QVERIFY2(!err.contains(QStringLiteral("XInput")), qPrintable(err));
        QVERIFY2(!err.contains(QStringLiteral("XTEST")), qPrintable(err));
        QVERIFY2(!err.contains(QStringLiteral("Cannot see keys")), qPrintable(err));
    }

    void serverWithoutXtestShowsTheAlert() {
        XSession session({QStringLiteral("-extension"), QStringLiteral("XTEST")});
        QVERIFY(session.isRunning());
        QProcess* typolet = session.start(QStringLiteral(TYPOLET_EXECUTABLE), {});
        QVERIFY(XSession::waitFor([&] {
            return session.run(QStringLiteral("xdotool"),
                               {QStringLiteral("search"), QStringLiteral("--name"),
                                QStringLiteral("Typolet Cannot Reach the Keyboard")});
        }, 60000));
        QCOMPARE(typolet->state(), QProcess::Running);
        const QString err = QString::fromUtf8(typolet->readAllStandardError());
        QVERIFY2(err.contains(QStringLiteral("Cannot type: the X server offers no XTEST")),
                 qPrintable(err));
        QVERIFY(!err.contains(QStringLiteral("Cannot see keys")));
    }

    void serverGoingAwayEndsTypoletWithOneLine() {
        XSession session;
        QVERIFY(session.isRunning());
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        QProcess* typolet = session.typolet();
        session.stopServer();
        QVERIFY(typolet->waitForFinished(60000));
        QCOMPARE(typolet->exitStatus(), QProcess::NormalExit);
        QCOMPARE(typolet->exitCode(), 1);
        const QString all = session.typoletOutput();
        QCOMPARE(all.count(QStringLiteral("Lost the connection to the X display")), 1);
        QVERIFY2(!all.contains(QStringLiteral("XIO")), qPrintable(all));
    }

    void characterWithoutKeysymIsSkipped() {
        XSession session;
        QVERIFY2(session.startWith({{";nc", "ab\uFDD0cd"}}, XSession::Target::Terminal),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral(";nc")}));
        QCOMPARE(session.shownTextOnce([](const QString& text) { return text == "abcd"; }), "abcd");
        QVERIFY(session.typoletOutput().contains(
            QStringLiteral("Skipped a character that no key can type: U+FDD0")));
    }
};

QTEST_GUILESS_MAIN(FaultsE2eTest)
#include "FaultsE2eTest.moc"
