#include "Diagnostics.h"
#include "NotificationCenter.h"
#include "RecordCodec.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"

#include <QFile>
#include <QSignalSpy>
#include <QtTest>

namespace {
const QUuid kWork{QStringLiteral("a1b2c3d4-e5f6-4789-abcd-ef0123456789")};

QByteArray categoriesJson(const QList<CategoryRef>& categories) {
    return *RecordCodec::encodeCategories(categories);
}

// Counts "ShortcutsUpdated" posts and keeps the list each one carried.
struct UpdateRecorder {
    QObject context;
    QList<QList<Shortcut>> lists;
    UpdateRecorder() {
        NotificationCenter::defaultCenter().observe("ShortcutsUpdated", &context,
                                                    [this](const QVariantMap& info) {
            lists.append(info.value("shortcuts").value<QList<Shortcut>>());
        });
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
} // namespace

class ShortcutDataManagerTest : public QObject {
    Q_OBJECT
private slots:
    void firstStartWritesOnlyTheDefaultCategory() {
        TemporarySettings settings;
        UpdateRecorder updates;
        ShortcutDataManager store(settings.path());
        QCOMPARE(store.categories().size(), 1);
        QCOMPARE(store.categories().at(0)->id(), Category::defaultCategoryId);
        QVERIFY(store.shortcuts().isEmpty());
        QCOMPARE(settings.read("Categories").toByteArray(),
                 categoriesJson({Category::defaultCategory()}));
        QVERIFY(!settings.contains("Shortcuts"));
        QCoreApplication::processEvents();
        QVERIFY(updates.lists.isEmpty());
    }

    void storedCategoriesWithTheDefaultAreLoadedAsTheyAre() {
        TemporarySettings settings;
        // Default renamed and not first; the stored bytes must survive untouched.
        const QByteArray stored = categoriesJson(
            {CategoryRef::create(kWork, "Work", 5),
             CategoryRef::create(Category::defaultCategoryId, "Misc", 9)});
        settings.write("Categories", stored);
        ShortcutDataManager store(settings.path());
        QCOMPARE(names(store.categories()), QStringList({"Work", "Misc"}));
        QCOMPARE(settings.read("Categories").toByteArray(), stored);
    }

    void missingDefaultIsAppendedAndWritten() {
        TemporarySettings settings;
        settings.write("Categories", categoriesJson({CategoryRef::create(kWork, "Work", 5)}));
        ShortcutDataManager store(settings.path());
        QCOMPARE(names(store.categories()), QStringList({"Work", "Uncategory"}));
        const auto written = RecordCodec::decodeCategories(settings.read("Categories").toByteArray());
        QCOMPARE(names(*written), QStringList({"Work", "Uncategory"}));
    }

    void unreadableStoredListsNeverCrashOrLoseSnippets_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("truncated") << QVariant(QByteArray("[{\"id\":\"6F1C2B7E-0A9D-4C4B-9F43"));
        QTest::newRow("wrong types") << QVariant(QByteArray(R"([{"id":1,"command":[],"content":{},"createdAt":"x","categoryId":null}])"));
        QTest::newRow("invalid uuid") << QVariant(QByteArray(R"([{"id":"zz","command":"a","content":"b","createdAt":0,"categoryId":"zz"}])"));
        QTest::newRow("deep nesting") << QVariant(QByteArray(200000, '['));
        QTest::newRow("huge garbage") << QVariant(QByteArray(4 * 1024 * 1024, 'x'));
        QTest::newRow("text, not data") << QVariant(QStringLiteral("[]"));
        QTest::newRow("number") << QVariant(42);
    }
    void unreadableStoredListsNeverCrashOrLoseSnippets() {
        QFETCH(QVariant, stored);
        TemporarySettings settings;
        settings.write("Shortcuts", stored);
        settings.write("Categories", stored);
        {
            ShortcutDataManager store(settings.path());
            QVERIFY(store.shortcuts().isEmpty());
            QCOMPARE(store.categories().size(), 1);
            QCOMPARE(store.categories().at(0)->id(), Category::defaultCategoryId);
            // Unreadable categories are replaced by the default; unreadable snippets stay on disk
            // until the user saves, so a later fix of the file can still recover them.
            QCOMPARE(settings.read("Categories").toByteArray(),
                     categoriesJson({Category::defaultCategory()}));
            QCOMPARE(settings.read("Shortcuts"), stored);
            store.appendShortcut(Shortcut::create(";new", "text", Category::defaultCategoryId));
            store.saveShortcuts();
        }
        const auto written = RecordCodec::decodeShortcuts(settings.read("Shortcuts").toByteArray());
        QVERIFY(written);
        QCOMPARE(commands(*written), QStringList({";new"}));
    }

