// The main window: the filtered snippet list, search, the selection rules, and deleting a
// snippet behind its confirmation.
#include "CategoryRowView.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "SnippetDetailView.h"
#include "SymbolView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScopeGuard>

namespace {
// Work: ;addr ;Sig ;mtg   Personal: ;home   no category: ;lost   (stored interleaved)
struct Library {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    Category personal = fixture.addCategory(QStringLiteral("Personal"));
    Library() {
        for (const auto& [command, content, category] :
             {std::tuple(";addr", "221B Baker Street", work.id),
              {";home", "Upper Road", personal.id},
              {";Sig", "Best regards,\nAda", work.id},
              {";mtg", "Meeting@10", work.id},
              {";lost", "Its category is gone", QUuid::createUuid()}})
            fixture.addSnippet(QString::fromUtf8(command), QString::fromUtf8(content), category);
    }
};
// The snippet column: title, then rows.
const QStringList work{"Work", ";addr", ";Sig", ";mtg"};
const QStringList all{"All Snippets", ";addr", ";home", ";Sig", ";mtg", ";lost"};
} // namespace

class ContentViewTest : public QObject {
    Q_OBJECT

private slots:
    void selectionRules() {
        Library lib;
        ContentView* view = lib.fixture.show();
        QListView* categories = view->categoryList();
        // Shown without a selection, the first category gets selected; no snippet is.
        QCOMPARE(Shown::rows(categories), (QStringList{"*Uncategory", "Work", "Personal"}));
        auto* placeholder = view->findChild<QLabel*>(QStringLiteral("detailPlaceholder"));
        QVERIFY(placeholder->isVisible());
        GuiInput::clickRow(categories, 1);
        QCOMPARE(Shown::snippets(view), work);
        // Ctrl-click on the selected category takes the selection away, and with it Add Snippet.
        GuiInput::clickRow(categories, 1, Qt::ControlModifier);
        QCOMPARE(Shown::rows(categories), (QStringList{"Uncategory", "Work", "Personal"}));
        QCOMPARE(Shown::snippets(view), all);
        QVERIFY(!view->addSnippetButton()->isEnabled());
        GuiInput::click(view->addSnippetButton());
        QVERIFY(!view->showingAddSheet());
        // A snippet picked from another category selects that category.
        GuiInput::clickRow(view->snippetList(), 1);
        QCOMPARE(Shown::rows(categories), (QStringList{"Uncategory", "Work", "*Personal"}));
        QCOMPARE(Shown::snippets(view), (QStringList{"Personal", "*;home"}));
        QCOMPARE(view->detailView()->command(), QStringLiteral(";home"));
        QVERIFY(view->addSnippetButton()->isEnabled());
        // Picking a category leaves the snippet in the detail pane.
        GuiInput::clickRow(categories, 1);
        QCOMPARE(Shown::snippets(view), work);
        QVERIFY(!placeholder->isVisible());
        QCOMPARE(view->detailView()->command(), QStringLiteral(";home"));
        // One whose category record is gone shows in the default category, never in none.
        view->setSelectedCategory({});
        GuiInput::clickRow(view->snippetList(), 4);
        QCOMPARE(view->detailView()->command(), QStringLiteral(";lost"));
        QCOMPARE(Shown::rows(categories), (QStringList{"*Uncategory", "Work", "Personal"}));
        QVERIFY(Shown::snippets(view).contains(QStringLiteral("*;lost")));
        view->setSelectedCategory({});
        // A snippet added meanwhile shows at once, search applied.
        QTest::keyClicks(view->searchField(), QStringLiteral("new"));
        QCOMPARE(Shown::snippets(view), QStringList{"All Snippets"});
        lib.fixture.addSnippet(QStringLiteral(";new"), QStringLiteral("x"), lib.personal.id);
        QCOMPARE(Shown::snippets(view), (QStringList{"All Snippets", ";new"}));
    }

    void search_data() {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("found");
        const auto row = [](const char* name, const QStringList& before, const char* typed,
                            const QStringList& found) {
            QTest::newRow(name) << before << QString::fromUtf8(typed) << before.mid(0, 1) + found;
        };
        row("command", work, "mt", {";mtg"});
        row("letter case ignored", work, "SIG", {";Sig"});
        row("content alone", work, "baker", {";addr"});
        row("content's later line", work, "ada", {";Sig"});
        row("one space", work, " ", {";addr", ";Sig"});
        row("other category", work, "road", {});
        row("no category", all, "ROAD", {";home"});
    }

    void search() {
        QFETCH(QStringList, before);
        QFETCH(QString, typed);
        QFETCH(QStringList, found);
        Library lib;
        ContentView* view = lib.fixture.show();
        view->setSelectedCategory(before == work ? std::optional(lib.work) : std::nullopt);
        QCOMPARE(Shown::snippets(view), before);
        QTest::keyClicks(view->searchField(), typed);
        QCOMPARE(Shown::snippets(view), found);
        GuiInput::retype(view->searchField(), QString());
        QCOMPARE(Shown::snippets(view), before);
    }

    void deleteAsksFirst() {
        Library lib;
        ContentView* view = lib.fixture.show(lib.work);
        const QString title = QStringLiteral("Confirm Delete");
        const QString question = QStringLiteral("Are you sure you want to delete '%1'?");
        GuiInput::clickRow(view->snippetList(), 1); // ;Sig
        // The detail pane's Delete asks about the snippet shown; Cancel keeps it.
        GuiInput::click(view->detailView()->deleteButton());
        QCOMPARE(GuiInput::answerAlert(title, QStringLiteral("Cancel")), question.arg(";Sig"));
        QCOMPARE(commandsOf(lib.fixture.store().snippets()), all.mid(1));
        QVERIFY(!view->showingDetailPlaceholder());
        // The command is quoted as typed: not as markup, double space kept.
        const QString odd = QStringLiteral("<b>it's</b>  & co ");
        lib.fixture.addSnippet(odd, QStringLiteral("x"), lib.work.id);
        GuiInput::clickTrash(view->snippetList(), 3);
        QCOMPARE(GuiInput::answerAlert(title, QStringLiteral("Cancel")), question.arg(odd));
        // Another row's trash asks about that row without selecting it. Delete removes that
        // one, saves, and clears the selection.
        GuiInput::clickTrash(view->snippetList(), 2);
        QCOMPARE(Shown::snippets(view), (QStringList{"Work", ";addr", "*;Sig", ";mtg", odd}));
        QCOMPARE(GuiInput::answerAlert(title, QStringLiteral("Delete")), question.arg(";mtg"));
        const QStringList left{";addr", ";home", ";Sig", ";lost", odd};
        QCOMPARE(commandsOf(lib.fixture.store().snippets()), left);
        QCOMPARE(commandsOf(lib.fixture.reloaded()->snippets()), left);
        QCOMPARE(Shown::snippets(view), (QStringList{"Work", ";addr", ";Sig", odd}));
        QVERIFY(view->showingDetailPlaceholder());
        QVERIFY(!view->selectedSnippet() && !view->snippetToDelete());
    }
};

QTEST_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
