// One Typolet per user and display: a later launch wakes the running one; a crash blocks none.

#include "SingleInstanceGuard.h"
#include "IsolatedTestMain.h"
#include "LocalSocket.h"

#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>

namespace {
constexpr int patienceMs = 20000; // generous: the machine may be busy with other builds

// A stand-in for another Typolet process (InstanceProbe.cpp).
void startProbe(QProcess& probe, const QString& name) {
    probe.start(QCoreApplication::applicationDirPath() + QStringLiteral("/typolet_instance_probe"),
                {name});
}
} // namespace

class SingleInstanceGuardTest : public QObject {
    Q_OBJECT
private slots:
    void aStrangersLineIsIgnored();
    void crashedTypoletDoesNotBlockTheNextLaunch();
    void defaultNameIsPerUserAndDisplay();
};

// A second launch of the real program raises the first (the shell's end-to-end test); here,
// anything but that request is ignored.
void SingleInstanceGuardTest::aStrangersLineIsIgnored() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    SingleInstanceGuard running(name);
    QSignalSpy activations(&running, &SingleInstanceGuard::activationRequested);
    QCOMPARE(running.claim(), SingleInstanceGuard::Role::Primary);

    // Anything but the request to come forward is ignored.
    const std::unique_ptr<LocalSocket> stranger(LocalSocket::connectTo(name));
    QVERIFY(stranger);
    QSignalSpy hungUp(stranger.get(), &LocalSocket::disconnected);
    QVERIFY(stranger->write("open the pod bay doors\n"));
    QVERIFY(hungUp.wait(patienceMs)); // the running side hangs up once it has read the line
    QCOMPARE(activations.size(), 0);
}

void SingleInstanceGuardTest::crashedTypoletDoesNotBlockTheNextLaunch() {
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("guard.socket"));
    QProcess probe;
    startProbe(probe, name);
    QTRY_VERIFY_WITH_TIMEOUT(probe.canReadLine(), patienceMs);
    QCOMPARE(probe.readLine().trimmed(), QByteArray("primary"));
    probe.kill(); // no chance to clean up
    QTRY_COMPARE_WITH_TIMEOUT(probe.state(), QProcess::NotRunning, patienceMs);
    QVERIFY(QFileInfo::exists(name + QStringLiteral(".lock")));
    QVERIFY(QFileInfo::exists(name));

    SingleInstanceGuard next(name);
    QSignalSpy activations(&next, &SingleInstanceGuard::activationRequested);
    QCOMPARE(next.claim(), SingleInstanceGuard::Role::Primary);
    // It is reachable on the socket it took over, by a later launch in this same process too.
    SingleInstanceGuard later(name);
    QCOMPARE(later.claim(), SingleInstanceGuard::Role::Secondary);
    QVERIFY(later.notifiedPrimary());
    QVERIFY(activations.wait(patienceMs));
    QCOMPARE(activations.size(), 1);
}

void SingleInstanceGuardTest::defaultNameIsPerUserAndDisplay() {
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray display = qgetenv("DISPLAY");
    const QByteArray wayland = qgetenv("WAYLAND_DISPLAY");
    QVERIFY(!runtime.isEmpty());
    const auto restore = qScopeGuard([&] {
        qputenv("XDG_RUNTIME_DIR", runtime);
        qputenv("DISPLAY", display);
        qputenv("WAYLAND_DISPLAY", wayland);
    });
    qunsetenv("WAYLAND_DISPLAY");
    const auto nameFor = [](const char* display) {
        if (display != nullptr)
            qputenv("DISPLAY", display);
        else
            qunsetenv("DISPLAY");
        return SingleInstanceGuard::defaultServerName();
    };
    const QString folder = QString::fromLocal8Bit(runtime);
    QCOMPARE(nameFor(":7"), folder + QStringLiteral("/typolet-_7.socket"));
    QCOMPARE(SingleInstanceGuard().serverName(), SingleInstanceGuard::defaultServerName());
    // Every way of naming display 7 here is one display: one Typolet.
    for (const char* same : {":7.0", "localhost:7", "unix:7.1", ":07", ":007.0", "unix/:7",
                             "unix/:07.0", "tcp/localhost:7"})
        QVERIFY2(nameFor(same) == nameFor(":7"), same);
    // Another display, or another machine's, has its own.
    for (const char* other : {":8", ":70", ":17", "far.example.org:7", "tcp/far.example.org:7"})
        QVERIFY2(nameFor(other) != nameFor(":7"), other);
    QCOMPARE(nameFor(nullptr), folder + QStringLiteral("/typolet.socket"));
    QCOMPARE(SingleInstanceGuard::displayKey(":0", "wayland-1"), QStringLiteral("wayland-wayland-1"));
    // Without a runtime folder the guard lives in a private folder of the user's own.
    qunsetenv("XDG_RUNTIME_DIR");
    const QFileInfo fallback(QFileInfo(nameFor(":7")).path());
    QVERIFY(fallback.isDir());
    QCOMPARE(fallback.ownerId(), ::getuid());
    QCOMPARE(fallback.permissions() & (QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                       QFileDevice::ReadOther | QFileDevice::WriteOther),
             QFileDevice::Permissions());
}

TYPOLET_ISOLATED_TEST_MAIN(SingleInstanceGuardTest)
#include "SingleInstanceGuardTest.moc"
