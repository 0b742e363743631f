// Categories limited to applications: which limits overlap, what the store allows and keeps,
// and which snippet the engine expands in the focused application.
#include "CapturedDiagnostics.h"
#include "FakeFocusedApplication.h"
#include "RecordingKeyboardOutput.h"
#include "TestLibrary.h"
#include "TextExpander.h"

#include <QtTest>

using Kind = Category::Limit::Kind;
using Limit = Category::Limit;
Q_DECLARE_METATYPE(Category::Limit)

namespace {
Limit only(const QStringList& names) { return {Kind::onlyIn, names}; }
Limit except(const QStringList& names) { return {Kind::exceptIn, names}; }

// A store with a category per limit, in the order given.
struct Library : TestLibrary {
    QUuid category(const QString& name, const Limit& limit) {
        if (store.addCategory(name, limit))
            return {};
        for (const Category& c : store.categories())
            if (c.name == name)
                return c.id;
        return {};
    }
    using TestLibrary::add;
    std::optional<DataError> add(const QString& command, const QUuid& category,
                                 bool matchCase = false, const QString& content = "x") {
        Snippet snippet = Snippet::create(command, content, category);
        snippet.matchCase = matchCase;
        return store.addSnippet(snippet);
    }
};
} // namespace

class ApplicationLimitTest : public QObject {
    Q_OBJECT
private slots:
    void whichLimitsOverlap_data() {
        QTest::addColumn<Limit>("a");
        QTest::addColumn<Limit>("b");
        QTest::addColumn<bool>("overlap");
        QTest::newRow("everywhere") << Limit{} << only({"XTerm"}) << true;
        QTest::newRow("a limit without applications is none") << only({}) << only({"XTerm"}) << true;
        QTest::newRow("only in different ones") << only({"XTerm"}) << only({"Gedit", "kitty"}) << false;
        QTest::newRow("only in one of the same") << only({"XTerm", "Gedit"}) << only({"gedit"}) << true;
        QTest::newRow("only in what the other leaves out") << only({"XTerm"}) << except({"xterm", "Gedit"}) << false;
        QTest::newRow("only in more than the other leaves out") << except({"XTerm"}) << only({"XTerm", "kitty"}) << true;
        QTest::newRow("both leave some out") << except({"XTerm"}) << except({"Gedit"}) << true;
    }
    void whichLimitsOverlap() {
        QFETCH(Limit, a);
        QFETCH(Limit, b);
        QFETCH(bool, overlap);
        QCOMPARE(a.overlaps(b), overlap);
        QCOMPARE(b.overlaps(a), overlap);
    }

    // One command in two categories whose applications do not overlap; refused wherever both
    // would expand.
    void theStoreAllowsACommandTwiceOnlyApart() {
        Library library;
        const QUuid term = library.category("Terminal", only({"XTerm"}));
        const QUuid mail = library.category("Mail", only({"Thunderbird"}));
        const QUuid notTerm = library.category("Not the terminal", except({"xterm"}));
        QCOMPARE(said(library.add(";a", term)), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";a", mail)), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";a", notTerm)), said(DataError::duplicateCommand()));
        QCOMPARE(said(library.add(";a", Category::defaultCategoryId)), said(DataError::duplicateCommand()));
        QCOMPARE(said(library.add(";A", notTerm, true)), said(DataError::commandDiffersInCase(";a")));
        // Apart, a case variant is no clash either.
        QCOMPARE(said(library.add(";B", term, true)), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";b", notTerm)), QStringLiteral("accepted"));
        QCOMPARE(library.store.commandClash(";a", QUuid(), Snippet::Trigger::Immediately, {},
                                            false, term)
                     .kind,
                 SnippetStore::CommandClash::Kind::none);

        // A change of limit, or a move, that lets both expand in one application is refused and
        // changes nothing.
        const Category mailCategory = *library.store.category(mail);
        QCOMPARE(said(library.store.updateCategory(mailCategory, "Mail", only({"Thunderbird", "xterm"}))), said(DataError::sameCommandInOverlap(";a")));
        QCOMPARE(library.store.category(mail)->limit, only({"Thunderbird"}));
        QCOMPARE(said(library.store.updateCategory(mailCategory, "Mail", only({"Evolution"}))), QStringLiteral("accepted"));
        const QUuid mailA = library.store.snippets().at(1).id;
        QCOMPARE(said(library.store.moveSnippets({mailA}, notTerm)), QStringLiteral("accepted"));
        QCOMPARE(said(library.store.moveSnippets({mailA}, Category::defaultCategoryId)), said(DataError::sameCommandInOverlap(";a")));
        QCOMPARE(library.store.snippet(mailA)->categoryId, notTerm);

        // Limits are kept on disk; a category stored without them reads as everywhere.
        SnippetStore reloaded(library.settings.path());
        QCOMPARE(reloaded.category(term)->limit, only({"XTerm"}));
        QCOMPARE(reloaded.category(notTerm)->limit, except({"xterm"}));
        QVERIFY(!reloaded.category(Category::defaultCategoryId)->limit.limits());
    }

    // The focused application decides; where it is unknown (Wayland), limited categories
    // expand nowhere, and a line says why.
    void theEngineExpandsWhereTheCategoryIsLimitedTo() {
        Library library;
        const QUuid term = library.category("Terminal", only({"XTerm"}));
        const QUuid edit = library.category("Editor", only({"Gedit"}));
        const QUuid notTerm = library.category("Elsewhere", except({"XTerm"}));
        QCOMPARE(said(library.add(";a", term, false, "in the terminal")), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";a", edit, false, "in the editor")), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";b", notTerm, false, "not in the terminal")), QStringLiteral("accepted"));
        QCOMPARE(said(library.add(";c", Category::defaultCategoryId, false, "anywhere")), QStringLiteral("accepted"));

        FakeFocusedApplication focus;
        RecordingKeyboardOutput output;
        CapturedDiagnostics diagnostics;
        // No key monitor: keys come in by hand, the focus is asked as in a listening engine.
        TextExpander engine(library.store, EnginePlatform{nullptr, nullptr, nullptr, &output, &focus});
        const auto typed = [&](const QString& application, const QString& keys) {
            focus.application = application;
            output.performed.clear();
            engine.handleKeyPress(QStringLiteral(" "));
            for (const QChar c : keys) {
                engine.handleKeyPress(QString(c));
                QCoreApplication::processEvents();
            }
            QStringList contents;
            for (const Expansion& expansion : std::as_const(output.performed))
                contents.append(expansion.last().text);
            return contents;
        };
        QCOMPARE(typed("XTerm", ";a ;b ;c"), QStringList({"in the terminal", "anywhere"}));
        QCOMPARE(typed("gedit", ";a ;b ;c"),
                 QStringList({"in the editor", "not in the terminal", "anywhere"}));
        QCOMPARE(typed("kitty", ";a ;b"), QStringList({"not in the terminal"}));
        QCOMPARE(typed("", ";a ;b ;c"), QStringList({"anywhere"}));
        QVERIFY(diagnostics.lines.contains("The focused application is unknown: snippets of "
                                           "categories limited to applications do not expand"));
    }
};

QTEST_GUILESS_MAIN(ApplicationLimitTest)
#include "ApplicationLimitTest.moc"
