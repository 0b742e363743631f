// Two computers' libraries kept in step by a real sync engine: two Syncthing instances on
// 127.0.0.1 (discovery, relays, NAT traversal, usage and crash reports and upgrades all off),
// each sharing one folder with the other, and a store with its synced folder on each side.
// Also two clones of one git repository merged by `git pull`.
//
// No time is asserted: each step waits for its outcome with a generous deadline and fails with
// what it waited for.
#include "LibraryHistory.h"
#include "SnippetStore.h"
#include "SyncFile.h"
#include "SyncFolder.h"
#include "TestData.h"
#include "Timestamp.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace {
constexpr int deadlineMs = 90000;

int freePort() {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

// One Syncthing instance with its home (keys, config, database) and its copy of the folder.
class Syncthing {
public:
    Syncthing(const QString& home, const QString& folder) : m_home(home), m_folder(folder) {}
    ~Syncthing() { stop(); }

    QString folder() const { return m_folder; }
    QString deviceId() const { return m_deviceId; }
    int port() const { return m_port; }

    // Keys and a first config, from which the device id is read.
    QString generate() {
        QProcess generate;
        generate.setProcessEnvironment(environment());
        generate.start(QStringLiteral("syncthing"),
                       {QStringLiteral("generate"), QStringLiteral("--home=") + m_home,
                        QStringLiteral("--no-default-folder"), QStringLiteral("--skip-port-probing")});
        if (!generate.waitForStarted())
            return QStringLiteral("syncthing cannot be started (%1); scripts/bootstrap installs it")
                .arg(generate.errorString());
        if (!generate.waitForFinished(120000) || generate.exitCode() != 0)
            return QStringLiteral("syncthing generate failed: %1")
                .arg(QString::fromLocal8Bit(generate.readAll()));
        static const QRegularExpression device(QStringLiteral("<device id=\"([A-Z0-9-]+)\""));
        const auto match = device.match(QString::fromUtf8(readAll(configPath())));
        if (!match.hasMatch())
            return QStringLiteral("no device id in %1").arg(configPath());
        m_deviceId = match.captured(1);
        m_port = freePort();
        return {};
    }

    // This instance's config: the peer's device id as generated into the peer's config.xml,
    // one shared folder, and nothing that reaches beyond 127.0.0.1.
    bool configure(const Syncthing& peer) {
        QDir().mkpath(m_folder + QStringLiteral("/.stfolder"));
        const QString config = QStringLiteral(R"(<configuration version="36">
    <folder id="typolet" label="Typolet" path="%1" type="sendreceive" rescanIntervalS="60" fsWatcherEnabled="true" fsWatcherDelayS="1" ignorePerms="false" autoNormalize="true">
        <filesystemType>basic</filesystemType>
        <device id="%2"></device>
        <device id="%3"></device>
        <minDiskFree unit="%">0</minDiskFree>
        <markerName>.stfolder</markerName>
    </folder>
    <device id="%2" name="self" compression="metadata" introducer="false">
        <address>dynamic</address>
    </device>
    <device id="%3" name="peer" compression="metadata" introducer="false">
        <address>tcp://127.0.0.1:%5</address>
    </device>
    <gui enabled="false" tls="false">
        <address>127.0.0.1:0</address>
    </gui>
    <options>
        <listenAddress>tcp://127.0.0.1:%4</listenAddress>
        <globalAnnounceEnabled>false</globalAnnounceEnabled>
        <localAnnounceEnabled>false</localAnnounceEnabled>
        <relaysEnabled>false</relaysEnabled>
        <natEnabled>false</natEnabled>
        <stunKeepaliveStartS>0</stunKeepaliveStartS>
        <urAccepted>-1</urAccepted>
        <autoUpgradeIntervalH>0</autoUpgradeIntervalH>
        <crashReportingEnabled>false</crashReportingEnabled>
        <startBrowser>false</startBrowser>
        <reconnectionIntervalS>1</reconnectionIntervalS>
        <announceLANAddresses>false</announceLANAddresses>
        <minHomeDiskFree unit="%">0</minHomeDiskFree>
    </options>
</configuration>
)")
                                   .arg(m_folder, m_deviceId, peer.m_deviceId)
                                   .arg(m_port)
                                   .arg(peer.m_port);
        return replaceFile(configPath(), config.toUtf8());
    }

    bool start() {
        m_process = std::make_unique<QProcess>();
        m_process->setProcessEnvironment(environment());
        m_process->setProcessChannelMode(QProcess::MergedChannels);
        m_process->setStandardOutputFile(m_home + QStringLiteral("/syncthing.log"),
                                         QIODevice::Append);
        m_process->start(QStringLiteral("syncthing"),
                         {QStringLiteral("serve"), QStringLiteral("--home=") + m_home,
                          QStringLiteral("--no-browser"), QStringLiteral("--no-restart"),
                          QStringLiteral("--no-upgrade"), QStringLiteral("--no-default-folder")});
        return m_process->waitForStarted();
    }

    void stop() {
        if (!m_process || m_process->state() == QProcess::NotRunning)
            return;
        m_process->terminate();
        if (!m_process->waitForFinished(20000)) {
            m_process->kill();
            m_process->waitForFinished(5000);
        }
    }

    QString log() const { return QString::fromLocal8Bit(readAll(m_home + QStringLiteral("/syncthing.log"))).right(3000); }

private:
    QString configPath() const { return m_home + QStringLiteral("/config.xml"); }
    static QProcessEnvironment environment() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("STNOUPGRADE"), QStringLiteral("1"));
        environment.insert(QStringLiteral("STNORESTART"), QStringLiteral("1"));
        environment.insert(QStringLiteral("STNODEFAULTFOLDER"), QStringLiteral("1"));
        return environment;
    }

    QString m_home, m_folder, m_deviceId;
    int m_port = 0;
    std::unique_ptr<QProcess> m_process;
};

