// The rule that decides between the versions of one snippet from several computers: newest
// stamp wins, ties by computer id, deletions as changes, collisions reported once, and clocks
// that disagree by minutes.
#include "SyncMerge.h"

#include <QtTest>

namespace {
const QUuid snippetId = QUuid::fromString(QStringLiteral("{00000000-0000-0000-0000-00000000000a}"));
const QUuid categoryId = QUuid::fromString(QStringLiteral("{00000000-0000-0000-0000-0000000000c0}"));

// A version written as "content@time/computer", "content@time/computer<basedOn" or
// "-@time/computer" for a deletion mark.
SyncMerge::Record version(const QString& text) {
    SyncMerge::Record record;
    const QString content = text.section(u'@', 0, 0);
    QString stamp = text.section(u'@', 1);
    if (stamp.contains(u'<')) {
        record.basedOn = stamp.section(u'<', 1).toDouble();
        stamp = stamp.section(u'<', 0, 0);
    }
    record.stamp = {stamp.section(u'/', 0, 0).toDouble(), stamp.section(u'/', 1)};
    record.deleted = content == u'-';
    record.snippet = Snippet(snippetId, QStringLiteral(";x"), record.deleted ? QString() : content,
                             1, categoryId);
    return record;
}

QString shown(const SyncMerge::Record& record) {
    return record.deleted ? QStringLiteral("-") : record.snippet.content;
}

QList<Snippet> oneSnippet(const QString& content) {
    return {Snippet(snippetId, QStringLiteral(";x"), content, 1, categoryId)};
}
} // namespace

class SyncMergeTest : public QObject {
    Q_OBJECT
private slots:
    void rule_data();
    void rule();
    void clocksThatDisagree_data();
    void clocksThatDisagree();
    void anyOrderGivesOneLibrary();
    void sameCommandNewestFirst();
    void deletionMarksLast90Days();
};

void SyncMergeTest::rule_data() {
    QTest::addColumn<QString>("us");
    QTest::addColumn<QString>("ours"); // empty: this computer has never seen the id
    QTest::addColumn<QString>("theirs");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("lost"); // the version kept in the history, or empty

    QTest::newRow("new id is taken") << "A" << "" << "b@5/B" << "b" << "";
    QTest::newRow("same version") << "A" << "a@10/A" << "a@10/A" << "a" << "";
    QTest::newRow("newer edit made on ours") << "A" << "a@10/A" << "b@20/B<10" << "b" << "";
    QTest::newRow("newer edit made without ours") << "A" << "a@10/A" << "b@20/B" << "b" << "a";
    QTest::newRow("older edit made without ours") << "A" << "a@20/A" << "b@10/B" << "a" << "b";
    QTest::newRow("older edit ours was made on") << "A" << "a@20/A<10" << "b@10/B" << "a" << "";
    QTest::newRow("tie: greater computer id wins") << "A" << "a@10/A" << "b@10/B" << "b" << "a";
    QTest::newRow("tie: ours has the greater id") << "B" << "b@10/B" << "a@10/A" << "b" << "a";
    QTest::newRow("delete beats older edit") << "A" << "a@10/A" << "-@20/B" << "-" << "a";
    QTest::newRow("delete after seeing the edit") << "A" << "a@10/A" << "-@20/B<10" << "-" << "";
    QTest::newRow("delete loses to newer edit") << "A" << "a@20/A" << "-@10/B" << "a" << "";
    QTest::newRow("our delete loses to newer edit") << "A" << "-@10/A" << "b@20/B" << "b" << "";
    QTest::newRow("our delete beats older edit") << "A" << "-@20/A" << "b@10/B" << "-" << "b";
    QTest::newRow("two others: no collision here") << "C" << "a@10/A" << "b@20/B" << "b" << "";
    QTest::newRow("an old version of another computer") << "C" << "a@20/A" << "b@10/B" << "a" << "";
}

