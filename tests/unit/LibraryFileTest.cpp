// The library file's one owner: its INI text against QSettings both ways, changes other
// programs make while Typolet runs, the three-way merge, the history, and file permissions.
#include "IniFormat.h"
#include "LibraryFile.h"
#include "Preferences.h"
#include "RecordCodec.h"
#include "SnippetStore.h"
#include "TestData.h"

#include <QJsonDocument>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>

namespace {
// The file as another program leaves it after changing it with `change`.
template <class Change>
void changeOutside(const QString& path, Change change) {
    IniFormat::Values values = IniFormat::parse(readAll(path));
    QList<Snippet> snippets = *RecordCodec::decodeSnippets(
        IniFormat::decode(values.value(QStringLiteral("Shortcuts"))).toByteArray());
    change(snippets, values);
    values.insert(QStringLiteral("Shortcuts"),
                  IniFormat::encode(*RecordCodec::encodeSnippets(snippets)));
    QVERIFY(replaceFile(path, IniFormat::compose(values)));
}

QStringList contentsOnDisk(const QString& path) {
    return contentsOf(SnippetStore(path).snippets());
}

mode_t modeOf(const QString& path) {
    struct stat info {};
    ::stat(QFile::encodeName(path).constData(), &info);
    return info.st_mode & 0777;
}
} // namespace

class LibraryFileTest : public QObject {
    Q_OBJECT
private slots:
    void valuesReadTheSameByQSettingsAndByUs_data() {
        QTest::addColumn<QVariant>("value");
        const QByteArray json = "[{\"content\":\"Grüße, \\\"quoted\\\" \\\\ back;slash = # "
                                "hash\\n\\tline\",\"command\":\";sig\",\"id\":\"x\"}]";
        QTest::newRow("JSON of snippets") << QVariant(json);
        static constexpr char awkwardBytes[] = "\x00" "1\x7f" "a\xff" "F\x01" "9;=,#@ ";
        const QByteArray awkward(awkwardBytes, sizeof awkwardBytes - 1);
        QTest::newRow("bytes next to hex digits") << QVariant(awkward);
        QByteArray large(10 * 1024 * 1024, 'x');
        for (qsizetype i = 0; i < large.size(); i += 997)
            large[i] = char(i % 256);
        QTest::newRow("10 MB content") << QVariant(large);
        QTest::newRow("text") << QVariant(QStringLiteral("Grüße 😀, \"q\" \\ ; = # \n\r\t end"));
        QTest::newRow("at sign") << QVariant(QStringLiteral("@ByteArray(not bytes)"));
        QTest::newRow("NUL in text") << QVariant(QString::fromUtf16(u"a\u0000b", 3));
        QTest::newRow("list") << QVariant(QStringList{"firefox", "a, b", " c ", "Ünï"});
        QTest::newRow("empty list") << QVariant(QStringList());
        QTest::newRow("bool") << QVariant(true);
        QTest::newRow("number") << QVariant(250);
    }

    void valuesReadTheSameByQSettingsAndByUs() {
        QFETCH(QVariant, value);
        QTemporaryDir dir;
        const auto same = [&](const QVariant& back) {
            switch (value.typeId()) {
            case QMetaType::QByteArray: return back.toByteArray() == value.toByteArray();
            case QMetaType::QStringList: return back.toStringList() == value.toStringList();
            default: return back.toString() == value.toString();
            }
        };
        // Ours, read by QSettings (so earlier Typolets and any INI reader of Qt get the library).
        const QString ours = dir.filePath(QStringLiteral("ours.conf"));
        {
            QFile file(ours);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(IniFormat::compose({{QStringLiteral("value"), IniFormat::encode(value)},
                                           {QStringLiteral("after"), IniFormat::encode(1)}}));
        }
        const QSettings qt(ours, QSettings::NativeFormat);
        QCOMPARE(qt.status(), QSettings::NoError);
        QVERIFY(same(qt.value(QStringLiteral("value"))));
        QCOMPARE(qt.value(QStringLiteral("after")).toInt(), 1);
        // QSettings', read by us (files of earlier versions).
        const QString theirs = dir.filePath(QStringLiteral("theirs.conf"));
        {
            QSettings writer(theirs, QSettings::NativeFormat);
            writer.setValue(QStringLiteral("value"), value);
            writer.setValue(QStringLiteral("Group/inner key"), 7);
        }
        const IniFormat::Values read = IniFormat::parse(readAll(theirs));
        QVERIFY(same(IniFormat::decode(read.value(QStringLiteral("value")))));
        QCOMPARE(IniFormat::decode(read.value(QStringLiteral("Group/inner key"))).toInt(), 7);
        // And a key in a group comes back where it was when we write the file again.
        QFile rewritten(theirs);
        QVERIFY(rewritten.open(QIODevice::WriteOnly | QIODevice::Truncate));
        rewritten.write(IniFormat::compose(read));
        rewritten.close();
        QCOMPARE(QSettings(theirs, QSettings::NativeFormat)
                     .value(QStringLiteral("Group/inner key"))
                     .toInt(),
                 7);
    }

