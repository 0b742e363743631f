// An application's configuration file of the espanso expander, in its usual layout: the file in
// config/ keeps the snippets to some window classes and takes them from match files it
// includes. The files are written here, from the format's description.
#include "ImportReader.h"
#include "LibraryImport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {
bool write(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QStringList commands(const ImportPlan& plan) {
    QStringList found;
    for (const Snippet& snippet : plan.snippets)
        found.append(snippet.command);
    return found;
}
} // namespace

class EspansoIncludesTest : public QObject {
    Q_OBJECT
private slots:
    void includedMatchFilesMakeOneLimitedCategory() {
        QTemporaryDir base;
        const auto at = [&](const char* path) { return base.filePath(QString::fromUtf8(path)); };
        // Each "/" "*" is split: the meta-object compiler would read it as a comment.
        QVERIFY(write(at("config/mail.yml"), "filter_class: Thunderbird\n"
                                             "includes:\n"
                                             "  - ../match/_mail.yml\n"
                                             "  - \"$CONFIG/match/_mail/"
                                             "*.yml\"\n"
                                             "  - ../match/_gone.yml\n"
                                             "  - mail.yml\n"
                                             "  - ../match/_broken.yml\n"
                                             "  - ../match/_folder.yml\n"
                                             "  - \"$CONFIG/match/none/"
                                             "*.yml\"\n"
                                             "extra_includes:\n"
                                             "  - ../match/_ring.yml\n"));
        // It names the configuration file again: read once, that adds nothing.
        QVERIFY(write(at("match/_mail.yml"), R"y(includes: ["../config/mail.yml", "_mail.yml"]
global_vars:
  - name: me
    type: echo
    params:
      echo: Ann
matches:
  - trigger: ";sig"
    replace: "Best regards, {{me}}"
    propagate_case: true
)y"));
        QVERIFY(
            write(at("match/_mail/b.yml"), "matches:\n  - trigger: \";b\"\n    replace: bee\n"));
        QVERIFY(write(at("match/_mail/a.yml"), "matches:\n  - trigger: \";a\"\n    replace: ay\n"));
        QVERIFY(
            write(at("match/_mail/notes.txt"), "matches:\n  - trigger: \";n\"\n    replace: no\n"));
        // Two files that include each other.
        QVERIFY(
            write(at("match/_ring.yml"),
                  "includes: [_ring2.yml]\nmatches:\n  - trigger: \";r1\"\n    replace: one\n"));
        QVERIFY(write(at("match/_ring2.yml"),
                      "includes: [_ring.yml]\nmatches:\n  - trigger: \";r2\"\n    replace: two\n"));
        QVERIFY(write(at("match/_broken.yml"), "matches: [\n  - trigger: \";x\"\n"));
        QVERIFY(QDir().mkpath(at("match/_folder.yml")));
        // Not included: in the usual layout it is everyone's, imported on its own.
        QVERIFY(
            write(at("match/base.yml"), "matches:\n  - trigger: \";base\"\n    replace: all\n"));

        ImportReader reader;
        const ImportPlan plan = LibraryImport::read(at("config/mail.yml"), reader);
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QCOMPARE(plan.categories.size(), 1);
        const Category& category = plan.categories.first();
        QCOMPARE(category.name, "mail");
        QCOMPARE(category.limit, (Category::Limit{Category::Limit::Kind::onlyIn, {"Thunderbird"}}));
        QCOMPARE(commands(plan), QStringList({";sig", ";a", ";b", ";r1", ";r2"}));
        for (const Snippet& snippet : plan.snippets)
            QCOMPARE(snippet.categoryId, category.id);
        QCOMPARE(plan.snippets.first().content, "Best regards, Ann");
        QVERIFY(plan.snippets.first().matchCase);

        // Each file that could not be read is named, with why.
        QCOMPARE(plan.notRead.size(), 4);
        QCOMPARE(plan.notRead.at(0), "$CONFIG/match/none/"
                                     "*.yml matches no file.");
        QVERIFY2(plan.notRead.at(1).contains(at("match/_gone.yml")),
                 qPrintable(plan.notRead.at(1)));
        QVERIFY2(plan.notRead.at(2).contains("_broken.yml") && plan.notRead.at(2).contains("YAML"),
                 qPrintable(plan.notRead.at(2)));
        QVERIFY2(plan.notRead.at(3).contains("_folder.yml"), qPrintable(plan.notRead.at(3)));
    }

    // A configuration file whose includes all fail brings nothing, and says why.
    void nothingReadableIsNoCategory() {
        QTemporaryDir base;
        QVERIFY(write(base.filePath("config/term.yml"),
                      "filter_class: kitty\nincludes: [../match/_term.yml]\n"));
        const ImportPlan plan = LibraryImport::read(base.filePath("config/term.yml"));
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QVERIFY(plan.snippets.isEmpty());
        QVERIFY(plan.categories.isEmpty());
        QCOMPARE(plan.notRead.size(), 1);
        QVERIFY(plan.notRead.first().contains(base.filePath("match/_term.yml")));
    }
};

QTEST_GUILESS_MAIN(EspansoIncludesTest)
#include "EspansoIncludesTest.moc"