void SyncMergeTest::rule() {
    QFETCH(QString, us);
    QFETCH(QString, ours);
    QFETCH(QString, theirs);
    QFETCH(QString, result);
    QFETCH(QString, lost);

    SyncMerge::Library library, other;
    if (!ours.isEmpty())
        library.snippets.insert(snippetId, version(ours));
    other.snippets.insert(snippetId, version(theirs));
    QSet<QString> handled;
    const SyncMerge::Outcome outcome = SyncMerge::merge(library, other, us, handled);
    QCOMPARE(shown(library.snippets.value(snippetId)), result);
    QCOMPARE(outcome.lostSnippets.isEmpty() ? QString() : shown(outcome.lostSnippets.first()), lost);
    QCOMPARE(outcome.changedAnything(), ours.isEmpty() || shown(version(ours)) != result);
    // Read again (the same file seen twice), nothing changes and nothing is reported again.
    const SyncMerge::Outcome again = SyncMerge::merge(library, other, us, handled);
    QVERIFY(!again.changedAnything());
    QVERIFY(!again.hasLosses());
}

void SyncMergeTest::clocksThatDisagree_data() {
    QTest::addColumn<double>("clockA");   // what A's clock says when the real time is 1000
    QTest::addColumn<bool>("bSawA");      // B edited after taking in A's edit
    QTest::addColumn<QString>("result");  // on both computers
    QTest::addColumn<QString>("lostOnA"); // A's loss, kept in A's history
    QTest::addColumn<QString>("lostOnB");

    // A edits at real time 1000, B at real time 1060, one minute later.
    QTest::newRow("A 5 min ahead, B saw it") << 1300.0 << true << "b" << "" << "";
    QTest::newRow("A 5 min behind, B saw it") << 700.0 << true << "b" << "" << "";
    QTest::newRow("A 5 min ahead, B did not see it") << 1300.0 << false << "a" << "b" << "b";
    QTest::newRow("A 5 min behind, B did not see it") << 700.0 << false << "b" << "a" << "a";
}

void SyncMergeTest::clocksThatDisagree() {
    QFETCH(double, clockA);
    QFETCH(bool, bSawA);
    QFETCH(QString, result);
    QFETCH(QString, lostOnA);
    QFETCH(QString, lostOnB);

    // Both start from the same version, made long before on B.
    SyncMerge::Library a, b;
    SyncMerge::stampLocalChanges(b, {}, oneSnippet(QStringLiteral("0")), QStringLiteral("B"), 100);
    QSet<QString> handledA, handledB;
    SyncMerge::merge(a, b, QStringLiteral("A"), handledA);

    SyncMerge::stampLocalChanges(a, {}, oneSnippet(QStringLiteral("a")), QStringLiteral("A"), clockA);
    if (bSawA)
        SyncMerge::merge(b, a, QStringLiteral("B"), handledB);
    SyncMerge::stampLocalChanges(b, {}, oneSnippet(QStringLiteral("b")), QStringLiteral("B"), 1060);

    // Each takes in the other's file as it was written.
    const SyncMerge::Library fileOfA = a, fileOfB = b;
    const auto onA = SyncMerge::merge(a, fileOfB, QStringLiteral("A"), handledA);
    const auto onB = SyncMerge::merge(b, fileOfA, QStringLiteral("B"), handledB);
    QCOMPARE(shown(a.snippets.value(snippetId)), result);
    QCOMPARE(shown(b.snippets.value(snippetId)), result);
    QCOMPARE(onA.lostSnippets.isEmpty() ? QString() : shown(onA.lostSnippets.first()), lostOnA);
    QCOMPARE(onB.lostSnippets.isEmpty() ? QString() : shown(onB.lostSnippets.first()), lostOnB);
}

