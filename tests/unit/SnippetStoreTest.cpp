#include "SnippetStore.h"
#include "CapturedDiagnostics.h"
#include "RecordCodec.h"
#include "TemporarySettings.h"
#include "TestData.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

namespace {
const QUuid kWork{QStringLiteral("a1b2c3d4-e5f6-4789-abcd-ef0123456789")};
const QUuid kDefault = Category::defaultCategoryId;

QByteArray categoriesJson(const QList<Category>& categories) {
    return *RecordCodec::encodeCategories(categories);
}

// Keeps the list each snippetsSaved() announcement carried.
struct UpdateRecorder {
    QObject context;
    QList<QList<Snippet>> lists;
    explicit UpdateRecorder(SnippetStore& store) {
        QObject::connect(&store, &SnippetStore::snippetsSaved, &context,
                         [this](const QList<Snippet>& saved) { lists.append(saved); });
    }
};

// What the settings file holds now.
QStringList storedCommands(const TemporarySettings& settings) {
    const auto list = RecordCodec::decodeSnippets(settings.read("Shortcuts").toByteArray());
    return list ? commandsOf(*list) : QStringList{"<unreadable>"};
}
QStringList storedNames(const TemporarySettings& settings) {
    const auto list = RecordCodec::decodeCategories(settings.read("Categories").toByteArray());
    return list ? namesOf(*list) : QStringList{"<unreadable>"};
}
} // namespace

