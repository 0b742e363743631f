#include "ShortcutDataManager.h"
#include "CapturedDiagnostics.h"
#include "RecordCodec.h"
#include "TemporarySettings.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>
#include <csignal>
#include <functional>
#include <sys/resource.h>

namespace {
enum class Fault { FolderIsAFile, FileIsAFolder, DiskFull };

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

const QUuid kWork{QStringLiteral("a1b2c3d4-e5f6-4789-abcd-ef0123456789")};
const QUuid kDefault = Category::defaultCategoryId;

QByteArray categoriesJson(const QList<CategoryRef>& categories) {
    return *RecordCodec::encodeCategories(categories);
}

// Keeps the list each shortcutsSaved() announcement carried.
struct UpdateRecorder {
    QObject context;
    QList<QList<Shortcut>> lists;
    explicit UpdateRecorder(ShortcutDataManager& store) {
        QObject::connect(&store, &ShortcutDataManager::shortcutsSaved, &context,
                         [this](const QList<Shortcut>& saved) { lists.append(saved); });
    }
};

QStringList commands(const QList<Shortcut>& shortcuts) {
    QStringList result;
    for (const Shortcut& s : shortcuts)
        result.append(s.command);
    return result;
}

QStringList names(const QList<CategoryRef>& categories) {
    QStringList result;
    for (const CategoryRef& c : categories)
        result.append(c->name());
    return result;
}

// What the settings file holds now.
QStringList storedCommands(const TemporarySettings& settings) {
    const auto list = RecordCodec::decodeShortcuts(settings.read("Shortcuts").toByteArray());
    return list ? commands(*list) : QStringList{"<unreadable>"};
}
QStringList storedNames(const TemporarySettings& settings) {
    const auto list = RecordCodec::decodeCategories(settings.read("Categories").toByteArray());
    return list ? names(*list) : QStringList{"<unreadable>"};
}
} // namespace

class ShortcutDataManagerTest : public QObject {
    Q_OBJECT
private slots:
    void storedCategoriesAreKeptAndTheDefaultAppendedIfMissing() {
        const CategoryRef work = CategoryRef::create(kWork, "Work", 5);
        TemporarySettings withDefault, without;
        // The default renamed and not first: the stored bytes must survive untouched.
        const QByteArray stored = categoriesJson({work, CategoryRef::create(kDefault, "Misc", 9)});
        withDefault.write("Categories", stored);
        without.write("Categories", categoriesJson({work}));
        ShortcutDataManager kept(withDefault.path()), completed(without.path());
        QCOMPARE(names(kept.categories()), QStringList({"Work", "Misc"}));
        QCOMPARE(withDefault.read("Categories").toByteArray(), stored);
        QCOMPARE(names(completed.categories()), QStringList({"Work", "Uncategory"}));
        QCOMPARE(storedNames(without), QStringList({"Work", "Uncategory"}));
    }

    void startsWithTheDefaultCategoryWhateverIsStored_data() {
        QTest::addColumn<QVariant>("stored"); // invalid: nothing stored
        QTest::newRow("nothing") << QVariant();
        QTest::newRow("truncated") << QVariant(QByteArray("[{\"id\":\"6F1C2B7E-0A9D-4C4B-9F43"));
        QTest::newRow("huge garbage") << QVariant(QByteArray(4 * 1024 * 1024, 'x'));
        QTest::newRow("text, not data") << QVariant(QStringLiteral("[]"));
    }
    void startsWithTheDefaultCategoryWhateverIsStored() {
        QFETCH(QVariant, stored);
        TemporarySettings settings;
        if (stored.isValid()) {
            settings.write("Shortcuts", stored);
            settings.write("Categories", stored);
        }
        {
            ShortcutDataManager store(settings.path());
            UpdateRecorder updates(store);
            QVERIFY(store.shortcuts().isEmpty());
            QCOMPARE(store.categories().size(), 1);
            QCOMPARE(store.categories().at(0)->id(), kDefault);
            QCOMPARE(settings.read("Categories").toByteArray(),
                     categoriesJson({Category::defaultCategory()}));
            // Unreadable snippets stay on disk until the user saves, so that a later fix of the
            // file can still recover them.
            QCOMPARE(settings.read("Shortcuts"), stored);
            QCoreApplication::processEvents();
            QVERIFY(updates.lists.isEmpty());
            store.appendShortcut(Shortcut::create(";new", "text", kDefault));
            store.saveShortcuts();
        }
        QCOMPARE(storedCommands(settings), QStringList({";new"}));
    }

