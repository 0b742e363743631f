// The library under real file-system faults: a small tmpfs mounted in a user and mount
// namespace of this test, filled up, remounted read-only, the file made unreadable or replaced
// by a folder. In every case every byte of the old file stays, the change stays in memory and
// the failure is reported, and the change is written once the fault is gone.
#include "ImportPlan.h"
#include "LibraryFile.h"
#include "Preferences.h"
#include "RecordCodec.h"
#include "SnippetStore.h"
#include "TestData.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
// Whether this process's capabilities are in effect: only while mounting. Without them the
// test's own files obey their permissions, as a user's do.
bool setCapabilitiesInEffect(bool inEffect) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    if (::syscall(SYS_capget, &header, data) != 0)
        return false;
    for (auto& set : data)
        set.effective = inEffect ? set.permitted : 0;
    return ::syscall(SYS_capset, &header, data) == 0;
}

bool mountCall(const char* source, const QString& target, const char* type, unsigned long flags,
               const QByteArray& options) {
    setCapabilitiesInEffect(true);
    const bool ok = ::mount(source, QFile::encodeName(target).constData(), type, flags,
                            options.isEmpty() ? nullptr : options.constData()) == 0;
    const int error = errno;
    setCapabilitiesInEffect(false);
    if (!ok)
        qWarning("mount on %s: %s", qPrintable(target), std::strerror(error));
    return ok;
}

bool unmount(const QString& target) {
    setCapabilitiesInEffect(true);
    const bool ok = ::umount2(QFile::encodeName(target).constData(), MNT_DETACH) == 0;
    setCapabilitiesInEffect(false);
    return ok;
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size() && file.flush();
}

qint64 freeBytes(const QString& dir) {
    struct statvfs info {};
    ::statvfs(QFile::encodeName(dir).constData(), &info);
    return qint64(info.f_bavail) * qint64(info.f_frsize);
}

// A library of `count` snippets as Typolet writes it, with or without the default category.
QByteArray libraryText(const QString& scratchDir, int count, bool withDefaultCategory) {
    const QString path = scratchDir + QStringLiteral("/seed.conf");
    QFile::remove(path);
    {
        SnippetStore store(path);
        QList<Snippet> snippets;
        for (int i = 0; i < count; ++i)
            snippets.append(Snippet::create(QStringLiteral(";s%1").arg(i),
                                            QStringLiteral("Snippet number %1, a line of text").arg(i),
                                            Category::defaultCategoryId));
        store.setSnippets(snippets);
        (void)store.saveSnippets();
    }
    QByteArray text = readAll(path);
    if (!withDefaultCategory) {
        LibraryFile file(path);
        file.write({{QStringLiteral("Categories"), QByteArray("[]")}});
        text = readAll(path);
    }
    return text;
}
} // namespace

class LibraryFaultsTest : public QObject {
    Q_OBJECT
public:
    explicit LibraryFaultsTest(QString program) : m_program(std::move(program)) {}

private:
    const QString m_program; // the real typolet, where this test's user can run it
    QTemporaryDir m_scratch; // outside the small file system
    QString m_mount;
    QString m_folder, m_path;

    // A fresh small file system holding `library` as Typolet.conf, with `free` bytes left.
    void prepare(const QByteArray& library, qint64 free) {
        m_mount = m_scratch.filePath(QStringLiteral("small-%1").arg(QRandomGenerator::global()->generate()));
        QVERIFY(QDir().mkpath(m_mount));
        QVERIFY(mountCall("tmpfs", m_mount, "tmpfs", 0, "size=512k,mode=0700"));
        m_folder = m_mount + QStringLiteral("/Typolet");
        m_path = m_folder + QStringLiteral("/Typolet.conf");
        QVERIFY(QDir().mkpath(m_folder));
        QVERIFY(writeFile(m_path, library));
        QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        fill(free);
    }
    void fill(qint64 free) {
        const qint64 filler = freeBytes(m_mount) - free;
        QVERIFY(filler > 0);
        QVERIFY(writeFile(m_mount + QStringLiteral("/filler"), QByteArray(filler, 'f')));
        QVERIFY(freeBytes(m_mount) <= free);
    }
    void makeRoom() { QVERIFY(QFile::remove(m_mount + QStringLiteral("/filler"))); }

private slots:
    void cleanup() {
        if (!m_mount.isEmpty())
            QVERIFY(unmount(m_mount));
        m_mount.clear();
    }

    void theStartUpSaveOnAFullDisk() {
        const QByteArray library = libraryText(m_scratch.path(), 150, false);
        QVERIFY(library.size() > 20000);
        prepare(library, 8 * 1024);
        LibraryFile file(m_path);
        SnippetStore store(file); // the default category is missing: the start saves
        QCOMPARE(store.snippets().size(), 150);
        QVERIFY(file.hasUnsavedChanges());
        QCOMPARE(readAll(m_path), library);
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Typolet.conf"});
        makeRoom();
        QTRY_VERIFY_WITH_TIMEOUT(!file.hasUnsavedChanges(), 10000);
        QCOMPARE(SnippetStore(m_path).snippets().size(), 150);
        QVERIFY(SnippetStore(m_path).category(Category::defaultCategoryId));
    }

