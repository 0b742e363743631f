#include "SnippetSearch.h"

#include <QtTest>

namespace {
// One snippet of a table row: its command, content, category name, and usage (count, last use).
struct Row {
    QString command;
    QString content;
    QString category = QStringLiteral("General");
    SnippetUsage usage = {};
};

struct Library {
    QList<Snippet> snippets;
    QList<Category> categories;
    QHash<QUuid, SnippetUsage> usage;
};

Library libraryOf(const QList<Row>& rows) {
    Library library;
    QHash<QString, QUuid> categoryIds;
    for (const Row& row : rows) {
        if (!categoryIds.contains(row.category)) {
            library.categories.append(Category::create(row.category));
            categoryIds.insert(row.category, library.categories.last().id);
        }
        library.snippets.append(Snippet::create(row.command, row.content, categoryIds[row.category]));
        library.usage.insert(library.snippets.last().id, row.usage);
    }
    return library;
}

QStringList commandsOf(const Library& library, const QList<qsizetype>& rows) {
    QStringList commands;
    for (const qsizetype row : rows)
        commands.append(library.snippets[row].command);
    return commands;
}
} // namespace

Q_DECLARE_METATYPE(QList<Row>)

class SnippetSearchTest : public QObject {
    Q_OBJECT
private slots:
    void ranks_data() {
        QTest::addColumn<QList<Row>>("rows");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("letters in order, not side by side")
            << QList<Row>{{";addr", "12 Main Street"}, {";dar", "x"}} << "adr"
            << QStringList{";addr"};
        QTest::newRow("word starts before letters inside a word")
            << QList<Row>{{";1", "maple"}, {";2", "all purpose"}} << "ap"
            << QStringList{";2", ";1"};
        QTest::newRow("the command's start, then the command, then the content")
            << QList<Row>{{";c", "design"}, {";xsig", ""}, {";sign", ""}} << "sig"
            << QStringList{";sign", ";xsig", ";c"};
        QTest::newRow("ties: used more often first")
            << QList<Row>{{";ab1", "", "General", {1, 5000}}, {";ab2", "", "General", {3, 1000}}}
            << "ab" << QStringList{";ab2", ";ab1"};
        QTest::newRow("ties: same count, used more recently first")
            << QList<Row>{{";ab1", "", "General", {2, 1000}}, {";ab3", "", "General", {2, 2000}},
                          {";ab4", ""}}
            << "ab" << QStringList{";ab3", ";ab1", ";ab4"};
        QTest::newRow("a command typed exactly comes first")
            << QList<Row>{{";addr2", ";addr ;addr", "General", {50, 9000}}, {";addr", ""}}
            << ";addr" << QStringList{";addr", ";addr2"};
        QTest::newRow("the category's name")
            << QList<Row>{{";a", "x", "Work"}, {";b", "x", "Home"}} << "wrk"
            << QStringList{";a"};
        QTest::newRow("words may match different fields")
            << QList<Row>{{";sig", "Regards", "Work"}, {";sig2", "Cheers", "Home"}} << "sig work"
            << QStringList{";sig"};
        QTest::newRow("accents and letter case set aside")
            << QList<Row>{{";1", "Café crème"}, {";2", "CAFE CREME"}, {";3", "Tea"}}
            << u"café Crème"_qs << QStringList{";1", ";2"};
        QTest::newRow("Cyrillic, upper case query")
            << QList<Row>{{u";привет"_qs, u"Здравствуйте"_qs}, {";hi", "Hello"}} << u"ЗДР"_qs
            << QStringList{u";привет"_qs};
        QTest::newRow("Cyrillic command typed exactly")
            << QList<Row>{{u";приветствие"_qs, ""}, {u";привет"_qs, u"привет"_qs}}
            << u";привет"_qs << QStringList{u";привет"_qs, u";приветствие"_qs};
        QTest::newRow("Greek without its accents")
            << QList<Row>{{";gm", u"Καλημέρα σας"_qs}} << u"καλημερα"_qs
            << QStringList{";gm"};
        QTest::newRow("Japanese inside a line")
            << QList<Row>{{";t", u"東京都庁"_qs}, {";o", u"大阪"_qs}} << u"京都"_qs
            << QStringList{";t"};
        QTest::newRow("a blank query lists everything, most used first")
            << QList<Row>{{";a", "", "General", {1, 1}}, {";b", "", "General", {4, 1}}, {";c", ""}}
            << "  " << QStringList{";b", ";a", ";c"};
        QTest::newRow("no match") << QList<Row>{{";a", "alpha"}} << "zz" << QStringList{};
        QTest::newRow("empty library") << QList<Row>{} << "a" << QStringList{};
    }
    void ranks() {
        QFETCH(QList<Row>, rows);
        QFETCH(QString, query);
        QFETCH(QStringList, expected);
        const Library library = libraryOf(rows);
        SnippetSearch search;
        search.rebuild(library.snippets, library.categories);
        search.setUsage(library.usage);
        const SnippetSearch::Result result = search.rank(query);
        QCOMPARE(commandsOf(library, result.rows), expected);
        QCOMPARE(result.matches, expected.size());
    }

    // Typing letter by letter (narrowing), deleting and retyping give what a fresh search gives;
    // `limit` cuts the list but not the count.
    void narrowingAgreesWithAFreshSearch() {
        QList<Row> rows;
        for (int i = 0; i < 300; ++i)
            rows.append({QStringLiteral(";s%1").arg(i), QStringLiteral("signature %1 kind regards").arg(i * 7)});
        const Library library = libraryOf(rows);
        SnippetSearch typed;
        typed.rebuild(library.snippets, library.categories);
        for (const QString query : {"s", "si", "sig", "sig 1", "sig 14", "sig 1", "s", "k r 2"}) {
            SnippetSearch fresh;
            fresh.rebuild(library.snippets, library.categories);
            const auto expected = fresh.rank(query, 20);
            const auto got = typed.rank(query, 20);
            QCOMPARE(got.rows, expected.rows);
            QCOMPARE(got.matches, expected.matches);
            QVERIFY(got.rows.size() <= 20);
        }
    }
};

QTEST_APPLESS_MAIN(SnippetSearchTest)
#include "SnippetSearchTest.moc"