// One computer: a store over its own library file (history beside it) and its synced folder.
struct Computer {
    Computer(const QString& home, const QString& id, const QString& folder)
        : store(home + QStringLiteral("/Typolet.conf")),
          sync(store, [id] { return id; }, home + QStringLiteral("/sync.json")), m_folder(folder) {}

    QString content(const QString& command) const {
        const auto found = store.snippetWithCommand(command);
        return found ? found->content : QStringLiteral("(none)");
    }
    void set(const QString& command, const QString& content) {
        if (const auto found = store.snippetWithCommand(command))
            QVERIFY(!store.updateSnippet(*found, command, content));
        else
            QVERIFY(!store.addSnippet(
                Snippet::create(command, content, Category::defaultCategoryId)));
    }
    // Its own file holds the change (written by the live write, soon after the change).
    bool published(const QString& text) const {
        return readAll(sync.ownFilePath()).contains(text.toUtf8());
    }
    QStringList library() const { return contentsOf(store.snippets()); }

    SnippetStore store;
    SyncFolder sync;
    QString m_folder;
};

bool git(const QString& folder, const QStringList& arguments, QString* output = nullptr) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("git"),
                  QStringList{QStringLiteral("-c"), QStringLiteral("user.name=Test"),
                              QStringLiteral("-c"), QStringLiteral("user.email=test@localhost"),
                              QStringLiteral("-c"), QStringLiteral("init.defaultBranch=main"),
                              QStringLiteral("-c"), QStringLiteral("pull.rebase=false")} +
                      arguments);
    const bool ran = process.waitForStarted() && process.waitForFinished(60000);
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return ran && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}
} // namespace

class SyncthingE2eTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void addedOnAAppearsOnB();
    void differentEditsBothSurvive();
    void sameSnippetEditedWhileStoppedConverges();
    void deleteBeatsAnOlderEdit();
    void thousandChangesArriveWhole();
    void halfWrittenFileChangesNothing();
    void cleanupTestCase();
    void gitClonesConverge();

private:
    void stopBoth() {
        m_syncthingA->stop();
        m_syncthingB->stop();
    }
    void startBoth() {
        QVERIFY2(m_syncthingA->start() && m_syncthingB->start(), "syncthing did not start again");
    }
    QString logs() const {
        return QStringLiteral("\n--- Syncthing A:\n%1\n--- Syncthing B:\n%2")
            .arg(m_syncthingA->log(), m_syncthingB->log());
    }

    QTemporaryDir m_root;
    std::unique_ptr<Syncthing> m_syncthingA, m_syncthingB;
    std::unique_ptr<Computer> m_a, m_b;
};