    void changesOnAFullDisk_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<qint64>("free");
        for (const char* change : {"edit", "import", "preference"}) {
            QTest::addRow("%s, a few KB free", change) << QString::fromLatin1(change) << qint64(6 * 1024);
            QTest::addRow("%s, none free", change) << QString::fromLatin1(change) << qint64(0);
        }
    }

    void changesOnAFullDisk() {
        QFETCH(QString, change);
        QFETCH(qint64, free);
        const QByteArray library = libraryText(m_scratch.path(), 150, true);
        prepare(library, free);
        LibraryFile file(m_path);
        SnippetStore store(file);
        Preferences preferences(file);
        QSignalSpy failures(&file, &LibraryFile::saveFailed);
        if (change == QLatin1String("edit")) {
            const auto error = store.updateSnippet(store.snippets().first(), QStringLiteral(";s0"),
                                                   QStringLiteral("edited on a full disk"));
            QVERIFY(error && error->kind() == DataError::Kind::notSaved);
            QVERIFY(error->why().contains(QStringLiteral("No space left")));
        } else if (change == QLatin1String("import")) {
            ImportPlan plan;
            plan.snippets.append(Snippet::create(QStringLiteral(";imported"), QStringLiteral("text"),
                                                 Category::defaultCategoryId));
            QVERIFY(store.importSnippets(plan));
        } else {
            QVERIFY(!preferences.setPaused(true));
            QVERIFY(preferences.paused()); // in force all the same
        }
        QCOMPARE(failures.size(), 1);
        QCOMPARE(readAll(m_path), library);
        makeRoom();
        QTRY_VERIFY_WITH_TIMEOUT(!file.hasUnsavedChanges(), 10000);
        const SnippetStore after(m_path);
        if (change == QLatin1String("edit"))
            QCOMPARE(after.snippets().first().content, QStringLiteral("edited on a full disk"));
        else if (change == QLatin1String("import"))
            QVERIFY(after.snippetWithCommand(QStringLiteral(";imported")));
        else
            QVERIFY(Preferences(m_path).paused());
    }

    void aFolderRemountedReadOnly() {
        const QByteArray library = libraryText(m_scratch.path(), 20, true);
        prepare(library, 200 * 1024);
        LibraryFile file(m_path);
        SnippetStore store(file);
        QVERIFY(!store.addCategory(QStringLiteral("Before")));
        const QByteArray before = readAll(m_path);
        QVERIFY(mountCall(nullptr, m_mount, nullptr, MS_REMOUNT | MS_RDONLY, "size=512k,mode=0700"));
        const auto error = store.addCategory(QStringLiteral("While read-only"));
        QVERIFY(error && error->why().contains(QStringLiteral("Read-only")));
        QCOMPARE(readAll(m_path), before);
        QVERIFY(mountCall(nullptr, m_mount, nullptr, MS_REMOUNT, "size=512k,mode=0700"));
        QTRY_VERIFY_WITH_TIMEOUT(!file.hasUnsavedChanges(), 10000);
        QCOMPARE(SnippetStore(m_path).categories().size(), 3);
    }

    void theFileReplacedByAFolder() {
        prepare(libraryText(m_scratch.path(), 5, true), 200 * 1024);
        LibraryFile file(m_path);
        SnippetStore store(file);
        QVERIFY(QFile::rename(m_path, m_path + QStringLiteral(".moved")));
        QVERIFY(QDir().mkdir(m_path));
        QVERIFY(writeFile(m_path + QStringLiteral("/inside"), "someone's"));
        const auto error = store.addCategory(QStringLiteral("Work"));
        QVERIFY(error && error->why().contains(QStringLiteral("folder")));
        QCOMPARE(readAll(m_path + QStringLiteral("/inside")), QByteArray("someone's"));
        QVERIFY(QDir(m_path).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(!file.hasUnsavedChanges(), 10000);
        QCOMPARE(SnippetStore(m_path).snippets().size(), 5);
    }

    void aFileThatCannotBeReadIsNeverWrittenOver_data() {
        QTest::addColumn<int>("mode");
        QTest::newRow("no access (000)") << 0;
        QTest::newRow("write only (200)") << int(QFileDevice::WriteOwner);
    }

    void aFileThatCannotBeReadIsNeverWrittenOver() {
        QFETCH(int, mode);
        const QByteArray library = libraryText(m_scratch.path(), 100, true);
        prepare(library, 200 * 1024);
        QVERIFY(QFile::setPermissions(m_path, QFileDevice::Permissions(mode)));
        {
            LibraryFile file(m_path);
            SnippetStore store(file);
            QVERIFY(!store.loadError().isEmpty());
            const auto error = store.addSnippet(
                Snippet::create(QStringLiteral(";new"), QStringLiteral("new"), Category::defaultCategoryId));
            QVERIFY(error && error->kind() == DataError::Kind::notSaved);
            QVERIFY(QFile::setPermissions(m_path, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
            QCOMPARE(readAll(m_path), library);
            // Readable again: the library and the new snippet, merged.
            QTRY_VERIFY_WITH_TIMEOUT(!file.hasUnsavedChanges(), 10000);
            QCOMPARE(store.snippets().size(), 101);
        }
        QCOMPARE(SnippetStore(m_path).snippets().size(), 101);
    }

    void damagedRecordsWithNoRoomForACopy() {
        QByteArray library = libraryText(m_scratch.path(), 30, true);
        library.replace("\\\"command\\\":\\\";s7\\\"", "\\\"command\\\":7"); // one record damaged
        prepare(library, 0);
        LibraryFile file(m_path);
        SnippetStore store(file);
        QCOMPARE(store.unreadableRecords(), 1);
        QVERIFY(store.damagedRecordsUnkept());
        QVERIFY(store.addCategory(QStringLiteral("Work")));
        makeRoom();
        QTest::qWait(LibraryFile::retryIntervalMs + 500); // a retry must not write over it either
        QCOMPARE(readAll(m_path), library);
        // With room, the next save keeps the copy first.
        QVERIFY(!store.addCategory(QStringLiteral("Home")));
        QVERIFY(!store.damagedRecordsUnkept());
        QCOMPARE(readAll(store.backupPath()), library);
    }

    void theRealProgramStartsOnAFullDisk() {
        const QByteArray library = libraryText(m_scratch.path(), 150, false);
        prepare(library, 8 * 1024);
        QProcess typolet;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_mount);
        env.insert(QStringLiteral("XDG_STATE_HOME"), m_mount + QStringLiteral("/state"));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_scratch.path());
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
        env.insert(QStringLiteral("TYPOLET_BACKEND"), QStringLiteral("x11"));
        typolet.setProcessEnvironment(env);
        typolet.start(m_program, {});
        QVERIFY(typolet.waitForFinished(30000));
        const QString output = QString::fromLocal8Bit(typolet.readAllStandardError() +
                                                      typolet.readAllStandardOutput());
        QVERIFY2(output.contains(QStringLiteral("No space left on device")), qPrintable(output));
        QCOMPARE(readAll(m_path), library);
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Typolet.conf"});
    }
};

