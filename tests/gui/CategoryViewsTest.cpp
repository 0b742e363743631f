// The category sidebar: rows, adding, renaming and deleting categories.
#include "AddCategoryView.h"
#include "CategoryRowView.h"
#include "ContentView.h"
#include "EditCategoryView.h"
#include "ElidedLabel.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"
#include "InputFieldFrame.h"
#include "PlainButton.h"
#include "SymbolView.h"
#include "UiTheme.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTextDocument>

namespace {
QStringList names(const QList<CategoryRef>& categories) {
    QStringList list;
    for (const CategoryRef& c : categories)
        list << c->name();
    return list;
}

QString plain(const QString& html) {
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}
} // namespace

class CategoryViewsTest : public QObject {
    Q_OBJECT

private:
    static AddCategoryView* openAddSheet(ContentView* view) {
        GuiInput::click(view->addCategoryButton());
        AddCategoryView* sheet = view->addCategorySheet();
        if (sheet)
            GuiInput::waitActive(sheet);
        return sheet;
    }
    static EditCategoryView* openEditSheet(CategoryRowView* row) {
        GuiInput::click(row->editButton());
        EditCategoryView* sheet = row->editSheet();
        if (sheet)
            GuiInput::waitActive(sheet);
        return sheet;
    }
    static QWidget* duplicateError(QWidget* sheet) {
        return sheet->findChild<QWidget*>(QStringLiteral("duplicateError"));
    }

private slots:
    // ---- rows

    void rowsShowNameAndCount() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addCategory(QStringLiteral("Empty"));
        fixture.addShortcut(QStringLiteral(";a"), QStringLiteral("A"), work->id());
        ContentView* view = fixture.show();
        QCOMPARE(view->categoryList()->model()->rowCount(), 3);
        CategoryRowView* row = view->categoryRow(work->id());
        QVERIFY(row);
        QCOMPARE(row->findChild<ElidedLabel*>(QStringLiteral("categoryName"))->text(),
                 QStringLiteral("Work"));
        QCOMPARE(row->findChild<ElidedLabel*>(QStringLiteral("categoryCount"))->text(),
                 QStringLiteral("1 snippets"));
        QCOMPARE(view->categoryRow(fixture.store().categories().at(2)->id())
                     ->findChild<ElidedLabel*>(QStringLiteral("categoryCount"))
                     ->text(),
                 QStringLiteral("0 snippets"));
        QCOMPARE(row->editButton()->toolTip(), QStringLiteral("Edit Category"));
        QCOMPARE(row->deleteButton()->toolTip(), QStringLiteral("Delete Category"));
        QCOMPARE(row->deleteButton()->accessibleName(), QStringLiteral("Delete Category"));
        // What a click on the row lands on is the row's own widget.
        const QRect rect =
            view->categoryList()->visualRect(view->categoryList()->model()->index(1, 0));
        QWidget* hit = view->categoryList()->viewport()->childAt(rect.center());
        QVERIFY(hit == row || row->isAncestorOf(hit));

