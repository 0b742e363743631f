// One Typolet per user: a later launch, in this process or another, reaches the running one
// and asks it to come forward; a Typolet that crashed does not block the next one.

#include "SingleInstanceGuard.h"
#include "IsolatedTestMain.h"

#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>

namespace {
constexpr int patienceMs = 20000; // generous: the machine may be busy with other builds

QString probePath() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/typolet_instance_probe");
}

// Starts the probe as the running Typolet and waits until it listens.
bool startPrimaryProbe(QProcess& probe, const QString& name) {
    probe.start(probePath(), {name});
    if (!probe.waitForStarted(patienceMs))
        return false;
    while (!probe.canReadLine()) {
        if (!probe.waitForReadyRead(patienceMs))
            return false;
    }
    return probe.readLine().trimmed() == "primary";
}
// Waits for the probe to end; it may already have ended while the event loop ran.
bool finished(QProcess& probe) {
    return probe.state() == QProcess::NotRunning || probe.waitForFinished(patienceMs);
}
} // namespace

class SingleInstanceGuardTest : public QObject {
    Q_OBJECT
private slots:
    void secondGuardAsksTheFirstToComeForward();
    void secondLaunchInAnotherProcessExitsAndRaisesThisOne();
    void launchWhileAnotherProcessRuns();
    void crashedTypoletDoesNotBlockTheNextLaunch();
    void otherMessagesAreIgnored();
    void defaultNameIsPerUserAndDisplay();
};

void SingleInstanceGuardTest::secondGuardAsksTheFirstToComeForward() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    SingleInstanceGuard first(name);
    QSignalSpy activations(&first, &SingleInstanceGuard::activationRequested);
    QCOMPARE(first.claim(), SingleInstanceGuard::Role::Primary);

    SingleInstanceGuard second(name);
    QCOMPARE(second.claim(), SingleInstanceGuard::Role::Secondary);
    QVERIFY(second.notifiedPrimary());
    QVERIFY(activations.wait(patienceMs));
    QCOMPARE(activations.size(), 1);
}

void SingleInstanceGuardTest::secondLaunchInAnotherProcessExitsAndRaisesThisOne() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    SingleInstanceGuard running(name);
    QSignalSpy activations(&running, &SingleInstanceGuard::activationRequested);
    QCOMPARE(running.claim(), SingleInstanceGuard::Role::Primary);

    QProcess probe;
    probe.start(probePath(), {name});
    // The probe blocks only on its own side; this process keeps serving its socket meanwhile.
    QVERIFY(activations.wait(patienceMs));
    QVERIFY(finished(probe));
    QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
    QCOMPARE(probe.exitCode(), 3);
    QCOMPARE(probe.readAllStandardOutput().trimmed(), QByteArray("secondary notified"));
    QCOMPARE(activations.size(), 1);
}

void SingleInstanceGuardTest::launchWhileAnotherProcessRuns() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    QProcess probe;
    QVERIFY(startPrimaryProbe(probe, name));

    SingleInstanceGuard late(name);
    QCOMPARE(late.claim(), SingleInstanceGuard::Role::Secondary);
    QVERIFY(late.notifiedPrimary());
    QVERIFY(finished(probe));
    QCOMPARE(probe.exitCode(), 0);
    QCOMPARE(probe.readAllStandardOutput().trimmed(), QByteArray("activated"));
}

void SingleInstanceGuardTest::crashedTypoletDoesNotBlockTheNextLaunch() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    QProcess probe;
    QVERIFY(startPrimaryProbe(probe, name));
    probe.kill(); // no chance to clean up
    QVERIFY(finished(probe));
    QVERIFY(QFileInfo::exists(name + QStringLiteral(".lock")));
    QVERIFY(QFileInfo::exists(name));

    SingleInstanceGuard next(name);
    QSignalSpy activations(&next, &SingleInstanceGuard::activationRequested);
    QCOMPARE(next.claim(), SingleInstanceGuard::Role::Primary);
    // And it is reachable on the socket it took over.
    SingleInstanceGuard later(name);
    QCOMPARE(later.claim(), SingleInstanceGuard::Role::Secondary);
    QVERIFY(later.notifiedPrimary());
    QVERIFY(activations.wait(patienceMs));
}

void SingleInstanceGuardTest::otherMessagesAreIgnored() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    SingleInstanceGuard running(name);
    QSignalSpy activations(&running, &SingleInstanceGuard::activationRequested);
    QCOMPARE(running.claim(), SingleInstanceGuard::Role::Primary);

    const auto send = [&](const QByteArray& message) {
        QLocalSocket socket;
        QSignalSpy closed(&socket, &QLocalSocket::disconnected);
        socket.connectToServer(name);
        if (!socket.waitForConnected(patienceMs))
            return false;
        socket.write(message);
        socket.flush();
        // The running side hangs up once it has read the line.
        return closed.wait(patienceMs);
    };
    QVERIFY(send("open the pod bay doors\n"));
    QCOMPARE(activations.size(), 0);
    QVERIFY(send(SingleInstanceGuard::activateMessage));
    QCOMPARE(activations.size(), 1);
}

void SingleInstanceGuardTest::defaultNameIsPerUserAndDisplay() {
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray display = qgetenv("DISPLAY");
    QVERIFY(!runtime.isEmpty());
    qputenv("DISPLAY", ":7.0");
    QCOMPARE(SingleInstanceGuard::defaultServerName(),
             QString::fromLocal8Bit(runtime) + QStringLiteral("/typolet-_7.0.socket"));
    QCOMPARE(SingleInstanceGuard().serverName(), SingleInstanceGuard::defaultServerName());
    // Another display of the same user has its own Typolet.
    qputenv("DISPLAY", "host/unix:3");
    QCOMPARE(SingleInstanceGuard::defaultServerName(),
             QString::fromLocal8Bit(runtime) + QStringLiteral("/typolet-host_unix_3.socket"));
    qunsetenv("DISPLAY");
    QCOMPARE(SingleInstanceGuard::defaultServerName(),
             QString::fromLocal8Bit(runtime) + QStringLiteral("/typolet.socket"));

    qputenv("DISPLAY", ":7");
    qunsetenv("XDG_RUNTIME_DIR");
    const QString fallback = SingleInstanceGuard::defaultServerName();
    qputenv("XDG_RUNTIME_DIR", runtime);
    if (display.isEmpty())
        qunsetenv("DISPLAY");
    else
        qputenv("DISPLAY", display);
    QCOMPARE(fallback, QDir::tempPath() + QStringLiteral("/%1-typolet-_7.socket").arg(::getuid()));
}

TYPOLET_ISOLATED_TEST_MAIN(SingleInstanceGuardTest)
#include "SingleInstanceGuardTest.moc"
