// The category sidebar: rows, adding, renaming and deleting categories.
#include "AddCategoryDialog.h"
#include "CategoryRowView.h"
#include "EditCategoryDialog.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>

namespace {
AddCategoryDialog* openAddSheet(ContentView* view) {
    return GuiInput::openSheet(view->addCategoryButton(),
                               [view] { return view->addCategorySheet(); });
}
EditCategoryDialog* openEditSheet(ContentView* view, const Category& category) {
    CategoryRowView* row = view->categoryRow(category.id);
    return GuiInput::openSheet(row->editButton(), [row] { return row->editSheet(); });
}
QWidget* duplicateError(QWidget* sheet) {
    return sheet->findChild<QWidget*>(QStringLiteral("duplicateError"));
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

    void addSheet() {
        EditorFixture fixture;
        fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        AddCategoryDialog* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QVERIFY(!sheet->addButton()->isEnabled());
        // Letter case alone does not make a new name; typing hides the message.
        QTest::keyClicks(sheet->nameField(), QStringLiteral("wORK"));
        GuiInput::click(sheet->addButton());
        QVERIFY(duplicateError(sheet)->isVisible());
        QTest::keyClicks(sheet->nameField(), QStringLiteral("s"));
        QVERIFY(!duplicateError(sheet)->isVisible());
        // Return submits the one field (here refused again); Escape cancels.
        QTest::keyClick(sheet->nameField(), Qt::Key_Backspace);
        QVERIFY(!duplicateError(sheet)->isVisible());
        QTest::keyClick(sheet->nameField(), Qt::Key_Return);
        QVERIFY(sheet->isVisible() && duplicateError(sheet)->isVisible());
        QPointer<AddCategoryDialog> closing = sheet;
        QTest::keyClick(sheet->nameField(), Qt::Key_Escape);
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(namesOf(fixture.store().categories()), (QStringList{"Uncategory", "Work"}));
        // The next sheet starts empty.
        sheet = openAddSheet(view);
        QVERIFY(sheet);
        QVERIFY(sheet->name().isEmpty());
        // Names are compared untrimmed: " Work" is new. It is selected once the sheet has closed.
        QTest::keyClicks(sheet->nameField(), QStringLiteral(" Work"));
        QVERIFY(GuiInput::clickCloses(sheet->addButton()));
        QTRY_COMPARE(Shown::rows(view->categoryList()),
                     (QStringList{"All Snippets", "Uncategory", "Work", "* Work"}));
        QCOMPARE(view->title(), QStringLiteral(" Work"));
        // A name of spaces is a name; Ctrl+Return adds it.
        sheet = openAddSheet(view);
        QVERIFY(sheet);
        QTest::keyClicks(sheet->nameField(), QStringLiteral("  "));
        closing = sheet;
        QTest::keyClick(sheet->nameField(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_VERIFY(closing.isNull());
        const QStringList names{"Uncategory", "Work", " Work", "  "};
        QCOMPARE(namesOf(fixture.store().categories()), names);
        QCOMPARE(namesOf(fixture.reloaded()->categories()), names);
    }

    void renameThenDelete() {
        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        const Category home = fixture.addCategory(QStringLiteral("Home"));
        fixture.addSnippet(QStringLiteral(";w"), QStringLiteral("W"), work.id);
        fixture.addSnippet(QStringLiteral(";h"), QStringLiteral("H"), home.id);
        ContentView* view = fixture.show(work);
        // Escape and Cancel keep the name.
        for (bool byEscape : {true, false}) {
            EditCategoryDialog* sheet = openEditSheet(view, work);
            QVERIFY(sheet);
            GuiInput::retype(sheet->nameField(), QStringLiteral("Play"));
            QPointer<EditCategoryDialog> closing = sheet;
            if (byEscape)
                QTest::keyClick(sheet->nameField(), Qt::Key_Escape);
            else
                GuiInput::click(sheet->cancelButton());
            QTRY_VERIFY(closing.isNull());
            QCOMPARE(fixture.store().category(work.id)->name, QStringLiteral("Work"));
        }
        EditCategoryDialog* sheet = openEditSheet(view, work);
        QVERIFY(sheet);
        QCOMPARE(sheet->nameField()->text(), QStringLiteral("Work"));
        // Unchanged or empty: nothing to save.
        QVERIFY(!sheet->saveButton()->isEnabled());
        GuiInput::retype(sheet->nameField(), QString());
        QVERIFY(!sheet->saveButton()->isEnabled());
        // Another category's name in other letter case is refused until edited.
        QTest::keyClicks(sheet->nameField(), QStringLiteral("HOME"));
        GuiInput::click(sheet->saveButton());
        QVERIFY(duplicateError(sheet)->isVisible());
        QTest::keyClick(sheet->nameField(), Qt::Key_Backspace);
        QVERIFY(!duplicateError(sheet)->isVisible());
        // Its own name in other letter case is fine.
        GuiInput::retype(sheet->nameField(), QStringLiteral("WORK"));
        QVERIFY(GuiInput::clickCloses(sheet->saveButton()));
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