    void categoryNamesClashIgnoringCaseButNotSpaces() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        // Full Unicode lower-casing, no trimming.
        const QList<std::pair<QString, bool>> attempts = {
            {"work", true}, {"Work", false}, {"UNCATEGORY", false}, {"ÉTÉ", true},
            {"été", false}, {"Work ", true}, {" work", true}};
        for (const auto& [name, added] : attempts)
            QVERIFY2(store.addCategory(name).has_value() != added, qPrintable(name));
        QCOMPARE(store.addCategory("WORK")->description(),
                 "A category with this name already exists");
        QCOMPARE(storedNames(settings),
                 QStringList({"Uncategory", "work", "ÉTÉ", "Work ", " work"}));

        // A rename checks the other names only, and replaces the object.
        const CategoryRef work = store.categories().at(1);
        QVERIFY(!store.updateCategory(*work, "WORK"));
        const CategoryRef renamed = store.categories().at(1);
        QVERIFY(renamed != work);       // a new object...
        QVERIFY(*renamed == *work);     // ...for the same category
        QCOMPARE(work->name(), "work"); // the old object is left as it was
        QCOMPARE(renamed->createdAt(), work->createdAt());
        QVERIFY(store.updateCategory(*renamed, "été"));
        QVERIFY(store.updateCategory(*renamed, "uncategory"));
        QCOMPARE(storedNames(settings),
                 QStringList({"Uncategory", "WORK", "ÉTÉ", "Work ", " work"}));

