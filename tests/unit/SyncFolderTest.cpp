// Two computers, each a store over its own library file with its own synced folder; the test
// copies files between the two folders as a sync engine would (the real engine is in the e2e
// tests, with the collision that keeps a losing version in the history). Changes travel both
// ways, and files a sync engine leaves half-way or as conflict copies are handled.
#include "IniFormat.h"
#include "LibraryKeys.h"
#include "RecordCodec.h"
#include "SnippetStore.h"
#include "SyncFile.h"
#include "SyncFolder.h"
#include "TestData.h"
#include "Timestamp.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace {
// One computer: its library file, history and sync state under `home`, its copy of the synced
// folder under `home`/Sync.
struct Computer {
    QTemporaryDir home; // first: the others live in it
    explicit Computer(const QString& id)
        : store(home.filePath(QStringLiteral("Typolet.conf"))),
          sync(store, [id] { return id; }, home.filePath(QStringLiteral("sync.json"))) {}

    QString folder() const { return home.filePath(QStringLiteral("Sync")); }
    QString library() const { return folder() + QStringLiteral("/Typolet"); }
    std::optional<Snippet> snippet(const QString& command) const {
        return store.snippetWithCommand(command);
    }
    QString content(const QString& command) const {
        const auto found = snippet(command);
        return found ? found->content : QStringLiteral("(none)");
    }
    QStringList historyReasons() {
        return QDir(store.file().history().folder()).entryList({QStringLiteral("*.conf")});
    }

    SnippetStore store;
    SyncFolder sync;
};

// What a sync engine does: the file `from` wrote arrives in `to`'s folder whole, by a rename,
// when `to`'s copy differs.
void carry(const Computer& from, const Computer& to) {
    QDir().mkpath(to.library());
    const QByteArray bytes = readAll(from.sync.ownFilePath());
    const QString target = to.library() + u'/' + QFileInfo(from.sync.ownFilePath()).fileName();
    if (readAll(target) != bytes)
        QVERIFY(replaceFile(target, bytes));
}

void exchange(Computer& a, Computer& b) {
    a.sync.publish();
    b.sync.publish();
    carry(a, b);
    carry(b, a);
    a.sync.readFolder();
    b.sync.readFolder();
}

} // namespace

class SyncFolderTest : public QObject {
    Q_OBJECT
private slots:
    void fileReadsBackAsWritten();
    void changesTravelAndStayInTheirFormat();
    void firstChoiceMergesWhatIsThere();
    void sameCommandOnTwoComputers();
    void filesLeftHalfWayChangeNothing_data();
    void filesLeftHalfWayChangeNothing();
    void conflictCopiesAreMergedAndMoved_data();
    void conflictCopiesAreMergedAndMoved();
};

void SyncFolderTest::fileReadsBackAsWritten() {
    // Every kind of record: the default category (the nil id), one that waits for a word to end,
    // deletion marks of both kinds, changes by two computers.
    Snippet waiting = Snippet::create(QStringLiteral(";w"), QStringLiteral("wait"),
                                      Category::defaultCategoryId, Snippet::Trigger::AfterWordEnd);
    const Snippet gone = Snippet::create(QStringLiteral(";g"), QStringLiteral("g"),
                                         Category::defaultCategoryId);
    const Category work = Category::create(QStringLiteral("Work"));
    SyncMerge::Library library;
    SyncMerge::stampLocalChanges(library, {Category::defaultCategory(), work}, {waiting, gone},
                                 QStringLiteral("aaaa1111"), 100);
    waiting.content = QStringLiteral("waits ünïcödé");
    SyncMerge::stampLocalChanges(library, {Category::defaultCategory()}, {waiting},
                                 QStringLiteral("bbbb2222"), 200);
    const QByteArray bytes = SyncFile::encode(QStringLiteral("bbbb2222"), QStringLiteral("desk"), library);

    QString error;
    const auto fast = SyncFile::decode(bytes, &error);
    const auto plain = SyncFile::fromJson(QJsonDocument::fromJson(bytes).object(), &error);
    QVERIFY(fast && plain);
    for (const auto* read : {&*fast, &*plain}) {
        QCOMPARE(read->computer, QStringLiteral("bbbb2222"));
        QCOMPARE(read->name, QStringLiteral("desk"));
        for (const auto kind : {&SyncMerge::Library::snippets, &SyncMerge::Library::categories}) {
            const auto& written = library.*kind;
            const auto& back = read->library.*kind;
            QCOMPARE(back.size(), written.size());
            for (auto it = written.cbegin(); it != written.cend(); ++it) {
                const SyncMerge::Record& record = back.value(it.key());
                QCOMPARE(record.stamp.key(), it->stamp.key());
                QCOMPARE(record.basedOn, it->basedOn);
                QCOMPARE(record.deleted, it->deleted);
                QVERIFY(kind == &SyncMerge::Library::snippets
                            ? SyncMerge::sameContent(record.snippet, it->snippet)
                            : SyncMerge::sameContent(record.category, it->category));
            }
        }
    }
    QVERIFY(fast->library.snippets.value(waiting.id).snippet.expandsAfterWordEnd());
    QVERIFY(fast->library.snippets.value(gone.id).deleted);
    QVERIFY(fast->library.categories.value(work.id).deleted);
}