void SyncthingE2eTest::initTestCase() {
    QVERIFY(m_root.isValid());
    const QString root = m_root.path();
    m_syncthingA = std::make_unique<Syncthing>(root + QStringLiteral("/syncthing-a"),
                                               root + QStringLiteral("/a/Sync"));
    m_syncthingB = std::make_unique<Syncthing>(root + QStringLiteral("/syncthing-b"),
                                               root + QStringLiteral("/b/Sync"));
    for (Syncthing* syncthing : {m_syncthingA.get(), m_syncthingB.get()}) {
        const QString error = syncthing->generate();
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }
    QVERIFY(m_syncthingA->configure(*m_syncthingB));
    QVERIFY(m_syncthingB->configure(*m_syncthingA));
    startBoth();
    m_a = std::make_unique<Computer>(root + QStringLiteral("/a"), QStringLiteral("aaaa1111"),
                                     m_syncthingA->folder());
    m_b = std::make_unique<Computer>(root + QStringLiteral("/b"), QStringLiteral("bbbb2222"),
                                     m_syncthingB->folder());
    QVERIFY(!m_a->sync.start(m_syncthingA->folder()));
    QVERIFY(!m_b->sync.start(m_syncthingB->folder()));
}

void SyncthingE2eTest::addedOnAAppearsOnB() {
    m_a->set(QStringLiteral(";hello"), QStringLiteral("Hello from A"));
    QTRY_VERIFY2_WITH_TIMEOUT(m_b->content(QStringLiteral(";hello")) == QLatin1String("Hello from A"),
                              qPrintable(QStringLiteral("B never got A's new snippet") + logs()),
                              deadlineMs);
    QTRY_COMPARE_WITH_TIMEOUT(m_b->sync.computers().size(), 2, deadlineMs);
}

void SyncthingE2eTest::differentEditsBothSurvive() {
    m_a->set(QStringLiteral(";one"), QStringLiteral("1"));
    m_a->set(QStringLiteral(";two"), QStringLiteral("2"));
    QTRY_VERIFY2_WITH_TIMEOUT(m_b->content(QStringLiteral(";two")) == QLatin1String("2"),
                              qPrintable(QStringLiteral("B never got ;two") + logs()), deadlineMs);
    m_a->set(QStringLiteral(";one"), QStringLiteral("1 from A"));
    m_b->set(QStringLiteral(";two"), QStringLiteral("2 from B"));
    for (Computer* computer : {m_a.get(), m_b.get()}) {
        QTRY_VERIFY2_WITH_TIMEOUT(
            computer->content(QStringLiteral(";one")) == QLatin1String("1 from A") &&
                computer->content(QStringLiteral(";two")) == QLatin1String("2 from B"),
            qPrintable(QStringLiteral("both edits did not survive: ") +
                       computer->library().join(u' ') + logs()),
            deadlineMs);
    }
}

void SyncthingE2eTest::sameSnippetEditedWhileStoppedConverges() {
    m_a->set(QStringLiteral(";same"), QStringLiteral("first"));
    QTRY_VERIFY2_WITH_TIMEOUT(m_b->content(QStringLiteral(";same")) == QLatin1String("first"),
                              qPrintable(QStringLiteral("B never got ;same") + logs()), deadlineMs);
    QSignalSpy collisionsA(&m_a->sync, &SyncFolder::collisionsKept);
    stopBoth();
    m_a->set(QStringLiteral(";same"), QStringLiteral("edited on A"));
    QTRY_VERIFY_WITH_TIMEOUT(m_a->published(QStringLiteral("edited on A")), deadlineMs);
    QTest::qWait(50); // B's edit is the later one
    m_b->set(QStringLiteral(";same"), QStringLiteral("edited on B"));
    QTRY_VERIFY_WITH_TIMEOUT(m_b->published(QStringLiteral("edited on B")), deadlineMs);
    startBoth();
    for (Computer* computer : {m_a.get(), m_b.get()}) {
        QTRY_VERIFY2_WITH_TIMEOUT(
            computer->content(QStringLiteral(";same")) == QLatin1String("edited on B"),
            qPrintable(QStringLiteral("the two did not converge: ") +
                       computer->library().join(u' ') + logs()),
            deadlineMs);
    }
    // A's losing version is in A's history, and A was told once.
    QTRY_COMPARE_WITH_TIMEOUT(collisionsA.count(), 1, deadlineMs);
    const auto versions = m_a->store.file().history().versions();
    const auto kept = std::find_if(versions.cbegin(), versions.cend(), [](const auto& version) {
        return version.reason == LibraryHistory::Reason::SyncCollision;
    });
    QVERIFY2(kept != versions.cend(), "no version of A's library kept the losing edit");
    QCOMPARE(SnippetStore(kept->path).snippetWithCommand(QStringLiteral(";same"))->content,
             QStringLiteral("edited on A"));
}