        // A category no longer in the list: nothing happens, nothing is written.
        const QByteArray before = settings.read("Categories").toByteArray();
        QVERIFY(!store.updateCategory(Category(QUuid::createUuid(), "Gone", 0), "Other"));
        QCOMPARE(store.categories().size(), 5);
        QCOMPARE(settings.read("Categories").toByteArray(), before);
    }

    void duplicateIdsAreRenamedFirstAndDeletedAll() {
        TemporarySettings settings;
        settings.write("Categories", categoriesJson({Category::defaultCategory(),
                                                     CategoryRef::create(kWork, "A", 1),
                                                     CategoryRef::create(kWork, "B", 2)}));
        ShortcutDataManager store(settings.path());
        QVERIFY(!store.updateCategory(*store.categories().at(2), "C"));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory", "C", "B"}));
        QVERIFY(!store.deleteCategory(*store.categories().at(2)));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory"}));
    }

    void deletingACategoryTakesItsSnippetsAndAnnouncesOnce() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        UpdateRecorder updates(store);
        QVERIFY(!store.addCategory("Work"));
        const CategoryRef work = store.categories().at(1);
        store.appendShortcut(Shortcut::create(";a", "a", work->id()));
        store.appendShortcut(Shortcut::create(";b", "b", kDefault));
        store.appendShortcut(Shortcut::create(";c", "c", work->id()));

        QVERIFY(!store.deleteCategory(*Category::defaultCategory()));
        QCOMPARE(store.categories().size(), 2);
        QVERIFY(!settings.contains("Shortcuts")); // nothing saved

        QVERIFY(!store.deleteCategory(*work));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory"}));
        QCOMPARE(commands(store.shortcuts()), QStringList({";b"}));
        QCOMPARE(storedCommands(settings), QStringList({";b"}));
        QCOMPARE(storedNames(settings), QStringList({"Uncategory"}));
        QVERIFY(updates.lists.isEmpty()); // announced after the action, not during it
        QTRY_COMPARE(updates.lists.size(), 1);
        QCOMPARE(commands(updates.lists.at(0)), QStringList({";b"}));
    }

    void updatingASnippetKeepsItsIdentity() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        const Shortcut original = Shortcut::create(";a", "a", kWork);
        store.appendShortcut(Shortcut::create(";z", "z", kWork));
        store.appendShortcut(original);

        const auto fields = [&store] {
            const Shortcut& s = store.shortcuts().at(1);
            return std::tuple(s.id, s.createdAt, s.command, s.content, s.categoryId);
        };
        QVERIFY(!store.updateShortcut(original, ";b", "bee", kDefault));
        QCOMPARE(fields(), std::tuple(original.id, original.createdAt, QString(";b"),
                                      QString("bee"), kDefault));
        QVERIFY(!store.updateShortcut(original, ";c", "sea")); // no category given: the argument's
        QCOMPARE(fields(),
                 std::tuple(original.id, original.createdAt, QString(";c"), QString("sea"), kWork));
        QCOMPARE(storedCommands(settings), QStringList({";z", ";c"}));

        const quint64 revision = store.shortcutsRevision();
        QVERIFY(!store.updateShortcut(Shortcut::create(";gone", "", kWork), ";x", "x"));
        QCOMPARE(store.shortcutsRevision(), revision);
        QCOMPARE(commands(store.shortcuts()), QStringList({";z", ";c"}));
        // A blank command is refused whichever view asks (it would expand on every key), and
        // so is another snippet's command; nothing changes.
        QCOMPARE(*store.updateShortcut(store.shortcuts().at(1), " \t", "sea"),
                 DataError::blankCommand());
        QCOMPARE(*store.updateShortcut(store.shortcuts().at(1), ";z", "sea"),
                 DataError::duplicateCommand());
        QCOMPARE(*store.addShortcut(Shortcut::create(";z", "x", kDefault)),
                 DataError::duplicateCommand());
        QCOMPARE(*store.addShortcut(Shortcut::create("", "x", kDefault)), DataError::blankCommand());
        QCOMPARE(store.shortcutsRevision(), revision);
        QCOMPARE(commands(store.shortcuts()), QStringList({";z", ";c"}));
        QVERIFY(!store.addShortcut(Shortcut::create(";new", "n", kWork)));
        QCOMPARE(storedCommands(settings), QStringList({";z", ";c", ";new"}));
    }

    void directChangesBumpTheRevisionAndSavesAnnounceTheListAtDelivery() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        UpdateRecorder updates(store);
        QSignalSpy changed(&store, &ShortcutDataManager::shortcutsChanged);
        quint64 revision = store.shortcutsRevision();
        const Shortcut a = Shortcut::create(";a", "a", kDefault);
        store.appendShortcut(a);
        store.appendShortcut(a); // same id twice: removal takes both
        QVERIFY(store.shortcutsRevision() > revision);
        revision = store.shortcutsRevision();
        QVERIFY(!store.removeShortcut(a.id));
        QVERIFY(store.shortcutsRevision() > revision);
        QVERIFY(store.shortcuts().isEmpty());
        QCOMPARE(changed.size(), 3);

        store.appendShortcut(a);
        store.saveShortcuts();
        store.appendShortcut(Shortcut::create(";b", "b", kDefault));
        store.saveShortcuts();
        QVERIFY(updates.lists.isEmpty());
        QTRY_COMPARE(updates.lists.size(), 3); // the removal saved too
        for (const QList<Shortcut>& list : std::as_const(updates.lists))
            QCOMPARE(commands(list), QStringList({";a", ";b"}));
    }

    void listsSurviveARestart() {
        TemporarySettings settings;
        const QString big(1024 * 1024, QChar(u'é'));
        {
            ShortcutDataManager store(settings.path());
            QVERIFY(!store.addCategory("Work"));
            store.appendShortcut(Shortcut::create(";big", big, store.categories().at(1)->id()));
            store.appendShortcut(Shortcut::create(";nl", "line 1\nline 2\ttab", QUuid()));
            store.saveShortcuts();
        }
        ShortcutDataManager again(settings.path());
        QCOMPARE(names(again.categories()), QStringList({"Uncategory", "Work"}));
        QCOMPARE(commands(again.shortcuts()), QStringList({";big", ";nl"}));
        QVERIFY(again.shortcuts().at(0).content == big);
        QCOMPARE(again.shortcuts().at(0).categoryId, again.categories().at(1)->id());
        QCOMPARE(again.shortcuts().at(1).content, "line 1\nline 2\ttab");
    }

    void oneBadRecordHidesNothingAndTheFileIsKeptBeforeItIsRewritten() {
        TemporarySettings settings;
        QJsonArray records;
        for (int i = 0; i < 100; ++i)
            records.append(RecordCodec::encode(Shortcut::create(";s" + QString::number(i), "x", kDefault)));
        QJsonObject bad = records[40].toObject();
        bad["createdAt"] = "yesterday";
        records[40] = bad;
        settings.write("Shortcuts", QJsonDocument(records).toJson(QJsonDocument::Compact));
        settings.write("Categories", QByteArray("[{\"name\": 5}]"));
        QFile original(settings.path());
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray before = original.readAll();

        CapturedDiagnostics diagnostics;
        ShortcutDataManager store(settings.path());
        QCOMPARE(store.shortcuts().size(), 99);
        QCOMPARE(store.unreadableRecords(), 2);
        // The copy was made before the default category was written back.
        QFile backup(store.backupPath());
        QVERIFY2(backup.open(QIODevice::ReadOnly), qPrintable(store.backupPath()));
        QCOMPARE(backup.readAll(), before);
        store.appendShortcut(Shortcut::create(";new", "n", kDefault));
        store.saveShortcuts();
        QCOMPARE(storedCommands(settings).size(), 100);
        QCOMPARE(diagnostics.lines.filter(store.backupPath()).size(), 2);
    }

    // A write that cannot happen: the old file stays byte for byte, the change stays in
    // memory, the failure names the file, and the next save writes what failed before.
    void aFailedWriteLeavesTheFileAndIsWrittenNextTime_data() {
        QTest::addColumn<int>("fault");
        QTest::newRow("the folder is a plain file") << int(Fault::FolderIsAFile);
        QTest::newRow("the file is a folder") << int(Fault::FileIsAFolder);
        // A file size limit fails writes as a full disk does, and also for root.
        QTest::newRow("the disk is full") << int(Fault::DiskFull);
    }
    void aFailedWriteLeavesTheFileAndIsWrittenNextTime() {
        QFETCH(int, fault);
        QTemporaryDir dir;
        const QString folder = dir.filePath("Typolet"), path = folder + "/Typolet.conf";
        ShortcutDataManager store(path);
        store.appendShortcut(Shortcut::create(";old", "o", kDefault));
        QVERIFY(!store.saveShortcuts());
        const QByteArray before = contents(path);

        // Each fault moves the good file aside (or keeps it in place) and undoes itself.
        const QString aside = dir.filePath("aside");
        std::function<void()> undo;
        switch (Fault(fault)) {
        case Fault::FolderIsAFile:
            QVERIFY(QDir().rename(folder, aside));
            QVERIFY(QFile(folder).open(QIODevice::WriteOnly));
            undo = [&] { QFile::remove(folder), QDir().rename(aside, folder); };
            break;
        case Fault::FileIsAFolder:
            QVERIFY(QFile::rename(path, aside));
            QVERIFY(QDir().mkdir(path));
            undo = [&] { QDir().rmdir(path), QFile::rename(aside, path); };
            break;
        case Fault::DiskFull:
            std::signal(SIGXFSZ, SIG_IGN);
            rlimit limit{};
            getrlimit(RLIMIT_FSIZE, &limit);
            const rlimit full{rlim_t(before.size() + 1000), limit.rlim_max};
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
            undo = [limit] { setrlimit(RLIMIT_FSIZE, &limit); };
            break;
        }
        CapturedDiagnostics diagnostics;
        QSignalSpy failed(&store, &ShortcutDataManager::saveFailed);
        store.appendShortcut(Shortcut::create(";new", QString(20000, u'n'), kDefault));
        const std::optional<QString> error = store.saveShortcuts();
        undo();
        QVERIFY2(error && error->contains(path), qPrintable(error.value_or("saved")));
        QCOMPARE(failed.size(), 1);
        QCOMPARE(diagnostics.lines.size(), 1);
        QCOMPARE(commands(store.shortcuts()), QStringList({";old", ";new"}));
        QCOMPARE(contents(path), before);

        QVERIFY(!store.addCategory("Work")); // any later save also writes the snippets
        ShortcutDataManager again(path);
        QCOMPARE(commands(again.shortcuts()), QStringList({";old", ";new"}));
        QCOMPARE(again.unreadableRecords(), 0);
        QCOMPARE(diagnostics.lines.size(), 1); // no line after a write that worked
    }
};

QTEST_GUILESS_MAIN(ShortcutDataManagerTest)
#include "ShortcutDataManagerTest.moc"