void SyncFolderTest::changesTravelAndStayInTheirFormat() {
    Computer a(QStringLiteral("aaaa1111")), b(QStringLiteral("bbbb2222"));
    QVERIFY(!a.sync.start(a.folder()));
    QVERIFY(!b.sync.start(b.folder()));
    // A preference is local: it never reaches the folder.
    a.store.file().write({{QStringLiteral("excludedApplications"), QStringLiteral("secret-app")}},
                         std::nullopt);

    // Live: A's change is in A's file soon after, and B takes in a file that arrives.
    QVERIFY(!a.store.addSnippet(Snippet::create(QStringLiteral(";one"), QStringLiteral("1"),
                                                Category::defaultCategoryId)));
    QVERIFY(!a.store.addSnippet(Snippet::create(QStringLiteral(";two"), QStringLiteral("2"),
                                                Category::defaultCategoryId)));
    QTRY_VERIFY_WITH_TIMEOUT(readAll(a.sync.ownFilePath()).contains(";two"), 5000);
    QVERIFY(QFileInfo(a.sync.ownFilePath()).fileName().endsWith(QLatin1String("-aaaa1111.json")));
    QVERIFY(!readAll(a.sync.ownFilePath()).contains("secret-app"));
    carry(a, b);
    QTRY_COMPARE_WITH_TIMEOUT(b.content(QStringLiteral(";two")), QStringLiteral("2"), 5000);

    // Different snippets changed on each side, and a deletion, all survive the exchange.
    QVERIFY(!a.store.updateSnippet(*a.snippet(QStringLiteral(";one")), QStringLiteral(";one"),
                                   QStringLiteral("1 from A")));
    QVERIFY(!b.store.removeSnippet(b.snippet(QStringLiteral(";two"))->id));
    QVERIFY(!b.store.addSnippet(Snippet::create(QStringLiteral(";three"), QStringLiteral("3"),
                                                Category::defaultCategoryId)));
    exchange(a, b);
    const QStringList expected{QStringLiteral(";one=1 from A"), QStringLiteral(";three=3")};
    QCOMPARE(contentsOf(a.store.snippets()), expected);
    QCOMPARE(contentsOf(b.store.snippets()), expected);
    QCOMPARE(a.sync.computers().size(), 2);
    QCOMPARE(a.sync.computers().at(1).snippets, 2);

    // The library file keeps its records exactly as before: no stamps in them.
    const QJsonArray stored = QJsonDocument::fromJson(
        IniFormat::decode(IniFormat::parse(readAll(b.store.settingsPath()))
                              .value(QLatin1String(LibraryKeys::snippets)))
            .toByteArray()).array();
    QCOMPARE(stored.size(), 2);
    QCOMPARE(stored.first().toObject().keys(),
             (QStringList{"categoryId", "command", "content", "createdAt", "id"}));

    // After a restart (a new store and sync over the same files), nothing is taken as new.
    QSignalSpy collisions(&a.sync, &SyncFolder::collisionsKept);
    a.sync.stop();
    QVERIFY(!a.sync.start(a.folder()));
    exchange(a, b);
    QCOMPARE(contentsOf(a.store.snippets()), expected);
    QCOMPARE(collisions.count(), 0);
}

void SyncFolderTest::firstChoiceMergesWhatIsThere() {
    Computer a(QStringLiteral("aaaa1111")), b(QStringLiteral("bbbb2222"));
    QVERIFY(!a.store.addSnippet(Snippet::create(QStringLiteral(";a1"), QStringLiteral("1"),
                                                Category::defaultCategoryId)));
    QVERIFY(!a.store.addCategory(QStringLiteral("Work")));
    QVERIFY(!a.store.addSnippet(Snippet::create(QStringLiteral(";a2"), QStringLiteral("2"),
                                                a.store.categories().last().id)));
    QVERIFY(!b.store.addSnippet(Snippet::create(QStringLiteral(";b1"), QStringLiteral("b"),
                                                Category::defaultCategoryId)));
    QVERIFY(!a.sync.start(a.folder()));
    carry(a, b);
    QVERIFY(!b.sync.start(b.folder()));
    QCOMPARE(b.sync.addedOnStart(), 2);
    QCOMPARE(contentsOf(b.store.snippets()),
             (QStringList{QStringLiteral(";a1=1"), QStringLiteral(";a2=2"), QStringLiteral(";b1=b")}));
    QVERIFY(b.store.category(a.store.categories().last().id));
    // The library as it was before the first merge is in the history.
    QCOMPARE(b.historyReasons().filter(QStringLiteral("-import.conf")).size(), 1);
}