    void categoryNamesClashIgnoringCaseButNotSpaces() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        QVERIFY(!store.addCategory("work"));
        const auto clash = store.addCategory("Work");
        QVERIFY(clash);
        QCOMPARE(clash->description(), "A category with this name already exists");
        QVERIFY(store.addCategory("UNCATEGORY"));
        QVERIFY(store.addCategory("ÉTÉ") == std::nullopt);
        QVERIFY(store.addCategory("été")); // full Unicode lower-casing
        QVERIFY(!store.addCategory("Work "));
        QVERIFY(!store.addCategory(" work"));
        QCOMPARE(names(store.categories()),
                 QStringList({"Uncategory", "work", "ÉTÉ", "Work ", " work"}));
        const auto written = RecordCodec::decodeCategories(settings.read("Categories").toByteArray());
        QCOMPARE(names(*written), names(store.categories()));
    }

    void renamingReplacesTheObjectAndChecksOtherNames() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        QVERIFY(!store.addCategory("Work"));
        QVERIFY(!store.addCategory("Home"));
        const CategoryRef work = store.categories().at(1);
        QVERIFY(!store.updateCategory(*work, "WORK"));
        const CategoryRef renamed = store.categories().at(1);
        QVERIFY(renamed != work);        // a new object...
        QVERIFY(*renamed == *work);      // ...for the same category
        QCOMPARE(work->name(), "Work");  // the old object is left as it was
        QCOMPARE(renamed->createdAt(), work->createdAt());
        QVERIFY(store.updateCategory(*renamed, "home"));
        QVERIFY(store.updateCategory(*renamed, "uncategory"));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory", "WORK", "Home"}));