class SnippetStoreTest : public QObject {
    Q_OBJECT
private slots:
    void storedCategoriesAreKeptAndTheDefaultAppendedIfMissing() {
        const Category work = Category(kWork, "Work", 5);
        TemporarySettings withDefault, without;
        // The default renamed and not first: the stored bytes must survive untouched.
        const QByteArray stored = categoriesJson({work, Category(kDefault, "Misc", 9)});
        withDefault.write("Categories", stored);
        without.write("Categories", categoriesJson({work}));
        SnippetStore kept(withDefault.path()), completed(without.path());
        QCOMPARE(namesOf(kept.categories()), QStringList({"Work", "Misc"}));
        QCOMPARE(withDefault.read("Categories").toByteArray(), stored);
        QCOMPARE(namesOf(completed.categories()), QStringList({"Work", "Uncategory"}));
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
            SnippetStore store(settings.path());
            UpdateRecorder updates(store);
            QVERIFY(store.snippets().isEmpty());
            QCOMPARE(store.categories().size(), 1);
            QCOMPARE(store.categories().at(0).id, kDefault);
            QCOMPARE(settings.read("Categories").toByteArray(),
                     categoriesJson({Category::defaultCategory()}));
            // Unreadable snippets stay on disk until the user saves, so that a later fix of the
            // file can still recover them.
            QCOMPARE(settings.read("Shortcuts"), stored);
            QCoreApplication::processEvents();
            QVERIFY(updates.lists.isEmpty());
            store.appendSnippet(Snippet::create(";new", "text", kDefault));
            store.saveSnippets();
        }
        QCOMPARE(storedCommands(settings), QStringList({";new"}));
    }

    void categoryNamesClashIgnoringCaseButNotSpaces() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        // Full Unicode lower-casing, no trimming.
        const QList<std::pair<QString, bool>> attempts = {
            {"work", true}, {"Work", false}, {"UNCATEGORY", false}, {"ÉTÉ", true},
            {"été", false}, {"Work ", true}, {" work", true}};
        for (const auto& [name, added] : attempts)
            QVERIFY2(store.addCategory(name).has_value() != added, qPrintable(name));
        QCOMPARE(store.addCategory("WORK")->kind(), DataError::Kind::duplicateCategoryName);
        QCOMPARE(storedNames(settings),
                 QStringList({"Uncategory", "work", "ÉTÉ", "Work ", " work"}));

        // A rename checks the other names only, and keeps the id and creation time.
        const Category work = store.categories().at(1);
        QVERIFY(!store.updateCategory(work, "WORK"));
        const Category renamed = store.categories().at(1);
        QVERIFY(renamed == work && renamed.name == "WORK");
        QCOMPARE(renamed.createdAt, work.createdAt);
        QVERIFY(store.updateCategory(renamed, "été"));
        QVERIFY(store.updateCategory(renamed, "uncategory"));
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
                                                     Category(kWork, "A", 1),
                                                     Category(kWork, "B", 2)}));
        SnippetStore store(settings.path());
        QVERIFY(!store.updateCategory(store.categories().at(2), "C"));
        QCOMPARE(namesOf(store.categories()), QStringList({"Uncategory", "C", "B"}));
        QVERIFY(!store.deleteCategory(store.categories().at(2)));
        QCOMPARE(namesOf(store.categories()), QStringList({"Uncategory"}));
    }

    void deletingACategoryTakesItsSnippetsAndAnnouncesOnce() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        UpdateRecorder updates(store);
        QVERIFY(!store.addCategory("Work"));
        const Category work = store.categories().at(1);
        store.appendSnippet(Snippet::create(";a", "a", work.id));
        store.appendSnippet(Snippet::create(";b", "b", kDefault));
        store.appendSnippet(Snippet::create(";c", "c", work.id));

        QVERIFY(!store.deleteCategory(Category::defaultCategory()));
        QCOMPARE(store.categories().size(), 2);
        QVERIFY(!settings.contains("Shortcuts")); // nothing saved

        QVERIFY(!store.deleteCategory(work));
        QCOMPARE(namesOf(store.categories()), QStringList({"Uncategory"}));
        QCOMPARE(commandsOf(store.snippets()), QStringList({";b"}));
        QCOMPARE(storedCommands(settings), QStringList({";b"}));
        QCOMPARE(storedNames(settings), QStringList({"Uncategory"}));
        QVERIFY(updates.lists.isEmpty()); // announced after the action, not during it
        QTRY_COMPARE(updates.lists.size(), 1);
        QCOMPARE(commandsOf(updates.lists.at(0)), QStringList({";b"}));
    }

    void updatingASnippetKeepsItsIdentity() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        const Snippet original = Snippet::create(";a", "a", kWork);
        store.appendSnippet(Snippet::create(";z", "z", kWork));
        store.appendSnippet(original);

        const auto fields = [&store] {
            const Snippet& s = store.snippets().at(1);
            return std::tuple(s.id, s.createdAt, s.command, s.content, s.categoryId);
        };
        QVERIFY(!store.updateSnippet(original, ";b", "bee", kDefault));
        QCOMPARE(fields(), std::tuple(original.id, original.createdAt, QString(";b"),
                                      QString("bee"), kDefault));
        QVERIFY(!store.updateSnippet(original, ";c", "sea")); // no category given: the argument's
        QCOMPARE(fields(),
                 std::tuple(original.id, original.createdAt, QString(";c"), QString("sea"), kWork));
        QCOMPARE(storedCommands(settings), QStringList({";z", ";c"}));

        const quint64 revision = store.snippetsRevision();
        QVERIFY(!store.updateSnippet(Snippet::create(";gone", "", kWork), ";x", "x"));
        QCOMPARE(store.snippetsRevision(), revision);
        QCOMPARE(commandsOf(store.snippets()), QStringList({";z", ";c"}));
        // A blank command is refused whichever view asks (it would expand on every key), and
        // so is another snippet's command; nothing changes.
        QCOMPARE(*store.updateSnippet(store.snippets().at(1), " \t", "sea"),
                 DataError::blankCommand());
        QCOMPARE(*store.updateSnippet(store.snippets().at(1), ";z", "sea"),
                 DataError::duplicateCommand());
        QCOMPARE(*store.addSnippet(Snippet::create(";z", "x", kDefault)),
                 DataError::duplicateCommand());
        QCOMPARE(*store.addSnippet(Snippet::create("", "x", kDefault)), DataError::blankCommand());
        QCOMPARE(store.snippetsRevision(), revision);
        QCOMPARE(commandsOf(store.snippets()), QStringList({";z", ";c"}));
        // Only exactly another snippet's command clashes: letter case and spaces count.
        for (const char* command : {";new", ";Z", ";z "})
            QVERIFY2(!store.addSnippet(Snippet::create(command, "n", kWork)), command);
        QCOMPARE(storedCommands(settings), QStringList({";z", ";c", ";new", ";Z", ";z "}));
    }

    // A command inside another, short of its end, makes the longer one impossible to type,
    // unless it waits for a word to end and the longer one goes on with a letter there.
    void commandsThatHideAnotherAreWarnedOf() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        const Snippet signature = Snippet::create(";signature", "s", kDefault);
        store.appendSnippet(signature);
        store.appendSnippet(Snippet::create("x;sig", "x", kDefault));
        store.appendSnippet(Snippet::create(";re", "r", kDefault, Snippet::Trigger::AfterWordEnd));
        using T = Snippet::Trigger;
        const QList<std::tuple<QString, T, bool>> cases = {
            {";sig", T::Immediately, true}, {"sig", T::Immediately, true}, // before the end
            {";sig", T::AfterWordEnd, false},    // ";signature" goes on with a letter
            {";signatures", T::Immediately, true}, // ";signature" expands first
            {"ture", T::Immediately, false}, {";sig2", T::Immediately, false},
            {";signature", T::Immediately, false}, {" ", T::Immediately, false},
            {";reply", T::Immediately, false},   // the waiting ";re" lets it through
            {";re.ply", T::Immediately, true}};  // but not at a full stop
        for (const auto& [command, trigger, clashes] : cases)
            QVERIFY2(bool(store.commandClash(command, QUuid(), trigger)) == clashes,
                     qPrintable(command));
        QVERIFY(!store.commandClash(";signa", signature.id)); // its own old one
        // The cure is named: the shorter command and, when it is another snippet's, its id.
        const SnippetStore::CommandClash inside = store.commandClash(";signatures", QUuid());
        QCOMPARE(inside.shorterCommand, QStringLiteral(";signature"));
        QCOMPARE(inside.longerCommand, QStringLiteral(";signatures"));
        QCOMPARE(inside.shorterId, signature.id);
        QVERIFY(store.commandClash(";s", QUuid()).shorterId.isNull());
    }

    // Waiting for a word end is kept over a restart, beside the list: its JSON is unchanged.
    void theWordEndTriggerIsKeptBesideTheList() {
        TemporarySettings settings;
        QByteArray json;
        {
            SnippetStore store(settings.path());
            QVERIFY(!store.addSnippet(Snippet::create(";a", "a", kDefault)));
            json = settings.read(SnippetStore::snippetsKey).toByteArray();
            const Snippet waiting = Snippet::create(";b", "b", kDefault, Snippet::Trigger::AfterWordEnd);
            QVERIFY(!store.addSnippet(waiting));
            QVERIFY(!store.updateSnippet(store.snippets().at(0), ";a", "a", std::nullopt,
                                         Snippet::Trigger::AfterWordEnd));
            QVERIFY(!store.updateSnippet(store.snippets().at(1), ";b", "bee")); // kept as it was
        }
        SnippetStore reloaded(settings.path());
        QCOMPARE(reloaded.snippets().size(), 2);
        QVERIFY(reloaded.snippets().at(0).expandsAfterWordEnd());
        QVERIFY(reloaded.snippets().at(1).expandsAfterWordEnd());
        QVERIFY(!settings.read(SnippetStore::snippetsKey).toByteArray().contains("rigger"));
        QVERIFY(settings.read(SnippetStore::snippetsKey).toByteArray().startsWith(json.chopped(1)));
    }

    void directChangesBumpTheRevisionAndSavesAnnounceTheListAtDelivery() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        UpdateRecorder updates(store);
        QSignalSpy changed(&store, &SnippetStore::snippetsChanged);
        quint64 revision = store.snippetsRevision();
        const Snippet a = Snippet::create(";a", "a", kDefault);
        store.appendSnippet(a);
        store.appendSnippet(a); // same id twice: removal takes both
        QVERIFY(store.snippetsRevision() > revision);
        revision = store.snippetsRevision();
        QVERIFY(!store.removeSnippet(a.id));
        QVERIFY(store.snippetsRevision() > revision);
        QVERIFY(store.snippets().isEmpty());
        QCOMPARE(changed.size(), 3);

        store.appendSnippet(a);
        store.saveSnippets();
        store.appendSnippet(Snippet::create(";b", "b", kDefault));
        store.saveSnippets();
        QVERIFY(updates.lists.isEmpty());
        QTRY_COMPARE(updates.lists.size(), 3); // the removal saved too
        for (const QList<Snippet>& list : std::as_const(updates.lists))
            QCOMPARE(commandsOf(list), QStringList({";a", ";b"}));
    }

    void oneBadRecordHidesNothingAndTheFileIsKeptBeforeItIsRewritten() {
        TemporarySettings settings;
        QJsonArray records;
        for (int i = 0; i < 100; ++i)
            records.append(RecordCodec::encode(Snippet::create(";s" + QString::number(i), "x", kDefault)));
        QJsonObject bad = records[40].toObject();
        bad["createdAt"] = "yesterday";
        records[40] = bad;
        settings.write("Shortcuts", QJsonDocument(records).toJson(QJsonDocument::Compact));
        settings.write("Categories", QByteArray("[{\"name\": 5}]"));
        QFile original(settings.path());
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray before = original.readAll();

        CapturedDiagnostics diagnostics;
        SnippetStore store(settings.path());
        QCOMPARE(store.snippets().size(), 99);
        QCOMPARE(store.unreadableRecords(), 2);
        // The copy was made before the default category was written back.
        QFile backup(store.backupPath());
        QVERIFY2(backup.open(QIODevice::ReadOnly), qPrintable(store.backupPath()));
        QCOMPARE(backup.readAll(), before);
        store.appendSnippet(Snippet::create(";new", "n", kDefault));
        store.saveSnippets();
        QCOMPARE(storedCommands(settings).size(), 100);
        QCOMPARE(diagnostics.lines.filter(store.backupPath()).size(), 2);
    }
};

QTEST_GUILESS_MAIN(SnippetStoreTest)
#include "SnippetStoreTest.moc"
