// A match file of the espanso expander keeps its meaning: `propagate_case` becomes "Match the
// command's case", a file kept to some window classes a limited category, and what Typolet
// cannot do is named and left out. The files are written here, from the format's description.
#include "ImportReader.h"
#include "LibraryImport.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {
ImportPlan readYaml(QTemporaryDir& dir, const QString& name, const QByteArray& yaml) {
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(yaml) != yaml.size())
        return ImportPlan::failure(name, "not written");
    file.close();
    return LibraryImport::read(file.fileName());
}
} // namespace

class EspansoMeaningTest : public QObject {
    Q_OBJECT
private slots:
    void caseApplicationsAndWhatIsLeftOut() {
        QTemporaryDir dir;
        const ImportPlan plan = readYaml(dir, "terminal.yml", R"y(filter_class: "Alacritty|kitty"
global_vars:
  - name: host
    type: shell
    params:
      cmd: "hostname"
matches:
  - trigger: ";sig"
    replace: "best regards"
    propagate_case: true
  - trigger: ";ls"
    replace: "ls -la"
  - trigger: ";ip"
    replace: "{{addr}}"
    vars:
      - name: addr
        type: shell
        params:
          cmd: "hostname -I"
  - trigger: ";me"
    replace: "on {{host}}"
  - trigger: ";run"
    replace: "{{out}}"
    vars:
      - name: out
        type: script
        params:
          args: ["python3", "x.py"]
  - regex: ";(?P<n>\\d+)x"
    replace: "times"
  - trigger: ";cat"
    image_path: "/tmp/cat.png"
)y");
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QCOMPARE(plan.categories.size(), 1);
        QCOMPARE(plan.categories.first().limit,
                 (Category::Limit{Category::Limit::Kind::onlyIn, {"Alacritty", "kitty"}}));
        QCOMPARE(plan.snippets.size(), 2);
        QVERIFY(plan.snippets.at(0).matchCase);
        QVERIFY(!plan.snippets.at(1).matchCase);
        QCOMPARE(plan.leftOut, QStringList({";ip (shell)", ";me (shell)", ";run (script)",
                                            ";(?P<n>\\d+)x (regular expression)", ";cat (image)"}));
        QCOMPARE(plan.skipped, 5);
        QVERIFY(plan.typedAsWritten.isEmpty());

        // Imported, the category keeps its limit and the snippet its option.
        TemporarySettings settings;
        SnippetStore store(settings.path());
        QVERIFY(!store.importSnippets(plan));
        SnippetStore reloaded(settings.path());
        const auto sig = std::find_if(reloaded.snippets().cbegin(), reloaded.snippets().cend(),
                                      [](const Snippet& s) { return s.command == ";sig"; });
        QVERIFY(sig != reloaded.snippets().cend() && sig->matchCase);
        QCOMPARE(reloaded.category(sig->categoryId)->limit.applications,
                 QStringList({"Alacritty", "kitty"}));
    }

    // The patterns read as names, and the filters Typolet cannot follow, which refuse the file
    // rather than let its snippets expand everywhere.
    void filters_data() {
        QTest::addColumn<QByteArray>("filter");
        QTest::addColumn<QStringList>("names"); // empty: refused
        QTest::newRow("plain") << QByteArray("filter_class: Gedit") << QStringList{"Gedit"};
        QTest::newRow("anchored, any case") << QByteArray(R"y(filter_class: "(?i)^gedit$")y")
                                            << QStringList{"gedit"};
        QTest::newRow("group of alternatives")
            << QByteArray(R"y(filter_class: "(Alacritty|org\\.gnome\\.Terminal)")y")
            << QStringList{"Alacritty", "org.gnome.Terminal"};
        QTest::newRow("wildcard") << QByteArray(R"y(filter_class: "fire.*")y") << QStringList{};
        QTest::newRow("window title") << QByteArray("filter_title: Inbox") << QStringList{};
        QTest::newRow("program") << QByteArray("filter_exec: /usr/bin/gedit") << QStringList{};
    }
    void filters() {
        QFETCH(QByteArray, filter);
        QFETCH(QStringList, names);
        QTemporaryDir dir;
        const ImportPlan plan = readYaml(dir, "app.yml", filter + R"y(
matches:
  - trigger: ";x"
    replace: "x"
)y");
        if (names.isEmpty()) {
            QVERIFY(plan.failed());
            QVERIFY2(plan.error.contains("app.yml") && plan.error.contains("nothing was imported"),
                     qPrintable(plan.error));
            return;
        }
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QCOMPARE(plan.categories.first().limit.applications, names);
    }
};

QTEST_GUILESS_MAIN(EspansoMeaningTest)
#include "EspansoMeaningTest.moc"
