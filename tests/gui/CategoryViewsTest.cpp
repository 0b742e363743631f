// The category sidebar: rows, adding, renaming and deleting categories.
#include "AddCategoryDialog.h"
#include "CategoryRowView.h"
#include "EditCategoryDialog.h"
#include "GuiTestSupport.h"

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>

namespace {
AddCategoryDialog* openAddDialog(ContentView* view) {
    return GuiInput::openDialog(view->addCategoryButton(),
                               [view] { return view->addCategoryDialog(); });
}
EditCategoryDialog* openEditDialog(ContentView* view, const Category& category) {
    CategoryRowView* row = view->categoryRow(category.id);
    return GuiInput::openDialog(row->editButton(), [row] { return row->editDialog(); });
}
QWidget* duplicateError(QWidget* dialog) {
    return dialog->findChild<QWidget*>(QStringLiteral("duplicateError"));
}
} // namespace

class CategoryViewsTest : public QObject {
    Q_OBJECT

private slots:
    void rows() {
        const Category work = Category::create(QStringLiteral("Work"));
        const Category home = Category::create(QStringLiteral("Home"));
        EditorFixture fixture(
            {Category::defaultCategory(),
             Category(Category::reservedCategoryId, QStringLiteral("Reserved"), 0.0),
             work, home});
        fixture.addSnippet(QStringLiteral(";a"), QStringLiteral("A"), work.id);
        ContentView* view = fixture.show();
        CategoryRowView* row = view->categoryRow(work.id);
        CategoryRowView* other = view->categoryRow(home.id);
        QVERIFY(row && other);
        QCOMPARE(Shown::rowLabel(row, "categoryName"), QStringLiteral("Work"));
        QCOMPARE(Shown::rowLabel(row, "categoryCount"), QStringLiteral("1 snippet"));
        QCOMPARE(Shown::rowLabel(other, "categoryCount"), QStringLiteral("0 snippets"));
        fixture.addSnippet(QStringLiteral(";b"), QStringLiteral("B"), work.id);
        QCOMPARE(Shown::rowLabel(row, "categoryCount"), QStringLiteral("2 snippets"));
        // The built-in and the reserved category can be neither renamed nor deleted.
        for (const QUuid& id : {Category::defaultCategoryId, Category::reservedCategoryId})
            QVERIFY(view->categoryRow(id)->findChildren<QAbstractButton*>().isEmpty());
    }

    void addDialog() {
        EditorFixture fixture;
        fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        AddCategoryDialog* dialog = openAddDialog(view);
        QVERIFY(dialog);
        QVERIFY(!dialog->submitButton()->isEnabled());
        // Letter case alone does not make a new name; typing hides the message.
        QTest::keyClicks(dialog->nameField(), QStringLiteral("wORK"));
        GuiInput::click(dialog->submitButton());
        QVERIFY(duplicateError(dialog)->isVisible());
        QTest::keyClicks(dialog->nameField(), QStringLiteral("s"));
        QVERIFY(!duplicateError(dialog)->isVisible());
        // Return submits the one field (here refused again); Escape cancels.
        QTest::keyClick(dialog->nameField(), Qt::Key_Backspace);
        QVERIFY(!duplicateError(dialog)->isVisible());
        QTest::keyClick(dialog->nameField(), Qt::Key_Return);
        QVERIFY(dialog->isVisible() && duplicateError(dialog)->isVisible());
        QPointer<AddCategoryDialog> closing = dialog;
        QTest::keyClick(dialog->nameField(), Qt::Key_Escape);
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(namesOf(fixture.store().categories()), (QStringList{"Uncategory", "Work"}));
        // The next dialog starts empty.
        dialog = openAddDialog(view);
        QVERIFY(dialog);
        QVERIFY(dialog->name().isEmpty());
        // A new name is selected once the dialog has closed.
        QTest::keyClicks(dialog->nameField(), QStringLiteral(" Work"));
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        QTRY_COMPARE(Shown::rows(view->categoryList()),
                     (QStringList{"All Snippets", "Uncategory", "Work", "* Work"}));
        QCOMPARE(view->title(), QStringLiteral(" Work"));
        QCOMPARE(namesOf(fixture.reloaded()->categories()),
                 (QStringList{"Uncategory", "Work", " Work"}));
    }

    void renameThenDelete() {
        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        const Category home = fixture.addCategory(QStringLiteral("Home"));
        fixture.addSnippet(QStringLiteral(";w"), QStringLiteral("W"), work.id);
        fixture.addSnippet(QStringLiteral(";h"), QStringLiteral("H"), home.id);
        ContentView* view = fixture.show(work);
        EditCategoryDialog* dialog = openEditDialog(view, work);
        QVERIFY(dialog);
        QCOMPARE(dialog->nameField()->text(), QStringLiteral("Work"));
        // Unchanged or empty: nothing to save.
        QVERIFY(!dialog->submitButton()->isEnabled());
        GuiInput::retype(dialog->nameField(), QString());
        QVERIFY(!dialog->submitButton()->isEnabled());
        // Its own name in other letter case is fine (the store's tests hold the name rules).
        GuiInput::retype(dialog->nameField(), QStringLiteral("WORK"));
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        const QStringList renamed{"Uncategory", "WORK", "Home"};
        QCOMPARE(namesOf(fixture.store().categories()), renamed);
        QCOMPARE(namesOf(fixture.reloaded()->categories()), renamed);
        QCOMPARE(Shown::rowLabel(view->categoryRow(work.id), "categoryName"),
                 QStringLiteral("WORK"));
        QCOMPARE(Shown::snippets(view), (QStringList{"WORK", ";w"}));
        // Deleting asks first, then takes the category's snippets along.
        GuiInput::clickRow(view->snippetList(), 0);
        for (const QString& answer : {QStringLiteral("Cancel"), QStringLiteral("Delete")}) {
            GuiInput::click(view->categoryRow(work.id)->deleteButton());
            QCOMPARE(GuiInput::answerAlert(QStringLiteral("Delete Category"), answer),
                     QStringLiteral("Are you sure you want to delete 'WORK'?\nThis will "
                                    "permanently delete the 1 snippet in this category."));
            QCOMPARE(fixture.store().categories().size(), answer == "Cancel" ? 3 : 2);
        }
        const auto reloaded = fixture.reloaded();
        for (SnippetStore* store : {&fixture.store(), reloaded.get()}) {
            QCOMPARE(namesOf(store->categories()), (QStringList{"Uncategory", "Home"}));
            QCOMPARE(commandsOf(store->snippets()), QStringList{";h"});
        }
        // Nothing is left to show of the deleted category or its snippet.
        QCOMPARE(Shown::rows(view->categoryList()), (QStringList{"*All Snippets", "Uncategory", "Home"}));
        QCOMPARE(Shown::snippets(view), (QStringList{"All Snippets", ";h"}));
        QVERIFY(view->showingDetailPlaceholder());
    }
};

QTEST_MAIN(CategoryViewsTest)
#include "CategoryViewsTest.moc"