        // A category that is no longer in the list: nothing happens, nothing is written.
        const QByteArray before = settings.read("Categories").toByteArray();
        const Category gone(QUuid::createUuid(), "Gone", 0);
        QVERIFY(!store.updateCategory(gone, "Other"));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory", "WORK", "Home"}));
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
        store.deleteCategory(*store.categories().at(2));
        QCOMPARE(names(store.categories()), QStringList({"Uncategory"}));
    }

    void deletingACategoryTakesItsSnippetsAndAnnouncesOnce() {
        TemporarySettings settings;
        UpdateRecorder updates;
        ShortcutDataManager store(settings.path());
        QVERIFY(!store.addCategory("Work"));
        const CategoryRef work = store.categories().at(1);
        store.appendShortcut(Shortcut::create(";a", "a", work->id()));
        store.appendShortcut(Shortcut::create(";b", "b", Category::defaultCategoryId));
        store.appendShortcut(Shortcut::create(";c", "c", work->id()));

        store.deleteCategory(*Category::defaultCategory());
        QCOMPARE(store.categories().size(), 2);
        QVERIFY(!settings.contains("Shortcuts")); // nothing saved

        store.deleteCategory(*work);
        QCOMPARE(names(store.categories()), QStringList({"Uncategory"}));
        QCOMPARE(commands(store.shortcuts()), QStringList({";b"}));
        QCOMPARE(commands(*RecordCodec::decodeShortcuts(settings.read("Shortcuts").toByteArray())),
                 QStringList({";b"}));
        QCOMPARE(names(*RecordCodec::decodeCategories(settings.read("Categories").toByteArray())),
                 QStringList({"Uncategory"}));
        QVERIFY(updates.lists.isEmpty()); // announced after the action, not during it
        QTRY_COMPARE(updates.lists.size(), 1);
        QCOMPARE(commands(updates.lists.at(0)), QStringList({";b"}));
    }

    void updatingASnippetKeepsItsIdentity() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        QVERIFY(!store.addCategory("Work"));
        const QUuid work = store.categories().at(1)->id();
        const Shortcut original = Shortcut::create(";a", "a", work);
        store.appendShortcut(Shortcut::create(";z", "z", work));
        store.appendShortcut(original);

        store.updateShortcut(original, ";b", "bee");
        Shortcut updated = store.shortcuts().at(1);
        QCOMPARE(updated.id, original.id);
        QCOMPARE(updated.createdAt, original.createdAt);
        QCOMPARE(updated.command, ";b");
        QCOMPARE(updated.content, "bee");
        QCOMPARE(updated.categoryId, work); // no category given: the argument's

        store.updateShortcut(original, ";c", "sea", Category::defaultCategoryId);
        updated = store.shortcuts().at(1);
        QCOMPARE(updated.categoryId, Category::defaultCategoryId);
        const auto written = RecordCodec::decodeShortcuts(settings.read("Shortcuts").toByteArray());
        QCOMPARE(written->at(1).command, ";c");
        QCOMPARE(written->at(1).categoryId, Category::defaultCategoryId);

        const quint64 revision = store.shortcutsRevision();
        store.updateShortcut(Shortcut::create(";gone", "", work), ";x", "x");
        QCOMPARE(store.shortcutsRevision(), revision);
        QCOMPARE(commands(store.shortcuts()), QStringList({";z", ";c"}));
    }

    void eachSaveAnnouncesTheListAsItIsWhenDelivered() {
        TemporarySettings settings;
        UpdateRecorder updates;
        ShortcutDataManager store(settings.path());
        store.appendShortcut(Shortcut::create(";a", "a", Category::defaultCategoryId));
        store.saveShortcuts();
        store.appendShortcut(Shortcut::create(";b", "b", Category::defaultCategoryId));
        store.saveShortcuts();
        QVERIFY(updates.lists.isEmpty());
        QTRY_COMPARE(updates.lists.size(), 2);
        QCOMPARE(commands(updates.lists.at(0)), QStringList({";a", ";b"}));
        QCOMPARE(commands(updates.lists.at(1)), QStringList({";a", ";b"}));
    }

    void directChangesBumpTheRevision() {
        TemporarySettings settings;
        ShortcutDataManager store(settings.path());
        QSignalSpy changed(&store, &ShortcutDataManager::shortcutsChanged);
        const quint64 start = store.shortcutsRevision();
        const Shortcut a = Shortcut::create(";a", "a", Category::defaultCategoryId);
        store.appendShortcut(a);
        store.appendShortcut(a); // same id twice: removal takes both
        QVERIFY(store.shortcutsRevision() > start);
        const quint64 afterAppend = store.shortcutsRevision();
        store.removeShortcut(a.id);
        QVERIFY(store.shortcutsRevision() > afterAppend);
        QVERIFY(store.shortcuts().isEmpty());
        QCOMPARE(changed.size(), 3);
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
        QCOMPARE(again.shortcuts().at(0).content, big);
        QCOMPARE(again.shortcuts().at(0).categoryId, again.categories().at(1)->id());
        QCOMPARE(again.shortcuts().at(1).content, "line 1\nline 2\ttab");
    }

    void aFailedWriteIsReportedAndKeptInMemory() {
        // The settings file's folder is a plain file, so nothing can be written there, even as
        // root.
        QTemporaryDir dir;
        QFile blocker(dir.filePath("Typolet"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QStringList lines;
        Diagnostics::setSink([&](const QString& line) { lines.append(line); });
        {
            ShortcutDataManager store(dir.filePath("Typolet/Typolet.conf"));
            QSignalSpy failed(&store, &ShortcutDataManager::saveFailed);
            store.appendShortcut(Shortcut::create(";a", "a", Category::defaultCategoryId));
            store.saveShortcuts();
            QCOMPARE(failed.size(), 1);
            QCOMPARE(commands(store.shortcuts()), QStringList({";a"}));
        }
        Diagnostics::setSink({});
        // One line for the default category written at start, one for the snippets.
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.at(1).startsWith("Could not save Shortcuts to "));
    }
};

QTEST_GUILESS_MAIN(ShortcutDataManagerTest)
#include "ShortcutDataManagerTest.moc"
