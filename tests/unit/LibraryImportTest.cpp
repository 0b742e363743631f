// Reading library files and phrase folders written here from their descriptions, and applying
// an import to the store.
#include "LibraryImport.h"
#include "EspansoMatchFile.h"
#include "ImportReader.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TypoletLibraryFile.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {
using Files = QMap<QString, QByteArray>; // path in the folder -> contents

void writeFiles(const QTemporaryDir& dir, const Files& files) {
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        const QString path = dir.filePath(it.key());
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(it.value());
    }
}

// "command=content@category", one per snippet; records are compared whole elsewhere.
QStringList described(const ImportPlan& plan) {
    QStringList result;
    for (const Snippet& s : plan.snippets)
        result.append(s.command + (s.expandsAfterWordEnd() ? " (word)" : "") + '=' + s.content +
                      '@' + plan.categoryName(s.categoryId));
    return result;
}

QStringList records(const QList<Snippet>& snippets) {
    QStringList result;
    for (const Snippet& s : snippets)
        result.append(QString("%1 %2=%3 %4 %5 %6")
                          .arg(s.id.toString(), s.command, s.content)
                          .arg(s.createdAt)
                          .arg(s.categoryId.toString())
                          .arg(s.expandsAfterWordEnd()));
    result.sort();
    return result;
}

QStringList records(const QList<Category>& categories) {
    QStringList result;
    for (const Category& c : categories)
        result.append(QString("%1 %2 %3").arg(c.id.toString(), c.name).arg(c.createdAt));
    result.sort();
    return result;
}

// Makes what a Files table cannot hold: "fifo PATH", "link PATH TARGET", "size PATH MB" (a
// sparse file of that many MB).
void makeSpecial(const QTemporaryDir& dir, const QString& how) {
    const QStringList part = how.split(' ');
    const QString path = dir.filePath(part[1]);
    QDir().mkpath(QFileInfo(path).path());
    if (part[0] == "fifo")
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else if (part[0] == "link")
        QVERIFY(QFile::link(part[2], path));
    else {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(qint64(part[2].toInt()) << 20));
    }
}

// Whether anything opened the named pipes for reading while it watched: a writer's
// non-blocking open succeeds only then, and also frees a reader stuck in its open, so a
// reader that opens a pipe fails the test instead of hanging it.
class PipeWatch {
public:
    explicit PipeWatch(QStringList pipes)
        : m_watcher([this, pipes] {
              while (!m_stop) {
                  for (const QString& pipe : pipes) {
                      const int fd = ::open(QFile::encodeName(pipe).constData(),
                                            O_WRONLY | O_NONBLOCK | O_CLOEXEC);
                      if (fd >= 0) {
                          m_opened = true;
                          ::close(fd);
                      }
                  }
                  std::this_thread::sleep_for(std::chrono::milliseconds(20));
              }
          }) {}
    ~PipeWatch() {
        m_stop = true;
        m_watcher.join();
    }
    bool opened() const { return m_opened; }

private:
    std::atomic<bool> m_stop{false}, m_opened{false};
    std::thread m_watcher;
};

QByteArray phraseSettings(const QByteArray& abbreviations, bool immediate = false) {
    const QByteArray wait = immediate ? "true" : "false";
    return "{\"description\": \"d\", \"abbreviation\": {\"abbreviations\": [" + abbreviations +
           "], \"ignoreCase\": false, \"immediate\": " + wait +
           "}, \"hotkey\": {\"modifiers\": [], \"hotKey\": null}}";
}
} // namespace