void SyncthingE2eTest::deleteBeatsAnOlderEdit() {
    m_a->set(QStringLiteral(";old"), QStringLiteral("old"));
    QTRY_VERIFY2_WITH_TIMEOUT(m_b->content(QStringLiteral(";old")) == QLatin1String("old"),
                              qPrintable(QStringLiteral("B never got ;old") + logs()), deadlineMs);
    stopBoth();
    m_b->set(QStringLiteral(";old"), QStringLiteral("edited on B"));
    QTRY_VERIFY_WITH_TIMEOUT(m_b->published(QStringLiteral("edited on B\"")), deadlineMs);
    QTest::qWait(50); // A's deletion is the later change
    QVERIFY(!m_a->store.removeSnippet(m_a->store.snippetWithCommand(QStringLiteral(";old"))->id));
    QTRY_VERIFY_WITH_TIMEOUT(!m_a->published(QStringLiteral("\";old\"")), deadlineMs);
    startBoth();
    for (Computer* computer : {m_a.get(), m_b.get()}) {
        QTRY_VERIFY2_WITH_TIMEOUT(
            !computer->store.snippetWithCommand(QStringLiteral(";old")),
            qPrintable(QStringLiteral("the deletion did not win: ") +
                       computer->library().join(u' ') + logs()),
            deadlineMs);
    }
}

void SyncthingE2eTest::thousandChangesArriveWhole() {
    QList<Snippet> snippets = m_a->store.snippets();
    for (int i = 0; i < 1000; ++i)
        snippets.append(Snippet::create(QStringLiteral(";many%1").arg(i), QStringLiteral("v1"),
                                        Category::defaultCategoryId));
    m_a->store.setSnippets(snippets);
    QVERIFY(!m_a->store.saveSnippets());
    const auto countOf = [](const Computer& computer, const QString& content) {
        int count = 0;
        for (const Snippet& snippet : computer.store.snippets())
            count += snippet.command.startsWith(QLatin1String(";many")) && snippet.content == content;
        return count;
    };
    QTRY_VERIFY2_WITH_TIMEOUT(countOf(*m_b, QStringLiteral("v1")) == 1000,
                              qPrintable(QStringLiteral("B has %1 of the 1,000 new snippets")
                                             .arg(countOf(*m_b, QStringLiteral("v1"))) + logs()),
                              deadlineMs);

    // All 1,000 changed at once on A: B sees none of them or all, never a part.
    QList<int> seenOnB;
    const auto watch = connect(&m_b->store, &SnippetStore::snippetsChanged, this,
                               [&] { seenOnB.append(countOf(*m_b, QStringLiteral("v2"))); });
    snippets = m_a->store.snippets();
    for (Snippet& snippet : snippets) {
        if (snippet.command.startsWith(QLatin1String(";many")))
            snippet.content = QStringLiteral("v2");
    }
    m_a->store.setSnippets(snippets);
    QVERIFY(!m_a->store.saveSnippets());
    QTRY_VERIFY2_WITH_TIMEOUT(countOf(*m_b, QStringLiteral("v2")) == 1000,
                              qPrintable(QStringLiteral("B has %1 of the 1,000 changes")
                                             .arg(countOf(*m_b, QStringLiteral("v2"))) + logs()),
                              deadlineMs);
    disconnect(watch);
    for (int seen : std::as_const(seenOnB))
        QVERIFY2(seen == 0 || seen == 1000, qPrintable(QStringLiteral("B saw %1 of 1,000").arg(seen)));
}

void SyncthingE2eTest::halfWrittenFileChangesNothing() {
    const QStringList before = m_b->library();
    // A computer's file that would empty the library, put in A's folder half-way: once under
    // the name Syncthing gives files it is still writing, once under a computer's own name.
    SyncMerge::Library emptied;
    SyncMerge::stampLocalChanges(emptied, m_a->store.categories(), m_a->store.snippets(),
                                 QStringLiteral("ffff6666"), Timestamp::now() + 60);
    SyncMerge::stampLocalChanges(emptied, m_a->store.categories(), {}, QStringLiteral("ffff6666"),
                                 Timestamp::now() + 120);
    const QByteArray whole = SyncFile::encode(QStringLiteral("ffff6666"), QStringLiteral("other"), emptied);
    const QString library = m_syncthingA->folder() + QStringLiteral("/Typolet/");
    QVERIFY(replaceFile(library + QStringLiteral(".syncthing.other-ffff6666.json.tmp"), whole));
    const QByteArray half = whole.left(whole.size() / 2);
    QVERIFY(replaceFile(library + QStringLiteral("other-ffff6666.json"), half));
    // Syncthing carries the half file to B, where it is named and left alone.
    QTRY_VERIFY2_WITH_TIMEOUT(m_b->sync.unreadableFiles().contains(QStringLiteral("other-ffff6666.json")),
                              qPrintable(QStringLiteral("B never named the half-written file") + logs()),
                              deadlineMs);
    QCOMPARE(m_b->library(), before);
    QCOMPARE(m_a->library(), before);
    QCOMPARE(readAll(m_syncthingB->folder() + QStringLiteral("/Typolet/other-ffff6666.json")), half);
}