    void anOutsideChangeIsShownAndNeverOverwritten() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Typolet.conf"));
        LibraryFile file(path);
        SnippetStore store(file);
        Preferences preferences(file);
        for (int i = 0; i < 5; ++i)
            QVERIFY(!store.addSnippet(Snippet::create(QStringLiteral(";s%1").arg(i), QStringLiteral("five"),
                                                      Category::defaultCategoryId)));
        QSignalSpy shown(&store, &SnippetStore::snippetsChanged);
        QSignalSpy paused(&preferences, &Preferences::pausedChanged);
        changeOutside(path, [](QList<Snippet>& snippets, IniFormat::Values& values) {
            snippets.append(Snippet::create(QStringLiteral(";synced"), QStringLiteral("from elsewhere"),
                                            Category::defaultCategoryId));
            values.insert(QStringLiteral("paused"), IniFormat::encode(true));
        });
        // The folder watch brings it in; no edit is needed.
        QTRY_VERIFY_WITH_TIMEOUT(store.snippetWithCommand(QStringLiteral(";synced")), 5000);
        QVERIFY(!shown.isEmpty());
        QCOMPARE(paused.value(0).value(0).toBool(), true);
        QVERIFY(preferences.paused());
        // An edit afterwards keeps it.
        QVERIFY(!store.updateSnippet(store.snippets().first(), QStringLiteral(";s0"), QStringLiteral("edited")));
        QCOMPARE(contentsOnDisk(path).size(), 6);
        QVERIFY(contentsOnDisk(path).contains(QStringLiteral(";synced=from elsewhere")));
        QVERIFY(contentsOnDisk(path).contains(QStringLiteral(";s0=edited")));
    }

    void aSaveMergesWhatChangedOnDiskSinceItWasRead_data() {
        // Each side starts from ";a", ";b", ";c" (contents "a", "b", "c").
        QTest::addColumn<QString>("ours");   // what Typolet does
        QTest::addColumn<QString>("theirs"); // what the other program does
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("different records") << "edit ;a A" << "edit ;b B"
                                           << QStringList{";a=A", ";b=B", ";c=c"};
        QTest::newRow("the same record: ours wins") << "edit ;a mine" << "edit ;a theirs"
                                                    << QStringList{";a=mine", ";b=b", ";c=c"};
        QTest::newRow("added on both sides") << "add ;d d" << "add ;e e"
                                             << QStringList{";a=a", ";b=b", ";c=c", ";d=d", ";e=e"};
        QTest::newRow("deleted there, edited here: deleted") << "edit ;b B" << "delete ;a"
                                                             << QStringList{";b=B", ";c=c"};
        QTest::newRow("deleted here, unchanged there") << "delete ;c" << "edit ;a A"
                                                       << QStringList{";a=A", ";b=b"};
        QTest::newRow("deleted here, changed there: kept") << "delete ;c" << "edit ;c C"
                                                           << QStringList{";a=a", ";b=b", ";c=C"};
    }

    void aSaveMergesWhatChangedOnDiskSinceItWasRead() {
        QFETCH(QString, ours);
        QFETCH(QString, theirs);
        QFETCH(QStringList, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Typolet.conf"));
        {
            SnippetStore seed(path);
            for (const char* command : {";a", ";b", ";c"})
                QVERIFY(!seed.addSnippet(Snippet::create(QLatin1String(command), QLatin1String(command + 1),
                                                         Category::defaultCategoryId)));
        }
        LibraryFile file(path);
        SnippetStore store(file);
        const auto act = [](const QString& action, QList<Snippet>& snippets) {
            const QStringList words = action.split(u' ');
            const auto it = std::find_if(snippets.begin(), snippets.end(),
                                         [&](const Snippet& s) { return s.command == words.at(1); });
            if (words.at(0) == QLatin1String("edit"))
                it->content = words.at(2);
            else if (words.at(0) == QLatin1String("delete"))
                snippets.erase(it);
            else
                snippets.append(Snippet::create(words.at(1), words.at(2), Category::defaultCategoryId));
        };
        // The other program writes first; the watch has not looked yet when Typolet saves.
        changeOutside(path, [&](QList<Snippet>& snippets, IniFormat::Values&) { act(theirs, snippets); });
        QList<Snippet> mine = store.snippets();
        act(ours, mine);
        store.setSnippets(mine);
        QVERIFY(!store.saveSnippets());
        QCOMPARE(contentsOnDisk(path), expected);
        QCOMPARE(contentsOf(store.snippets()), expected); // the window shows what is on disk
        // The other program's version is in the history.
        const QList<LibraryHistory::Version> versions = file.history().versions();
        QVERIFY(std::any_of(versions.cbegin(), versions.cend(), [](const LibraryHistory::Version& v) {
            return v.reason == LibraryHistory::Reason::OutsideChange;
        }));
    }

    void theHistoryKeepsVersionsToRestore() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Typolet.conf"));
        SnippetStore store(path);
        QVERIFY(!store.addSnippet(Snippet::create(QStringLiteral(";one"), QStringLiteral("1"),
                                                  Category::defaultCategoryId)));
        // An edit within ten minutes of the last kept one adds no version.
        QVERIFY(!store.addSnippet(Snippet::create(QStringLiteral(";two"), QStringLiteral("2"),
                                                  Category::defaultCategoryId)));
        const auto versions = [&] { return store.file().history().versions(); };
        QCOMPARE(versions().size(), 1); // the library before ";one"
        QCOMPARE(versions().first().reason, LibraryHistory::Reason::Edit);
        QCOMPARE(modeOf(versions().first().path), mode_t(0600));
        QCOMPARE(modeOf(store.file().history().folder()), mode_t(0700));
        // A restore brings the library back and keeps the one it replaces.
        QVERIFY(!store.restoreVersion(versions().first().path));
        QCOMPARE(contentsOf(store.snippets()), QStringList());
        QCOMPARE(contentsOnDisk(path), QStringList());
        QCOMPARE(versions().first().reason, LibraryHistory::Reason::Restore);
        QVERIFY(!store.restoreVersion(versions().first().path));
        QCOMPARE(contentsOf(store.snippets()), (QStringList{";one=1", ";two=2"}));
        QCOMPARE(contentsOnDisk(path), (QStringList{";one=1", ";two=2"}));
        // Never more than the number kept.
        for (int i = 0; i < LibraryHistory::kept + 3; ++i)
            QVERIFY(!store.file().history().keep("x", LibraryHistory::Reason::Import));
        QCOMPARE(versions().size(), LibraryHistory::kept);
    }

    void theLibraryIsForTheUserAlone() {
        QTemporaryDir dir;
        const QString folder = dir.filePath(QStringLiteral("Typolet"));
        const QString path = folder + QStringLiteral("/Typolet.conf");
        QVERIFY(QDir().mkpath(folder));
        QFile::setPermissions(folder, QFileDevice::Permissions(0x7755));
        {
            QSettings loose(path, QSettings::NativeFormat);
            loose.setValue(QStringLiteral("paused"), false);
        }
        QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions(0x6644)));
        SnippetStore store(path);
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(modeOf(folder), mode_t(0700));
        QVERIFY(!store.addCategory(QStringLiteral("Work")));
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"Typolet.conf"});
    }
};

QTEST_GUILESS_MAIN(LibraryFileTest)
#include "LibraryFileTest.moc"