        // Counts follow the store.
        fixture.addShortcut(QStringLiteral(";b"), QStringLiteral("B"), work->id());
        QCOMPARE(row->findChild<ElidedLabel*>(QStringLiteral("categoryCount"))->text(),
                 QStringLiteral("2 snippets"));
    }

    void builtInAndReservedRowsOfferNoButtons() {
        const QList<CategoryRef> stored{
            Category::defaultCategory(),
            CategoryRef::create(Category::reservedCategoryId, QStringLiteral("Reserved"), 0.0),
            CategoryRef::create(QUuid::createUuid(), QStringLiteral("Mine"), 0.0)};
        EditorFixture fixture(stored);
        ContentView* view = fixture.show();
        QCOMPARE(view->categoryList()->model()->rowCount(), 3);
        for (const QUuid& id : {Category::defaultCategoryId, Category::reservedCategoryId}) {
            CategoryRowView* row = view->categoryRow(id);
            QVERIFY(row);
            QVERIFY(row->isProtected());
            QVERIFY(!row->editButton());
            QVERIFY(!row->deleteButton());
            QVERIFY(row->findChildren<QAbstractButton*>().isEmpty());
        }
        QVERIFY(view->categoryRow(stored.at(2)->id())->editButton());
    }

    void selectedRowDrawsItsSymbolsWhite() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        const CategoryRef home = fixture.addCategory(QStringLiteral("Home"));
        ContentView* view = fixture.show();
        GuiInput::clickRow(view->categoryList(), 1);
        CategoryRowView* selected = view->categoryRow(work->id());
        CategoryRowView* other = view->categoryRow(home->id());
        QVERIFY(selected->isSelected());
        QVERIFY(!other->isSelected());
        QCOMPARE(selected->editButton()->color(), QColor(Qt::white));
        QCOMPARE(selected->deleteButton()->color(), QColor(Qt::white));
        QCOMPARE(other->editButton()->color(), UiTheme::accent(other));
        QCOMPARE(other->deleteButton()->color(), UiTheme::red());
        // The folder symbol too: its drawn pixels are white on the selected row only.
        const auto opaqueColors = [](QWidget* symbol) {
            const QImage image = symbol->grab().toImage();
            QSet<QRgb> colors;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    if (qAlpha(image.pixel(x, y)) == 255)
                        colors.insert(image.pixel(x, y) | 0xff000000);
            return colors;
        };
        QVERIFY(opaqueColors(selected->folderSymbol()).contains(QColor(Qt::white).rgb()));
        QCOMPARE(selected->folderSymbol()->color(), QColor(Qt::white));
        QCOMPARE(other->folderSymbol()->color(), UiTheme::accent(other));
        GuiInput::clickRow(view->categoryList(), 2);
        QVERIFY(!selected->isSelected());
        QCOMPARE(selected->editButton()->color(), UiTheme::accent(selected));
        QCOMPARE(other->editButton()->color(), QColor(Qt::white));
    }

    // ---- add

    void addsACategoryAndSelectsItOnceTheSheetCloses() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QCOMPARE(sheet->size(), QSize(440, 280));
        QCOMPARE(sheet->windowModality(), Qt::WindowModal);
        QCOMPARE(sheet->nameField()->placeholderText(), QStringLiteral("Enter category name..."));
        QVERIFY(!sheet->addButton()->isEnabled());
        QTest::keyClicks(sheet->nameField(), QStringLiteral("Recipes"));
        QVERIFY(sheet->addButton()->isEnabled());
        QPointer<AddCategoryView> closing = sheet;
        GuiInput::click(sheet->addButton());
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(names(fixture.store().categories()), (QStringList{"Uncategory", "Recipes"}));
        QTRY_COMPARE(view->title(), QStringLiteral("Recipes"));
        QCOMPARE(view->selectedCategory()->id(), fixture.store().categories().last()->id());
        QCOMPARE(view->categoryList()->selectionModel()->selectedRows().first().row(), 1);
        QCOMPARE(names(fixture.reloadedStore()->categories()),
                 (QStringList{"Uncategory", "Recipes"}));
    }

    void caseOnlyDuplicateIsRefusedUntilEdited() {
        EditorFixture fixture;
        fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QTest::keyClicks(sheet->nameField(), QStringLiteral("wORK"));
        GuiInput::click(sheet->addButton());
        QVERIFY(sheet->isVisible());
        QVERIFY(sheet->showingDuplicateError());
        QVERIFY(duplicateError(sheet)->isVisible());
        QCOMPARE(duplicateError(sheet)->findChild<QLabel*>(QStringLiteral("errorMessage"))->text(),
                 QStringLiteral("A category with this name already exists"));
        QCOMPARE(fixture.store().categories().size(), 2);
        QTest::keyClicks(sheet->nameField(), QStringLiteral("s"));
        QVERIFY(!duplicateError(sheet)->isVisible());
        GuiInput::click(sheet->addButton());
        QTRY_VERIFY(!view->showingAddCategorySheet());
        QCOMPARE(names(fixture.store().categories()), (QStringList{"Uncategory", "Work", "wORKs"}));
    }

    void leadingSpaceMakesADifferentName() {
        EditorFixture fixture;
        fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QTest::keyClicks(sheet->nameField(), QStringLiteral(" Work"));
        GuiInput::click(sheet->addButton());
        QTRY_VERIFY(!view->showingAddCategorySheet());
        QCOMPARE(fixture.store().categories().last()->name(), QStringLiteral(" Work"));
        // The new category is the one that gets selected, space and all.
        QTRY_COMPARE(view->title(), QStringLiteral(" Work"));
        QCOMPARE(view->selectedCategory()->id(), fixture.store().categories().last()->id());
    }

    void nameOfSpacesIsAccepted() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QTest::keyClicks(sheet->nameField(), QStringLiteral("  "));
        QVERIFY(sheet->addButton()->isEnabled());
        QTest::keyClick(sheet->nameField(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_VERIFY(!view->showingAddCategorySheet());
        QCOMPARE(fixture.store().categories().last()->name(), QStringLiteral("  "));
    }

    void addSheetKeyboard() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        QCOMPARE(QApplication::activeWindow(), sheet);
        QTest::keyClicks(sheet->nameField(), QStringLiteral("Keys"));
        // Return alone does not submit.
        QTest::keyClick(sheet->nameField(), Qt::Key_Return);
        QVERIFY(sheet->isVisible());
        QCOMPARE(fixture.store().categories().size(), 1);
        // Escape cancels.
        QPointer<AddCategoryView> closing = sheet;
        QTest::keyClick(sheet->nameField(), Qt::Key_Escape);
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(fixture.store().categories().size(), 1);
        // The next sheet starts empty; Ctrl+Return adds.
        sheet = openAddSheet(view);
        QVERIFY(sheet);
        QVERIFY(sheet->name().isEmpty());
        QTest::keyClicks(sheet->nameField(), QStringLiteral("Keys"));
        QTest::keyClick(sheet->nameField(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_VERIFY(!view->showingAddCategorySheet());
        QCOMPARE(names(fixture.store().categories()), (QStringList{"Uncategory", "Keys"}));
    }

    void nameFieldOutlineFollowsEditing() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        AddCategoryView* sheet = openAddSheet(view);
        QVERIFY(sheet);
        sheet->nameField()->setFocus(Qt::MouseFocusReason);
        QTRY_VERIFY(sheet->isNameFieldFocused());
        QCOMPARE(sheet->nameFrame()->outlineColor(), UiTheme::accent(sheet->nameFrame()));
        sheet->cancelButton()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(!sheet->isNameFieldFocused());
        QCOMPARE(sheet->nameFrame()->outlineColor(), UiTheme::faintOutline());
    }

    // ---- rename

    void renameRules() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addCategory(QStringLiteral("Home"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        EditCategoryView* sheet = openEditSheet(view->categoryRow(work->id()));
        QVERIFY(sheet);
        QCOMPARE(sheet->size(), QSize(400, 200));
        QCOMPARE(sheet->nameField()->text(), QStringLiteral("Work"));
        QCOMPARE(sheet->nameField()->placeholderText(), QStringLiteral("Category name"));
        // Unchanged or empty: nothing to save.
        QVERIFY(!sheet->saveButton()->isEnabled());
        GuiInput::retype(sheet->nameField(), QString());
        QVERIFY(!sheet->saveButton()->isEnabled());

        // Another category's name in other letter case is refused until edited.
        QTest::keyClicks(sheet->nameField(), QStringLiteral("HOME"));
        QVERIFY(sheet->saveButton()->isEnabled());
        GuiInput::click(sheet->saveButton());
        QVERIFY(sheet->isVisible());
        QVERIFY(duplicateError(sheet)->isVisible());
        QCOMPARE(qobject_cast<QLabel*>(duplicateError(sheet))->text(),
                 QStringLiteral("A category with this name already exists"));
        QTest::keyClick(sheet->nameField(), Qt::Key_Backspace);
        QVERIFY(!duplicateError(sheet)->isVisible());

        // Its own name in other letter case is fine.
        GuiInput::retype(sheet->nameField(), QStringLiteral("WORK"));
        QPointer<EditCategoryView> closing = sheet;
        GuiInput::click(sheet->saveButton());
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(names(fixture.store().categories()), (QStringList{"Uncategory", "WORK", "Home"}));
        QCOMPARE(view->title(), QStringLiteral("WORK"));
        QCOMPARE(view->categoryRow(work->id())
                     ->findChild<ElidedLabel*>(QStringLiteral("categoryName"))
                     ->text(),
                 QStringLiteral("WORK"));
        QCOMPARE(view->selectedCategory()->id(), work->id());
        QCOMPARE(names(fixture.reloadedStore()->categories()),
                 (QStringList{"Uncategory", "WORK", "Home"}));
    }

    void renameCancelKeepsTheName() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        EditCategoryView* sheet = openEditSheet(view->categoryRow(work->id()));
        QVERIFY(sheet);
        GuiInput::retype(sheet->nameField(), QStringLiteral("Play"));
        QPointer<EditCategoryView> closing = sheet;
        QTest::keyClick(sheet->nameField(), Qt::Key_Escape);
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(fixture.store().categories().last()->name(), QStringLiteral("Work"));
        sheet = openEditSheet(view->categoryRow(work->id()));
        QVERIFY(sheet);
        QCOMPARE(sheet->name(), QStringLiteral("Work"));
        GuiInput::click(sheet->cancelButton());
        QTRY_VERIFY(!view->categoryRow(work->id())->showingEditSheet());
    }

    // ---- delete

    void deleteAsksAndRemovesTheCategoryWithItsSnippets() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        const CategoryRef home = fixture.addCategory(QStringLiteral("Home"));
        fixture.addShortcut(QStringLiteral(";w"), QStringLiteral("W"), work->id());
        fixture.addShortcut(QStringLiteral(";h"), QStringLiteral("H"), home->id());
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        GuiInput::clickRow(view->shortcutList(), 0);

        GuiInput::click(view->categoryRow(work->id())->deleteButton());
        QMessageBox* alert = GuiInput::findAlert(QStringLiteral("Delete Category"));
        QVERIFY(alert);
        QCOMPARE(plain(alert->informativeText()),
                 QStringLiteral("Are you sure you want to delete 'Work'?\nThis will permanently "
                                "delete all 1 snippets in this category."));
        GuiInput::clickAlertButton(alert, QStringLiteral("Cancel"));
        QTRY_VERIFY(!GuiInput::findAlert(QStringLiteral("Delete Category")));
        QCOMPARE(fixture.store().categories().size(), 3);
        QCOMPARE(fixture.store().shortcuts().size(), 2);

        GuiInput::click(view->categoryRow(work->id())->deleteButton());
        alert = GuiInput::findAlert(QStringLiteral("Delete Category"));
        QVERIFY(alert);
        GuiInput::clickAlertButton(alert, QStringLiteral("Delete"));
        QCOMPARE(names(fixture.store().categories()), (QStringList{"Uncategory", "Home"}));
        QCOMPARE(fixture.store().shortcuts().size(), 1);
        QCOMPARE(fixture.store().shortcuts().first().command, QStringLiteral(";h"));
        QCOMPARE(view->categoryList()->model()->rowCount(), 2);
        // Nothing left to show of the deleted category or its snippet.
        QVERIFY(!view->selectedCategory());
        QCOMPARE(view->title(), QStringLiteral("All Snippets"));
        QVERIFY(view->showingDetailPlaceholder());
        const auto reloaded = fixture.reloadedStore();
        QCOMPARE(names(reloaded->categories()), (QStringList{"Uncategory", "Home"}));
        QCOMPARE(reloaded->shortcuts().size(), 1);
    }
};

QTEST_MAIN(CategoryViewsTest)
#include "CategoryViewsTest.moc"
