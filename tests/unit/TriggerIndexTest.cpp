#include "TriggerIndex.h"
#include "GraphemeText.h"
#include "KeystrokeBuffer.h"
#include "ReferenceMatcher.h"
#include "Snippet.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {
// Precomposed and decomposed spellings, lone and stacked marks, emoji with skin tones, joiners,
// flags, Hangul syllables and their jamo, and plain ASCII so that matches actually happen.
// clang-format off
const QStringList kAtoms = {
    "a", "b", ";", " ", "\t", "e", u"\u00e9"_qs, u"e\u0301"_qs, u"\u0301"_qs, u"\u0323"_qs,
    u"\U0001F44D"_qs, u"\U0001F44D\U0001F3FD"_qs, u"\U0001F3FD"_qs, u"\u200d"_qs,
    u"\U0001F1EB"_qs, u"\U0001F1F7"_qs, u"\ud55c"_qs, u"\u1112\u1161\u11ab"_qs, u"\u1112"_qs,
    u"\u00c5"_qs, u"\u212b"_qs, u"A\u030a"_qs};
// clang-format on

QString randomText(QRandomGenerator& random, int maxAtoms) {
    QString text;
    for (int i = random.bounded(maxAtoms + 1); i > 0; --i)
        text += kAtoms.at(random.bounded(kAtoms.size()));
    return text;
}

// Appends text the way keys arrive: one code point at a time.
void typeInto(KeystrokeBuffer& buffer, const QString& text) {
    for (const char32_t codePoint : text.toUcs4())
        buffer.append(QString::fromUcs4(&codePoint, 1));
}

QList<Snippet> snippetsFor(const QStringList& commands) {
    QList<Snippet> snippets;
    for (const QString& command : commands)
        snippets.append(Snippet::create(command, command + " content", QUuid()));
    return snippets;
}

std::optional<qsizetype> indexMatch(const QList<Snippet>& snippets, const QString& typed) {
    TriggerIndex index;
    index.rebuild(snippets);
    KeystrokeBuffer buffer;
    typeInto(buffer, typed);
    return index.match(buffer);
}
} // namespace

class TriggerIndexTest : public QObject {
    Q_OBJECT
private slots:
    void picksTheLongestThenTheEarliest() {
        const auto snippets = snippetsFor({"2", "sig2", ";sig2", ";sig2", "x;sig2"});
        QCOMPARE(indexMatch(snippets, "a;sig2"), 2);
        QCOMPARE(indexMatch(snippets, "sig2"), 1);
        QCOMPARE(indexMatch(snippets, "x;sig2"), 4);
        QCOMPARE(indexMatch(snippets, ";sig"), std::nullopt);
        QCOMPARE(indexMatch({}, "anything"), std::nullopt);
        // Both spell "café": the first in the list wins, whichever spelling was typed.
        const auto cafes = snippetsFor({u"caf\u00e9"_qs, u"cafe\u0301"_qs});
        QCOMPARE(indexMatch(cafes, u"cafe\u0301"_qs), 0);
        QCOMPARE(indexMatch(cafes, u"caf\u00e9"_qs), 0);
        // A lone mark is not the end of a character that it belongs to.
        QCOMPARE(indexMatch(snippetsFor({u"\u0301"_qs}), u"e\u0301"_qs), std::nullopt);
    }

    void agreesWithTheSortAndScanRule() {
        QRandomGenerator random(20261123);
        int matches = 0;
        for (int round = 0; round < 3000; ++round) {
            QStringList commands;
            for (int i = 1 + random.bounded(25); i > 0; --i) {
                // Some duplicates and some blank commands, to exercise the tie rules.
                if (!commands.isEmpty() && random.bounded(8) == 0)
                    commands.append(commands.at(random.bounded(commands.size())));
                else
                    commands.append(randomText(random, 4));
            }
            const QList<Snippet> snippets = snippetsFor(commands);
            QString typed = randomText(random, 8);
            if (random.bounded(2))
                typed += commands.at(random.bounded(commands.size()));
            const auto expected = ReferenceMatcher::match(snippets, typed);
            QVERIFY2(indexMatch(snippets, typed) == expected,
                     qPrintable("typed [" + typed + "] commands [" + commands.join("] [") + "]"));
            matches += expected.has_value();
        }
        QVERIFY(matches > 1000); // the comparison really covered matching cases
    }

    void bufferKeepsTheSameCharactersAsAFullSegmentation() {
        QRandomGenerator random(7);
        for (int round = 0; round < 2000; ++round) {
            KeystrokeBuffer buffer;
            typeInto(buffer, randomText(random, 10));
            for (int i = random.bounded(3); i > 0; --i)
                buffer.removeLast();
            typeInto(buffer, randomText(random, 3));
            const QStringList clusters = GraphemeText::clusters(buffer.text());
            QCOMPARE(buffer.characterCount(), clusters.size());
            for (qsizetype i = 0; i < clusters.size(); ++i)
                QCOMPARE(buffer.canonicalCharacter(i), GraphemeText::canonical(clusters.at(i)));
        }
    }
};

QTEST_GUILESS_MAIN(TriggerIndexTest)
#include "TriggerIndexTest.moc"