void SyncMergeTest::anyOrderGivesOneLibrary() {
    // Three computers with one library, then changes of each: edits, deletions, one tie.
    const QStringList computers{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")};
    const double times[] = {100, 100, 90};
    QList<QUuid> ids;
    QList<Snippet> start;
    for (int i = 0; i < 12; ++i) {
        ids.append(QUuid::createUuid());
        start.append(Snippet(ids[i], QStringLiteral(";s%1").arg(i), QStringLiteral("%1").arg(i), 1,
                             categoryId));
    }
    QList<SyncMerge::Library> libraries(3);
    for (int c = 0; c < 3; ++c) {
        SyncMerge::stampLocalChanges(libraries[c], {}, start, QStringLiteral("A"), 50);
        QList<Snippet> snippets;
        for (int i = 0; i < 12; ++i) {
            if ((i + c) % 4 == 0)
                continue; // deleted here
            Snippet snippet = start[i];
            if ((i + c) % 3 == 0)
                snippet.content = QStringLiteral("%1 from %2").arg(i).arg(computers[c]);
            snippets.append(snippet);
        }
        SyncMerge::stampLocalChanges(libraries[c], {}, snippets, computers[c], times[c]);
    }

    const auto merged = [&](int c, QList<int> order) {
        SyncMerge::Library library = libraries[c];
        QSet<QString> handled;
        for (int other : order)
            SyncMerge::merge(library, libraries[other], computers[c], handled);
        QList<Category> categories;
        QList<Snippet> snippets;
        SyncMerge::toLists(library, categories, snippets);
        QStringList shown;
        for (const Snippet& snippet : snippets)
            shown.append(snippet.command + u'=' + snippet.content);
        shown.sort();
        return shown;
    };
    const QStringList expected = merged(0, {1, 2});
    QVERIFY(expected.size() > 0 && expected.size() < 12);
    QCOMPARE(merged(0, {2, 1}), expected);
    QCOMPARE(merged(1, {0, 2}), expected);
    QCOMPARE(merged(1, {2, 0}), expected);
    QCOMPARE(merged(2, {0, 1}), expected);
    QCOMPARE(merged(2, {1, 0}), expected);
}

void SyncMergeTest::sameCommandNewestFirst() {
    // Two computers each added ";sig": both stay, and the newer comes first for the engine.
    const Snippet older(QUuid::createUuid(), QStringLiteral(";sig"), QStringLiteral("old"), 1,
                        categoryId);
    const Snippet newer(QUuid::createUuid(), QStringLiteral(";sig"), QStringLiteral("new"), 2,
                        categoryId);
    SyncMerge::Library a, b;
    SyncMerge::stampLocalChanges(a, {}, {older}, QStringLiteral("A"), 10);
    SyncMerge::stampLocalChanges(b, {}, {newer}, QStringLiteral("B"), 20);
    QSet<QString> handled;
    SyncMerge::merge(a, b, QStringLiteral("A"), handled);
    QList<Category> categories;
    QList<Snippet> snippets{older};
    SyncMerge::toLists(a, categories, snippets);
    QCOMPARE(snippets.size(), 2);
    QCOMPARE(snippets[0].content, QStringLiteral("new"));
    QCOMPARE(snippets[1].content, QStringLiteral("old"));
}

void SyncMergeTest::deletionMarksLast90Days() {
    SyncMerge::Library library;
    SyncMerge::stampLocalChanges(library, {}, oneSnippet(QStringLiteral("a")), QStringLiteral("A"), 0);
    SyncMerge::stampLocalChanges(library, {}, {}, QStringLiteral("A"), 1000);
    QVERIFY(library.snippets.value(snippetId).deleted);
    SyncMerge::forgetOldDeletions(library, 1000 + 89 * 86400.0);
    QVERIFY(library.snippets.contains(snippetId));
    SyncMerge::forgetOldDeletions(library, 1000 + 91 * 86400.0);
    QVERIFY(!library.snippets.contains(snippetId));
}

QTEST_GUILESS_MAIN(SyncMergeTest)
#include "SyncMergeTest.moc"