class LibraryImportTest : public QObject {
    Q_OBJECT
private slots:
    // Export, then import into an empty store: the same records. One category exported
    // carries that category and its snippets only.
    void ownFileRoundTrips() {
        TemporarySettings fullSettings, emptySettings;
        SnippetStore full(fullSettings.path()), empty(emptySettings.path());
        QVERIFY(!full.addCategory("Work"));
        const Category work = full.categories().last();
        QVERIFY(
            !full.addSnippet(Snippet(QUuid::createUuid(), ";a", "A\n\"quoted\" é", 12.5, work.id)));
        QVERIFY(!full.addSnippet(Snippet::create(";b", "B", Category::defaultCategoryId,
                                                 Snippet::Trigger::AfterWordEnd)));
        QTemporaryDir dir;
        const QString path = dir.filePath("library.json");
        QFile earlier(path); // an export replaced keeps no wider permissions
        QVERIFY(earlier.open(QIODevice::WriteOnly) &&
                earlier.setPermissions(QFile::Permissions(0x6644)));
        earlier.close();
        QVERIFY(!TypoletLibraryFile::write(path, full.categories(), full.snippets()));
        struct stat written {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &written), 0);
        QCOMPARE(written.st_mode & 07777, 0600u);

        QVERIFY(!empty.importSnippets(LibraryImport::read(path)));
        QCOMPARE(records(empty.snippets()), records(full.snippets()));
        QCOMPARE(records(empty.categories()), records(full.categories()));
        QCOMPARE(records(SnippetStore(emptySettings.path()).snippets()), records(full.snippets()));