int main(int argc, char* argv[]) {
    // The faults are made by this test itself: a user and mount namespace of its own, as an
    // ordinary user (as root, file permissions would not apply).
    QString program = QStringLiteral(TYPOLET_BINARY);
    if (::geteuid() == 0) {
        // The build may sit in a folder only root can enter (/root): the program goes where
        // the user this test becomes can run it.
        const uid_t nobody = 65534;
        const QString folder = QDir::tempPath() + QStringLiteral("/typolet-faults-test-%1").arg(::getpid());
        const QString copy = folder + QStringLiteral("/typolet");
        if (!QDir().mkpath(folder) || !QFile::copy(program, copy) ||
            ::chown(QFile::encodeName(folder).constData(), nobody, nobody) != 0 ||
            ::chown(QFile::encodeName(copy).constData(), nobody, nobody) != 0 ||
            !QFile::setPermissions(copy, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                             QFileDevice::ExeOwner)) {
            std::fprintf(stderr, "cannot copy %s for the test's user\n", qPrintable(program));
            return 1;
        }
        program = copy;
        if (::setgroups(0, nullptr) != 0 || ::setresgid(nobody, nobody, nobody) != 0 ||
            ::setresuid(nobody, nobody, nobody) != 0) {
            std::fprintf(stderr, "cannot leave root: %s\n", std::strerror(errno));
            return 1;
        }
        // A change of user makes /proc/self the old user's; it must be ours to map the ids.
        ::prctl(PR_SET_DUMPABLE, 1);
    }
    const uid_t uid = ::getuid();
    const gid_t gid = ::getgid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        std::fprintf(stderr, "user and mount namespaces are refused here (%s); this test needs "
                             "them to make real file-system faults\n", std::strerror(errno));
        return 1;
    }
    const auto writeProc = [](const char* file, const QByteArray& text) {
        const int fd = ::open(file, O_WRONLY | O_CLOEXEC);
        const bool written = fd >= 0 && ::write(fd, text.constData(), size_t(text.size())) == text.size();
        if (fd >= 0)
            ::close(fd);
        return written;
    };
    if (!writeProc("/proc/self/setgroups", "deny") ||
        !writeProc("/proc/self/uid_map", "0 " + QByteArray::number(uid) + " 1") ||
        !writeProc("/proc/self/gid_map", "0 " + QByteArray::number(gid) + " 1") ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        std::fprintf(stderr, "cannot set up the namespace: %s\n", std::strerror(errno));
        return 1;
    }
    setCapabilitiesInEffect(false);
    QCoreApplication app(argc, argv);
    LibraryFaultsTest test(program);
    const int status = QTest::qExec(&test, argc, argv);
    if (program != QStringLiteral(TYPOLET_BINARY)) // the copy and its folder are this user's
        QDir(QFileInfo(program).absolutePath()).removeRecursively();
    return status;
}

#include "LibraryFaultsTest.moc"
