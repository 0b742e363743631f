// A search typed into key by key only rescores the words of the query that changed: whatever
// the typing, each query ranks as a fresh search of it ranks.
#include "SnippetSearch.h"

#include <QtTest>

class SnippetSearchTypingTest : public QObject {
    Q_OBJECT
private slots:
    void typedAgreesWithFresh_data() {
        QTest::addColumn<QStringList>("typing");
        QTest::newRow("a space after a word")
            << QStringList{"k", "ki", "kind", "kind ", "kind  ", "kind r", "kind re"};
        QTest::newRow("a word grown, then another")
            << QStringList{"r", "re", "reg", "reg k", "reg ki", "reg kind", "reg kind 7"};
        QTest::newRow("a word split in two")
            << QStringList{"ki", "kin", "kind", "kind r", "kind", "kin", "ki nd", "ki nd re"};
        QTest::newRow("back to one word, then a command typed exactly")
            << QStringList{"s", "s1", "s1 k", "s1", ";", ";s", ";s1", ";s14", ";s14 "};
        QTest::newRow("accents and other scripts")
            << QStringList{"c", "ca", "caf", "café", "café r", "café re", "пр", "при k"};
        QTest::newRow("blank, then words") << QStringList{" ", "  ", "  k", "  ki r"};
    }
    void typedAgreesWithFresh() {
        QFETCH(QStringList, typing);
        const QStringList words = {"kind", "regards", "café", "Привет", "signature", "reply"};
        QList<Category> categories{Category::create(QStringLiteral("Kindness")),
                                   Category::create(QStringLiteral("Replies"))};
        QList<Snippet> snippets;
        QHash<QUuid, SnippetUsage> usage;
        for (int i = 0; i < 400; ++i) {
            QStringList content;
            for (int w = 0; w < 3 + i % 5; ++w)
                content.append(words[(i * 7 + w * 3) % words.size()]);
            content.append(QString::number(i));
            snippets.append(Snippet::create(QStringLiteral(";s%1").arg(i), content.join(u' '),
                                            categories[i % 2].id));
            usage.insert(snippets.last().id, {i % 3, 1000 + i % 11});
        }
        SnippetSearch typed;
        typed.rebuild(snippets, categories);
        typed.setUsage(usage);
        SnippetSearch fresh;
        fresh.setUsage(usage);
        for (const QString& query : typing) {
            fresh.setIndex(typed.index()); // forgets the queries before
            const SnippetSearch::Result expected = fresh.rank(query, 30);
            const SnippetSearch::Result got = typed.rank(query, 30);
            QVERIFY2(got.rows == expected.rows, qPrintable(query));
            QCOMPARE(got.matches, expected.matches);
        }
        // The typing found something, or the table tests nothing.
        QVERIFY(typed.rank(typing.last(), 30).matches > 0);
    }
};

QTEST_APPLESS_MAIN(SnippetSearchTypingTest)
#include "SnippetSearchTypingTest.moc"