void SyncthingE2eTest::cleanupTestCase() {
    m_a.reset();
    m_b.reset();
    stopBoth();
}

void SyncthingE2eTest::gitClonesConverge() {
    // A shared repository and two clones, one per computer.
    const QString root = m_root.path() + QStringLiteral("/git");
    QVERIFY(QDir().mkpath(root));
    QString output;
    QVERIFY2(git(root, {QStringLiteral("init"), QStringLiteral("--bare"), QStringLiteral("shared.git")}, &output),
             qPrintable(QStringLiteral("git is needed (scripts/bootstrap installs it): ") + output));
    for (const char* clone : {"x", "y"})
        QVERIFY2(git(root, {QStringLiteral("clone"), QStringLiteral("shared.git"), QLatin1String(clone)}, &output),
                 qPrintable(output));
    Computer x(root + QStringLiteral("/home-x"), QStringLiteral("cccc3333"), root + QStringLiteral("/x"));
    Computer y(root + QStringLiteral("/home-y"), QStringLiteral("dddd4444"), root + QStringLiteral("/y"));
    QVERIFY(!x.sync.start(root + QStringLiteral("/x")));
    QVERIFY(!y.sync.start(root + QStringLiteral("/y")));
    x.set(QStringLiteral(";shared"), QStringLiteral("from x"));
    x.sync.publish();
    const auto commitAndPush = [&](const QString& clone, bool pullFirst) {
        QVERIFY2(git(clone, {QStringLiteral("add"), QStringLiteral("-A")}, &output), qPrintable(output));
        QVERIFY2(git(clone, {QStringLiteral("commit"), QStringLiteral("-m"), QStringLiteral("library")}, &output),
                 qPrintable(output));
        if (pullFirst)
            QVERIFY2(git(clone, {QStringLiteral("pull"), QStringLiteral("origin"), QStringLiteral("main")}, &output),
                     qPrintable(QStringLiteral("git pull did not merge: ") + output));
        QVERIFY2(git(clone, {QStringLiteral("push"), QStringLiteral("origin"), QStringLiteral("HEAD:main")}, &output),
                 qPrintable(output));
    };
    commitAndPush(root + QStringLiteral("/x"), false);
    QVERIFY2(git(root + QStringLiteral("/y"), {QStringLiteral("pull"), QStringLiteral("origin"), QStringLiteral("main")}, &output),
             qPrintable(output));
    y.sync.readFolder();
    QCOMPARE(y.content(QStringLiteral(";shared")), QStringLiteral("from x"));

    // Both change the library, each commits, and y merges x's commit with `git pull`.
    x.set(QStringLiteral(";shared"), QStringLiteral("changed on x"));
    x.set(QStringLiteral(";xonly"), QStringLiteral("x"));
    y.set(QStringLiteral(";yonly"), QStringLiteral("y"));
    x.sync.publish();
    y.sync.publish();
    commitAndPush(root + QStringLiteral("/x"), false);
    commitAndPush(root + QStringLiteral("/y"), true);
    QVERIFY2(git(root + QStringLiteral("/x"), {QStringLiteral("pull"), QStringLiteral("origin"), QStringLiteral("main")}, &output),
             qPrintable(output));
    x.sync.readFolder();
    y.sync.readFolder();
    const QStringList expected{QStringLiteral(";shared=changed on x"), QStringLiteral(";xonly=x"),
                               QStringLiteral(";yonly=y")};
    QCOMPARE(x.library(), expected);
    QCOMPARE(y.library(), expected);
}

QTEST_GUILESS_MAIN(SyncthingE2eTest)
#include "SyncthingE2eTest.moc"