void SyncFolderTest::sameCommandOnTwoComputers() {
    Computer a(QStringLiteral("aaaa1111")), b(QStringLiteral("bbbb2222"));
    QVERIFY(!a.sync.start(a.folder()));
    QVERIFY(!b.sync.start(b.folder()));
    QVERIFY(!a.store.addSnippet(Snippet::create(QStringLiteral(";sig"), QStringLiteral("A"),
                                                Category::defaultCategoryId)));
    a.sync.publish();
    QTest::qWait(20);
    QVERIFY(!b.store.addSnippet(Snippet::create(QStringLiteral(";sig"), QStringLiteral("B"),
                                                Category::defaultCategoryId)));
    exchange(a, b);
    for (const Computer* computer : {&a, &b}) {
        // Both kept, the newer first (the one the engine expands), each marked.
        QCOMPARE(contentsOf(computer->store.snippets()), (QStringList{QStringLiteral(";sig=A"), QStringLiteral(";sig=B")}));
        QCOMPARE(computer->store.snippets().first().content, QStringLiteral("B"));
        for (const Snippet& snippet : computer->store.snippets())
            QCOMPARE(computer->store.commandClash(snippet.command, snippet.id).kind,
                     SnippetStore::CommandClash::Kind::sameCommand);
    }
}

void SyncFolderTest::filesLeftHalfWayChangeNothing_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("whole"); // a whole library under that name, or its first half
    QTest::addColumn<bool>("named"); // shown as a file that cannot be read

    QTest::newRow("an editor's lock file") << "~host-cccc3333.json" << true << false;
    QTest::newRow("a hidden file") << ".host-cccc3333.json" << true << false;
    // Syncthing's own temporary files and half-written ones: in the Syncthing test.
    QTest::newRow("half a file under its own name") << "host-cccc3333.json" << false << true;
}

void SyncFolderTest::filesLeftHalfWayChangeNothing() {
    QFETCH(QString, name);
    QFETCH(bool, whole);
    QFETCH(bool, named);
    Computer b(QStringLiteral("bbbb2222"));
    QVERIFY(!b.store.addSnippet(Snippet::create(QStringLiteral(";keep"), QStringLiteral("kept"),
                                                Category::defaultCategoryId)));
    QVERIFY(!b.sync.start(b.folder()));
    const QStringList before = contentsOf(b.store.snippets());

    // Another computer's library that deletes B's snippet and adds one.
    SyncMerge::Library other;
    SyncMerge::stampLocalChanges(other, b.store.categories(), b.store.snippets(),
                                 QStringLiteral("cccc3333"), Timestamp::now() + 10);
    SyncMerge::stampLocalChanges(other, b.store.categories(),
                                 {Snippet::create(QStringLiteral(";new"), QStringLiteral("n"),
                                                  Category::defaultCategoryId)},
                                 QStringLiteral("cccc3333"), Timestamp::now() + 20);
    QByteArray bytes = SyncFile::encode(QStringLiteral("cccc3333"), QStringLiteral("host"), other);
    if (!whole)
        bytes.truncate(bytes.size() / 2);
    const QString path = b.library() + u'/' + name;
    QVERIFY(replaceFile(path, bytes));
    b.sync.readFolder();
    QCOMPARE(contentsOf(b.store.snippets()), before);
    QCOMPARE(b.sync.unreadableFiles().contains(name), named);
    QCOMPARE(readAll(path), bytes); // never touched
}

void SyncFolderTest::conflictCopiesAreMergedAndMoved_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("Syncthing")
        << "host-cccc3333.sync-conflict-20250101-101010-ABCDEFG.json";
    QTest::newRow("Dropbox") << "host-cccc3333 (conflicted copy 2025-01-01).json";
    QTest::newRow("Nextcloud") << "host-cccc3333_conflict-20250101-101010.json";
}

void SyncFolderTest::conflictCopiesAreMergedAndMoved() {
    QFETCH(QString, name);
    Computer b(QStringLiteral("bbbb2222"));
    QVERIFY(!b.sync.start(b.folder()));
    SyncMerge::Library other;
    SyncMerge::stampLocalChanges(other, b.store.categories(),
                                 {Snippet::create(QStringLiteral(";copy"), QStringLiteral("c"),
                                                  Category::defaultCategoryId)},
                                 QStringLiteral("cccc3333"), Timestamp::now());
    const QByteArray bytes = SyncFile::encode(QStringLiteral("cccc3333"), QStringLiteral("host"), other);
    QVERIFY(replaceFile(b.library() + u'/' + name, bytes));
    b.sync.readFolder();
    QCOMPARE(b.content(QStringLiteral(";copy")), QStringLiteral("c"));
    QVERIFY(!QFile::exists(b.library() + u'/' + name));
    const QStringList moved = QDir(b.sync.conflictCopiesFolder()).entryList(QDir::Files);
    QCOMPARE(moved.size(), 1);
    QCOMPARE(readAll(b.sync.conflictCopiesFolder() + u'/' + moved.first()), bytes);
    QCOMPARE(b.sync.computers().size(), 1); // a copy is no computer
}

QTEST_GUILESS_MAIN(SyncFolderTest)
#include "SyncFolderTest.moc"