        QVERIFY(!TypoletLibraryFile::write(path, {work}, {full.snippets().first()}));
        const ImportPlan one = LibraryImport::read(path);
        QCOMPARE(described(one), QStringList{";a=A\n\"quoted\" é@Work"});
        QCOMPARE(records(one.categories), records(QList<Category>{work}));
    }

    void foreignFilesGiveSnippets_data() {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QString>("picked"); // empty: the folder itself
        QTest::addColumn<QStringList>("snippets");
        QTest::addColumn<int>("skipped");
        QTest::addColumn<QStringList>("typedAsWritten");
        QTest::newRow("match file") << Files{{"base.yml", R"y(global_vars:
  - name: x
    type: echo
matches:
  - trigger: ":sig"
    replace: |
      Best regards,
        Ada
    word: true
  - triggers: [":hi", ":hello"]
    replace: "Hello!"
  - trigger: ":cat"
    image_path: "/tmp/cat.png"
  - regex: ":d(?P<n>\\d)"
    replace: "digit"
  - trigger: ":blank"
    replace:
  - trigger: "  "
    replace: "spaces"
  - trigger: ":now"
    replace: "{{when}} {{ paste }} {{who}} {{up}} {{x}}"
    vars:
      - name: when
        type: date
        params:
          format: "%Y-%m-%d at %H:%M"
      - name: paste
        type: clipboard
      - name: who
        type: echo
        params:
          echo: "Ada {{brace}}"
      - name: up
        type: random
        params:
          choices: ["a", "b"]
)y"}} << "base.yml"
                                    << QStringList{":sig (word)=Best regards,\n  Ada\n@base",
                                                   ":hi=Hello!@base", ":hello=Hello!@base",
                                                   ":now={{date:yyyy-MM-dd 'at' HH:mm}} "
                                                   "{{clipboard}} Ada {{{{brace}} {{up}} {{x}}@base"}
                                    << 4 << QStringList{"up (random)", "x (echo)"};
        QTest::newRow("phrase folder")
            << Files{{"Phrases/addr.txt", "221B Baker Street\n"},
                     {"Phrases/.addr.json", phraseSettings(R"("adr", "address")")},
                     {"Phrases/hotkey.txt", "by hotkey"},
                     {"Phrases/.hotkey.json", phraseSettings("")},
                     {"Phrases/.folder.json", "{}"},
                     {"Phrases/Sub/sig.txt", "Ada ✓"},
                     {"Phrases/Sub/.sig.json", phraseSettings(R"("sig")", true)}}
            << "Phrases"
            << QStringList{"sig=Ada ✓@Phrases/Sub", "adr (word)=221B Baker Street\n@Phrases",
                           "address (word)=221B Baker Street\n@Phrases"}
            << 1 << QStringList();
    }
    void foreignFilesGiveSnippets() {
        QFETCH(Files, files);
        QFETCH(QString, picked);
        QFETCH(QStringList, snippets);
        QFETCH(int, skipped);
        QFETCH(QStringList, typedAsWritten);
        QTemporaryDir dir;
        writeFiles(dir, files);
        const ImportPlan plan = LibraryImport::read(dir.filePath(picked));
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QCOMPARE(described(plan), snippets);
        QCOMPARE(plan.skipped, skipped);
        QCOMPARE(plan.typedAsWritten, typedAsWritten);
    }

    // Each gives a message naming the file and what is wrong, and changes nothing.
    void malformedInputIsRefused_data() {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QString>("picked");
        QTest::addColumn<QString>("named"); // file the message names
        QTest::addColumn<QString>("says");
        QTest::newRow("bad YAML") << Files{{"m.yml",
                                            "matches:\n  - trigger: \":a\"\n   replace: [\n"}}
                                  << "m.yml"
                                  << "m.yml"
                                  << "line 3";
        QTest::newRow("no matches") << Files{{"m.yaml", "imports: []\n"}} << "m.yaml"
                                    << "m.yaml"
                                    << "matches";
        QTest::newRow("bad JSON") << Files{{"l.json", R"({"version": 1, "snippets": [)"}}
                                  << "l.json"
                                  << "l.json"
                                  << "JSON";
        QTest::newRow("newer version")
            << Files{{"l.json", R"({"version": 2, "categories": [], "snippets": []})"}} << "l.json"
            << "l.json"
            << "newer";
        QTest::newRow("not a library") << Files{{"l.json", "[]"}} << "l.json"
                                       << "l.json"
                                       << "version";
        QTest::newRow("unreadable") << Files{} << "gone.json"
                                    << "gone.json"
                                    << "could not be read";
        QTest::newRow("phrase without settings")
            << Files{{"P/a.txt", "a"}, {"P/.a.json", phraseSettings(R"("a")")}, {"P/b.txt", "b"}}
            << "P"
            << ".b.json"
            << "settings";
        QTest::newRow("phrase settings not JSON")
            << Files{{"P/a.txt", "a"}, {"P/.a.json", "{abbreviation"}} << "P"
            << ".a.json"
            << "JSON";
        QTest::newRow("folder without phrases") << Files{{"P/notes.md", "x"}} << "P"
                                                << "P"
                                                << "no phrases";
    }
    void malformedInputIsRefused() {
        QFETCH(Files, files);
        QFETCH(QString, picked);
        QFETCH(QString, named);
        QFETCH(QString, says);
        QTemporaryDir dir;
        writeFiles(dir, files);
        TemporarySettings settings;
        SnippetStore store(settings.path());
        QVERIFY(!store.addSnippet(Snippet::create(";a", "kept", Category::defaultCategoryId)));
        const QStringList before = records(store.snippets());
        const QVariant stored = settings.read("Shortcuts");

        const ImportPlan plan = LibraryImport::read(dir.filePath(picked));
        QVERIFY(plan.failed());
        QVERIFY2(plan.error.contains(named) && plan.error.contains(says), qPrintable(plan.error));
        QVERIFY(plan.snippets.isEmpty());
        QCOMPARE(store.importSnippets(plan), DataError::unreadableImport(plan.error));
        QCOMPARE(records(store.snippets()), before);
        QCOMPARE(store.categories().size(), 1);
        QCOMPARE(settings.read("Shortcuts"), stored);
    }

    // Nothing but a regular file is opened, and nothing past the size limits is read; each is
    // refused with a message naming the file and why, and the import does not hang.
    void filesBeyondTheLimitsAreRefused_data() {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QStringList>("special"); // see makeSpecial
        QTest::addColumn<QString>("picked");
        QTest::addColumn<QStringList>("says");
        QTest::newRow("pipe for phrase settings")
            << Files{{"P/a.txt", "a"}} << QStringList{"fifo P/.a.json"} << "P"
            << QStringList{".a.json", "named pipe"};
        QTest::newRow("pipe for a phrase")
            << Files{{"P/.a.json", phraseSettings(R"("a")")}} << QStringList{"fifo P/a.txt"} << "P"
            << QStringList{"a.txt", "named pipe"};
        QTest::newRow("pipe for a library") << Files{} << QStringList{"fifo l.json"} << "l.json"
                                            << QStringList{"l.json", "named pipe"};
        QTest::newRow("link to a device") << Files{} << QStringList{"link m.yml /dev/zero"}
                                          << "m.yml" << QStringList{"m.yml", "device", "/dev/zero"};
        QTest::newRow("phrase linked to a device")
            << Files{{"P/.a.json", phraseSettings(R"("a")")}}
            << QStringList{"link P/a.txt /dev/zero"} << "P" << QStringList{"a.txt", "device"};
        QTest::newRow("too large") << Files{} << QStringList{"size l.json 21"} << "l.json"
                                   << QStringList{"l.json", "21", "at most 20"};
        QTest::newRow("folder too large in all")
            << Files{{"P/.a.json", phraseSettings(R"("a")")},
                     {"P/.b.json", phraseSettings(R"("b")")}}
            << QStringList{"size P/a.txt 11", "size P/b.txt 11"} << "P"
            << QStringList{"b.txt", "20"};

        // Aliases: a 1 MB value named 60 times, a mapping of 10,000 keys named 101 times.
        QByteArray bigValue = "big: &b \"" + QByteArray(1 << 20, 'x') + "\"\nmatches:\n";
        for (int i = 0; i < 60; ++i)
            bigValue += "  - trigger: \":a" + QByteArray::number(i) + "\"\n    replace: *b\n";
        QTest::newRow("aliases of a large value")
            << Files{{"m.yml", bigValue}} << QStringList{} << "m.yml"
            << QStringList{"m.yml", QString::number(EspansoMatchFile::maxText >> 20) + " MB"};
        QByteArray bigMap = "map: &m {trigger: \":a\", replace: x";
        for (int i = 0; i < 10'000; ++i)
            bigMap += ", k" + QByteArray::number(i) + ": 0";
        bigMap += "}\nmatches:\n" + QByteArray("  - *m\n").repeated(101);
        QTest::newRow("aliases of a large mapping") << Files{{"m.yml", bigMap}} << QStringList{}
                                                    << "m.yml" << QStringList{"m.yml", "entries"};
    }
    void filesBeyondTheLimitsAreRefused() {
        QFETCH(Files, files);
        QFETCH(QStringList, special);
        QFETCH(QString, picked);
        QFETCH(QStringList, says);
        QTemporaryDir dir;
        writeFiles(dir, files);
        QStringList pipes;
        for (const QString& how : special) {
            makeSpecial(dir, how);
            if (how.startsWith("fifo"))
                pipes.append(dir.filePath(how.section(' ', 1, 1)));
        }
        const PipeWatch watch(pipes);
        const ImportPlan plan = LibraryImport::read(dir.filePath(picked));
        QVERIFY(!watch.opened());
        QVERIFY(plan.failed() && plan.snippets.isEmpty());
        for (const QString& part : says)
            QVERIFY2(plan.error.contains(part), qPrintable(plan.error));
    }

    // Cancelled at its first report of progress, each reader stops: no more reports, no
    // snippets, the cancellation as its error.
    void cancellingStopsTheReading_data() {
        QTest::addColumn<Files>("files");
        QTest::addColumn<QString>("picked");
        QByteArray matches = "matches:\n";
        for (int i = 0; i < 20'000; ++i)
            matches += "  - trigger: \":a" + QByteArray::number(i) + "\"\n    replace: \"A\"\n";
        QTest::newRow("match file") << Files{{"m.yml", matches}} << "m.yml";
        QTest::newRow("library") << Files{{"l.json", TypoletLibraryFile::encode(
                                                         {}, {Snippet::create(";a", "A", {})})}}
                                 << "l.json";
        QTest::newRow("phrase folder") << Files{{"P/a.txt", "a"},
                                                {"P/.a.json", phraseSettings(R"("a")")},
                                                {"P/b.txt", "b"},
                                                {"P/.b.json", phraseSettings(R"("b")")}}
                                       << "P";
    }
    void cancellingStopsTheReading() {
        QFETCH(Files, files);
        QFETCH(QString, picked);
        QTemporaryDir dir;
        writeFiles(dir, files);
        std::atomic<bool> cancelled{false};
        int reportsAfter = 0;
        ImportReader reader(&cancelled, [&](int) {
            reportsAfter += cancelled ? 1 : 0;
            cancelled = true;
        });
        const ImportPlan plan = LibraryImport::read(dir.filePath(picked), reader);
        QCOMPARE(plan.error, ImportReader::cancelledMessage());
        QVERIFY(plan.snippets.isEmpty());
        QCOMPARE(reportsAfter, 0);
        QVERIFY(reader.filesRead() <= 1);
    }

    // A clashing command is skipped, kept twice, or put in place of the existing content; new
    // commands and their category are added either way, all in one save.
    void clashesAreResolvedAndSavedOnce_data() {
        QTest::addColumn<int>("resolution");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("skip") << int(ImportPlan::Resolution::skip)
                              << QStringList{";a=old@", ";new=n@Imported"};
        QTest::newRow("keep both")
            << int(ImportPlan::Resolution::keepBoth)
            << QStringList{";a=old@", ";a=imported@Imported", ";new=n@Imported"};
        QTest::newRow("replace") << int(ImportPlan::Resolution::replace)
                                 << QStringList{";a=imported@", ";new=n@Imported"};
    }
    void clashesAreResolvedAndSavedOnce() {
        QFETCH(int, resolution);
        QFETCH(QStringList, stored);
        TemporarySettings settings;
        SnippetStore store(settings.path());
        QVERIFY(!store.addSnippet(Snippet::create(";a", "old", Category::defaultCategoryId)));
        const Snippet old = store.snippets().first();
        QVERIFY(!store.addCategory("imported")); // matched, ignoring case

        ImportPlan plan;
        plan.categories.append(Category::create("Imported"));
        plan.addSnippet(Snippet::create(";a", "imported", plan.categories[0].id));
        plan.addSnippet(Snippet::create(";new", "n", plan.categories[0].id));
        plan.addSnippet(Snippet::create(" ", "blank", plan.categories[0].id));
        plan.setAllResolutions(ImportPlan::Resolution(resolution));
        QCOMPARE(plan.skipped, 1);

        QCoreApplication::processEvents(); // the announcements of the saves above
        QSignalSpy saved(&store, &SnippetStore::snippetsSaved);
        QVERIFY(!store.importSnippets(plan));
        QCoreApplication::processEvents();
        QCOMPARE(saved.size(), 1);
        const SnippetStore reloaded(settings.path());
        ImportPlan shown; // the stored snippets, described with the stored categories
        shown.categories = reloaded.categories();
        shown.snippets = reloaded.snippets();
        stored.replaceInStrings(QRegularExpression("@$"), "@Uncategory");
        stored.replaceInStrings("@Imported", "@imported");
        QCOMPARE(described(shown), stored);
        QCOMPARE(reloaded.categories().size(), 2);
        const Snippet first = reloaded.snippets().first();
        QVERIFY(first.id == old.id && first.createdAt == old.createdAt);
    }
};

QTEST_GUILESS_MAIN(LibraryImportTest)
#include "LibraryImportTest.moc"
