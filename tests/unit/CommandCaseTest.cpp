// A snippet that matches the command's case: the rule that reads the typed command's case, the
// content in that case, and the engine that finds ";Sig" and ";SIG" for ";sig".
#include "CommandCase.h"
#include "EngineRigs.h"

#include <QtTest>

using Style = CommandCase::Style;
using Expansions = QList<Expansion>;
Q_DECLARE_METATYPE(CommandCase::Style)

namespace {
Snippet matchingCase(const QString& command, const QString& content) {
    Snippet snippet = Snippet::create(command, content, Category::defaultCategoryId);
    snippet.matchCase = true;
    return snippet;
}
} // namespace

class CommandCaseTest : public QObject {
    Q_OBJECT
private slots:
    void styleOfTheTypedCommand_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<Style>("style");
        const auto row = [](const char* tag, const QString& typed, Style style) {
            QTest::newRow(tag) << typed << style;
        };
        row("as stored", ";sig", Style::asStored);
        row("first letter past punctuation", ";Sig", Style::capitalised);
        row("all capitals", ";SIG", Style::capitals);
        row("capitals then a small letter", ";SIg", Style::capitalised);
        row("small first letter, capitals after", ";sIG", Style::asStored);
        row("accented capital", u";\u00c9t\u00e9"_qs, Style::capitalised);
        row("accented capitals", u";\u00c9T\u00c9"_qs, Style::capitals);
        row("accent typed apart", u";E\u0301TE"_qs, Style::capitals);
        row("Greek", u";\u039a\u03b1\u03bb"_qs, Style::capitalised);
        row("Greek capitals", u";\u039a\u0391\u039b"_qs, Style::capitals);
        row("Cyrillic", u";\u041f\u0440\u0438"_qs, Style::capitalised);
        row("Cyrillic capitals", u";\u041f\u0420\u0418"_qs, Style::capitals);
        row("digits before the first letter", ";2Go", Style::capitalised);
        row("digits and capitals", ";2GO", Style::capitals);
        row("digits only", ";123", Style::asStored);
        row("one capital letter", ";A", Style::capitalised);
        row("one capital and a digit", ";A1", Style::capitalised);
        row("one small letter", "a", Style::asStored);
        row("two capitals, nothing else", "OK", Style::capitals);
        row("letters without case", u";\u4e2d\u6587"_qs, Style::asStored);
        row("title-case digraph", u"\u01c5x"_qs, Style::capitalised);
        row("nothing", "", Style::asStored);
    }
    void styleOfTheTypedCommand() {
        QFETCH(QString, typed);
        QFETCH(Style, style);
        QCOMPARE(CommandCase::of(typed), style);
    }

    void contentInThatStyle_data() {
        QTest::addColumn<Style>("style");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("expected");
        QTest::newRow("capitalised") << Style::capitalised << "best regards" << "Best regards";
        QTest::newRow("capitals") << Style::capitals << "best regards" << "BEST REGARDS";
        QTest::newRow("as stored") << Style::asStored << "best Regards" << "best Regards";
        QTest::newRow("accent") << Style::capitalised << u"\u00e9lan"_qs << u"\u00c9lan"_qs;
        QTest::newRow("sharp s in capitals") << Style::capitals << u"stra\u00dfe"_qs << "STRASSE";
        QTest::newRow("Greek final sigma") << Style::capitals << u"\u03c3\u03b1\u03c2"_qs
                                           << u"\u03a3\u0391\u03a3"_qs;
        QTest::newRow("Cyrillic") << Style::capitalised << u"\u043f\u0440\u0438"_qs
                                  << u"\u041f\u0440\u0438"_qs;
        QTest::newRow("first letter after digits and punctuation")
            << Style::capitalised << u"12 \u2014 hi"_qs << u"12 \u2014 Hi"_qs;
        QTest::newRow("digraph in title case") << Style::capitalised << u"\u01c6ungla"_qs
                                               << u"\u01c5ungla"_qs;
        QTest::newRow("outside the BMP") << Style::capitalised << u"\U00010428x"_qs
                                         << u"\U00010400x"_qs;
        QTest::newRow("no letter") << Style::capitalised << "42!" << "42!";
    }
    void contentInThatStyle() {
        QFETCH(Style, style);
        QFETCH(QString, content);
        QFETCH(QString, expected);
        QCOMPARE(CommandCase::applied(style, content), expected);
    }

    // Text before and after the caret's place: the first letter of both together.
    void firstLetterAcrossTheCaret() {
        QString before = QStringLiteral("12 "), after = QStringLiteral("abc def");
        CommandCase::apply(Style::capitalised, before, after);
        QCOMPARE(before + u'|' + after, QStringLiteral("12 |Abc def"));
        before = QStringLiteral("x"), after = QStringLiteral("y");
        CommandCase::apply(Style::capitalised, before, after);
        QCOMPARE(before + u'|' + after, QStringLiteral("X|y"));
    }

    // Typed by hand: what goes out. The erase is the command as typed, and so is what BackSpace
    // puts back.
    void theEngineFollowsTheTypedCase_data() {
        QTest::addColumn<QList<Snippet>>("snippets");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<Expansions>("expected");
        const auto replaced = [](int erased, const QString& text) {
            return Expansion{TextExpander::replacement(erased, text)};
        };
        const QList<Snippet> sig{matchingCase(";sig", "best regards")};
        QTest::newRow("as stored") << sig << ";sig" << Expansions{replaced(4, "best regards")};
        QTest::newRow("capitalised") << sig << ";Sig" << Expansions{replaced(4, "Best regards")};
        QTest::newRow("capitals") << sig << ";SIG" << Expansions{replaced(4, "BEST REGARDS")};
        QTest::newRow("small first letter") << sig << ";sIG" << Expansions{replaced(4, "best regards")};
        QTest::newRow("BackSpace puts back what was typed")
            << sig << ";SIG\b"
            << Expansions{replaced(4, "BEST REGARDS"), replaced(11, ";SIG")};
        QTest::newRow("without the option, case counts")
            << QList<Snippet>{Snippet::create(";sig", "best regards", Category::defaultCategoryId)}
            << ";Sig;SIG" << Expansions{};
        QTest::newRow("accents") << QList<Snippet>{matchingCase(u";\u00e9t\u00e9"_qs, u"\u00e9t\u00e9 indien"_qs)}
                                 << u";\u00c9T\u00c9"_qs
                                 << Expansions{replaced(4, u"\u00c9T\u00c9 INDIEN"_qs)};
        QTest::newRow("Greek") << QList<Snippet>{matchingCase(u";\u03b3\u03b5\u03b9\u03b1"_qs, u"\u03b3\u03b5\u03b9\u03b1 \u03c3\u03b1\u03c2"_qs)}
                               << u";\u0393\u03b5\u03b9\u03b1"_qs
                               << Expansions{replaced(5, u"\u0393\u03b5\u03b9\u03b1 \u03c3\u03b1\u03c2"_qs)};
        QTest::newRow("one letter") << QList<Snippet>{matchingCase("q", "question")} << "Q"
                                    << Expansions{replaced(1, "Question")};
        // The placeholder is filled first: the first letter the user sees is capitalised, and
        // the caret still goes back to where {{cursor}} was.
        QTest::newRow("placeholder first")
            << QList<Snippet>{matchingCase(";dear", "{{cursor}}dear friend,")} << ";Dear"
            << Expansions{{ExpansionAction::erase(5), ExpansionAction::type("Dear friend,"),
                           ExpansionAction::moveLeft(12)}};
        // The exact command of another snippet comes first in the list: it wins the tie.
        QTest::newRow("an exact command earlier in the list")
            << QList<Snippet>{Snippet::create(";Sig", "exact", Category::defaultCategoryId),
                              matchingCase(";sig", "folded")}
            << ";Sig;sig" << Expansions{replaced(4, "exact"), replaced(4, "folded")};
    }
    void theEngineFollowsTheTypedCase() {
        QFETCH(QList<Snippet>, snippets);
        QFETCH(QString, keys);
        QFETCH(Expansions, expected);
        TypingRig rig;
        rig.store.setSnippets(snippets);
        rig.type(keys);
        QCOMPARE(rig.output.performed, expected);
    }

    // A command that differs only in case from one that matches the command's case is refused
    // (both would expand for the same keys); without the option on either, both may be.
    void theStoreRefusesCommandsThatDifferOnlyInCase() {
        TestLibrary library;
        SnippetStore& store = library.store;
        const Snippet sig = matchingCase(";sig", "best regards");
        QCOMPARE(said(store.addSnippet(sig)), QStringLiteral("accepted"));
        QCOMPARE(said(store.addSnippet(Snippet::create(";SIG", "x", Category::defaultCategoryId))), said(DataError::commandDiffersInCase(";sig")));
        const Snippet plain = Snippet::create(";Addr", "1 Main St", Category::defaultCategoryId);
        QCOMPARE(said(store.addSnippet(plain)), QStringLiteral("accepted"));
        QCOMPARE(said(store.addSnippet(Snippet::create(";addr", "2", Category::defaultCategoryId))), QStringLiteral("accepted"));
        Snippet folded = matchingCase(";ADDR", "3");
        QCOMPARE(said(store.addSnippet(folded)), said(DataError::commandDiffersInCase(";Addr")));
        // Switching the option on for an existing snippet is the same clash.
        QCOMPARE(said(store.updateSnippet(plain, plain.command, plain.content, std::nullopt,
                                     std::nullopt, true)), said(DataError::commandDiffersInCase(";addr")));
        QVERIFY(!store.snippet(plain.id)->matchCase);
        // The form hears of it while the command is typed.
        const auto clash = store.commandClash(";Sig", QUuid(), Snippet::Trigger::Immediately, {});
        QCOMPARE(clash.kind, SnippetStore::CommandClash::Kind::differsInCase);
        QCOMPARE(clash.longerCommand, ";sig");
        // The option is kept on disk, under a key of its own; old records read as off.
        const auto reloaded = SnippetStore(library.settings.path()).snippet(sig.id);
        QVERIFY(reloaded && reloaded->matchCase);
        QVERIFY(!SnippetStore(library.settings.path()).snippet(plain.id)->matchCase);
    }
};

QTEST_GUILESS_MAIN(CommandCaseTest)
#include "CommandCaseTest.moc"
