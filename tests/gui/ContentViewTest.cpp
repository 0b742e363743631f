// The main window: the filtered snippet list, search, the selection rules, and deleting a
// snippet behind its confirmation.
#include "CategoryRowView.h"
#include "EditCategoryDialog.h"
#include "GuiTestSupport.h"
#include "SnippetDetailView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QComboBox>
#include <QDropEvent>
#include <QPushButton>
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
        // It starts on "All Snippets", with no snippet selected.
        QCOMPARE(Shown::rows(categories),
                 (QStringList{"*All Snippets", "Uncategory", "Work", "Personal"}));
        QCOMPARE(Shown::snippets(view), all);
        auto* placeholder = view->findChild<QLabel*>(QStringLiteral("detailPlaceholder"));
        QVERIFY(placeholder->isVisible());
        QCOMPARE(placeholder->text(), QStringLiteral("Select a snippet to view details"));
        GuiInput::clickRow(categories, 2);
        QCOMPARE(Shown::snippets(view), work);
        // Ctrl-click on the selected category goes back to every snippet.
        GuiInput::clickRow(categories, 2, Qt::ControlModifier);
        QCOMPARE(Shown::rows(categories),
                 (QStringList{"*All Snippets", "Uncategory", "Work", "Personal"}));
        QCOMPARE(Shown::snippets(view), all);
        // A snippet picked among all stays among all; a new one goes to the default category.
        GuiInput::clickRow(view->snippetList(), 1);
        QCOMPARE(Shown::snippets(view).first(), QStringLiteral("All Snippets"));
        QCOMPARE(view->detailView()->form()->command(), QStringLiteral(";home"));
        QVERIFY(view->addSnippetButton()->isEnabled());
        // A category that hides the snippet takes it out of the detail pane too.
        GuiInput::clickRow(categories, 2);
        QCOMPARE(Shown::snippets(view), work);
        QVERIFY(view->showingDetailPlaceholder());
        // A snippet selected elsewhere brings its category; one whose category record is
        // gone shows in the default category, never in none.
        view->setSelectedSnippet(lib.fixture.store().snippets().at(4));
        QCOMPARE(view->detailView()->form()->command(), QStringLiteral(";lost"));
        QCOMPARE(Shown::rows(categories),
                 (QStringList{"All Snippets", "*Uncategory", "Work", "Personal"}));
        QVERIFY(Shown::snippets(view).contains(QStringLiteral("*;lost")));
        view->setSelectedCategory({});
        // A snippet added meanwhile shows at once, search applied.
        QTest::keyClicks(view->searchField(), QStringLiteral("new"));
        QCOMPARE(Shown::snippets(view), QStringList{"All Snippets"});
        lib.fixture.addSnippet(QStringLiteral(";new"), QStringLiteral("x"), lib.personal.id);
        QCOMPARE(Shown::snippets(view), (QStringList{"All Snippets", ";new"}));
    }

    // A search in one category says what it finds elsewhere; Escape clears it, Down goes on
    // into the results, and the detail pane never shows what the list hides.
    void searchingFromTheKeyboard() {
        Library lib;
        ContentView* view = lib.fixture.show(lib.work);
        QPushButton* elsewhere = view->elsewhereButton();
        GuiInput::clickRow(view->snippetList(), 0); // ;addr
        view->searchField()->setFocus();
        QTest::keyClicks(view->searchField(), QStringLiteral("r"));
        // ;home (Upper Road) and ;lost (category) match outside Work.
        QCOMPARE(Shown::snippets(view), (QStringList{"Work", "*;addr", ";Sig"}));
        QVERIFY(elsewhere->isVisible());
        QCOMPARE(elsewhere->text(), QStringLiteral("2 more in other categories"));
        QTest::keyClicks(view->searchField(), QStringLiteral("o"));
        QCOMPARE(Shown::snippets(view), (QStringList{"Work"}));
        QVERIFY(view->showingDetailPlaceholder());
        QCOMPARE(elsewhere->text(), QStringLiteral("1 more in another category"));
        GuiInput::click(elsewhere);
        QCOMPARE(Shown::snippets(view), (QStringList{"All Snippets", ";home"}));
        QVERIFY(!elsewhere->isVisible());
        view->searchField()->setFocus();
        QTest::keyClick(view->searchField(), Qt::Key_Down);
        QVERIFY(view->snippetList()->hasFocus());
        QCOMPARE(view->detailView()->form()->command(), QStringLiteral(";home"));
        view->searchField()->setFocus();
        QTest::keyClick(view->searchField(), Qt::Key_Escape);
        QVERIFY(view->searchText().isEmpty());
        QCOMPARE(Shown::snippets(view), (QStringList{"All Snippets", ";addr", "*;home", ";Sig",
                                                     ";mtg", ";lost"}));
    }

    // Snippets move by drag and drop (several at once), from the context menu, and with the
    // detail pane's category field.
    void movingSnippets() {
        Library lib;
        ContentView* view = lib.fixture.show(lib.work);
        QListView* snippets = view->snippetList();
        QListView* categories = view->categoryList();
        GuiInput::clickRow(snippets, 0);
        GuiInput::clickRow(snippets, 2, Qt::ControlModifier); // ;addr and ;mtg
        QCOMPARE(Shown::rows(snippets), (QStringList{"*;addr", ";Sig", "*;mtg"}));
        const std::unique_ptr<QMimeData> data(
            snippets->model()->mimeData(snippets->selectionModel()->selectedIndexes()));
        const QPointF onPersonal =
            categories->visualRect(categories->model()->index(3, 0)).center();
        QDragEnterEvent enter(onPersonal.toPoint(), Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(categories->viewport(), &enter);
        QDragMoveEvent move(onPersonal.toPoint(), Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(categories->viewport(), &move);
        QDropEvent drop(onPersonal, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(categories->viewport(), &drop);
        QCOMPARE(Shown::snippets(view), (QStringList{"Work", ";Sig"}));
        const auto categoryOf = [&lib](const char* command) {
            return lib.fixture.reloaded()->snippetWithCommand(QString::fromUtf8(command))->categoryId;
        };
        QCOMPARE(categoryOf(";addr"), lib.personal.id);
        QCOMPARE(categoryOf(";mtg"), lib.personal.id);
        // "Move to" offers every category but the one the selection is in.
        GuiInput::clickRow(snippets, 0); // ;Sig
        const std::unique_ptr<QMenu> menu(view->snippetMenu());
        auto* moveTo = menu->findChild<QMenu*>(QStringLiteral("moveToMenu"));
        QStringList offered;
        for (const QAction* action : moveTo->actions())
            if (action->isEnabled())
                offered << action->text();
        QCOMPARE(offered, (QStringList{"Uncategory", "Personal"}));
        moveTo->actions().at(0)->trigger();
        QCOMPARE(categoryOf(";Sig"), Category::defaultCategoryId);
        // The detail pane's field is an edit like the texts; the view follows the snippet.
        view->setSelectedSnippet(*lib.fixture.store().snippetWithCommand(QStringLiteral(";home")));
        SnippetDetailView* detail = view->detailView();
        QCOMPARE(detail->form()->categoryBox()->currentText(), QStringLiteral("Personal"));
        QVERIFY(!detail->saveButton()->isEnabled());
        QComboBox* category = detail->form()->categoryBox();
        category->setCurrentIndex(category->findText(QStringLiteral("Work")));
        QVERIFY(detail->saveButton()->isEnabled());
        GuiInput::click(detail->saveButton());
        QCOMPARE(categoryOf(";home"), lib.work.id);
        QCOMPARE(Shown::snippets(view), (QStringList{"Work", "*;home"}));
    }

    // Delete deletes the selection after the question (whose default never deletes); a
    // category's snippets may move to the default category instead; F2 renames a category.
    void deletingFromTheKeyboard() {
        Library lib;
        ContentView* view = lib.fixture.show(lib.work);
        QListView* snippets = view->snippetList();
        GuiInput::clickRow(snippets, 0);
        GuiInput::clickRow(snippets, 1, Qt::ShiftModifier);
        QTest::keyClick(snippets, Qt::Key_Delete);
        QVERIFY(view->showingDeleteAlert());
        QCOMPARE(view->deleteAlert()->defaultButton()->text(), QStringLiteral("Cancel"));
        QCOMPARE(GuiInput::answerAlert(QStringLiteral("Confirm Delete"), QStringLiteral("Delete")),
                 QStringLiteral("Are you sure you want to delete 2 snippets?"));
        QCOMPARE(commandsOf(lib.fixture.reloaded()->snippets()),
                 (QStringList{";home", ";mtg", ";lost"}));
        // The category list: F2 renames, Delete offers to keep the snippets.
        QListView* categories = view->categoryList();
        categories->setFocus();
        QTest::keyClick(categories, Qt::Key_F2);
        QTRY_VERIFY(view->categoryRow(lib.work.id)->showingEditDialog());
        view->categoryRow(lib.work.id)->editDialog()->reject();
        QTest::keyClick(categories, Qt::Key_Delete);
        QMessageBox* alert = view->categoryRow(lib.work.id)->deleteAlert();
        QVERIFY(alert && alert->isVisible());
        QCOMPARE(alert->defaultButton()->text(), QStringLiteral("Move Snippets to \u201CUncategory\u201D"));
        QCOMPARE(GuiInput::answerAlert(QStringLiteral("Delete Category"),
                                       QStringLiteral("Move Snippets to \u201CUncategory\u201D"))
                     .left(35),
                 QStringLiteral("Are you sure you want to delete 'Wo"));
        const auto reloaded = lib.fixture.reloaded();
        QCOMPARE(namesOf(reloaded->categories()), (QStringList{"Uncategory", "Personal"}));
        QCOMPARE(reloaded->snippetWithCommand(QStringLiteral(";mtg"))->categoryId,
                 Category::defaultCategoryId);
    }

    // The first start, with nothing in the library, says what to do.
    void anEmptyLibrarySaysWhatToDo() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        auto* placeholder = view->findChild<QLabel*>(QStringLiteral("detailPlaceholder"));
        QCOMPARE(placeholder->text(), QStringLiteral("Add a snippet, then type its command anywhere"));
        QVERIFY(placeholder->isVisible());
    }

    void search_data() {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("found");
        const auto row = [](const char* name, const QStringList& before, const char* typed,
                            const QStringList& found) {
            QTest::newRow(name) << before << QString::fromUtf8(typed) << before.mid(0, 1) + found;
        };
        row("command, letter case ignored", work, "SIG", {";Sig"});
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
