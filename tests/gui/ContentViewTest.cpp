// The main window: the filtered snippet list, search, the selection rules, and deleting a
// snippet behind its confirmation.
#include "ContentView.h"
#include "CategoryRowView.h"
#include "GuiTestSupport.h"
#include "NotificationCenter.h"
#include "PlainButton.h"
#include "ShortcutDetailView.h"
#include "SymbolView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTextDocument>

namespace {
QStringList commands(const QList<Shortcut>& shortcuts) {
    QStringList list;
    for (const Shortcut& s : shortcuts)
        list << s.command;
    return list;
}

// What a rich-text label shows.
QString plain(const QString& html) {
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}

// What the list view shows, read through its model.
QStringList shownCommands(QListView* list) {
    QStringList shown;
    for (int row = 0; row < list->model()->rowCount(); ++row)
        shown << list->model()->index(row, 0).data().toString();
    return shown;
}
} // namespace

class ContentViewTest : public QObject {
    Q_OBJECT

private:
    // Work: ;addr ;Sig ;mtg   Personal: ;home   (in that stored order, interleaved)
    struct Library {
        EditorFixture fixture;
        CategoryRef work;
        CategoryRef personal;
        Library() {
            work = fixture.addCategory(QStringLiteral("Work"));
            personal = fixture.addCategory(QStringLiteral("Personal"));
            fixture.addShortcut(QStringLiteral(";addr"), QStringLiteral("221B Baker Street"),
                                work->id());
            fixture.addShortcut(QStringLiteral(";home"), QStringLiteral("Flat 2, Upper Road"),
                                personal->id());
            fixture.addShortcut(QStringLiteral(";Sig"), QStringLiteral("Best regards,\nAda"),
                                work->id());
            fixture.addShortcut(QStringLiteral(";mtg"), QStringLiteral("Meeting@10"), work->id());
        }
    };

private slots:
    // ---- list and search

    void showsTheSelectedCategoryInStoredOrder() {
        Library library;
        ContentView* view = library.fixture.show();
        GuiInput::clickRow(view->categoryList(), 1); // Work
        QCOMPARE(view->selectedCategory()->id(), library.work->id());
        QCOMPARE(view->title(), QStringLiteral("Work"));
        QCOMPARE(shownCommands(view->shortcutList()), (QStringList{";addr", ";Sig", ";mtg"}));
        GuiInput::clickRow(view->categoryList(), 2); // Personal
        QCOMPARE(view->title(), QStringLiteral("Personal"));
        QCOMPARE(shownCommands(view->shortcutList()), QStringList{";home"});
    }

    void search_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("command") << QStringLiteral("mt") << QStringList{";mtg"};
        QTest::newRow("letter case ignored") << QStringLiteral("SIG") << QStringList{";Sig"};
        QTest::newRow("content alone") << QStringLiteral("baker") << QStringList{";addr"};
        QTest::newRow("content on a later line") << QStringLiteral("ada") << QStringList{";Sig"};
        QTest::newRow("one space") << QStringLiteral(" ") << QStringList{";addr", ";Sig"};
        QTest::newRow("nothing found") << QStringLiteral("zebra") << QStringList{};
        QTest::newRow("other category not shown") << QStringLiteral("road") << QStringList{};
    }

    void search() {
        QFETCH(QString, typed);
        QFETCH(QStringList, expected);
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        view->searchField()->setFocus();
        QTest::keyClicks(view->searchField(), typed);
        QCOMPARE(view->searchText(), typed);
        QCOMPARE(shownCommands(view->shortcutList()), expected);
        QCOMPARE(commands(view->filteredShortcuts()), expected);

        // Emptying the field shows the whole category again.
        GuiInput::retype(view->searchField(), QString());
        QCOMPARE(view->searchText(), QString());
        QCOMPARE(shownCommands(view->shortcutList()), (QStringList{";addr", ";Sig", ";mtg"}));
    }

    void searchWithoutCategoryCoversEverySnippet() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory({});
        QCOMPARE(view->title(), QStringLiteral("All Snippets"));
        QCOMPARE(shownCommands(view->shortcutList()),
                 (QStringList{";addr", ";home", ";Sig", ";mtg"}));
        QTest::keyClicks(view->searchField(), QStringLiteral("ROAD"));
        QCOMPARE(shownCommands(view->shortcutList()), QStringList{";home"});
        QCOMPARE(view->searchField()->placeholderText(), QStringLiteral("Search snippets"));
        QVERIFY(view->searchField()->maximumWidth() <= 200);
    }

    void listFollowsStoreChanges() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        QTest::keyClicks(view->searchField(), QStringLiteral("new"));
        QVERIFY(shownCommands(view->shortcutList()).isEmpty());
        library.fixture.addShortcut(QStringLiteral(";new"), QStringLiteral("Fresh"),
                                    library.work->id());
        QCOMPARE(shownCommands(view->shortcutList()), QStringList{";new"});
    }

    // ---- selection rules

    void firstCategoryIsSelectedOnAppearance() {
        Library library;
        ContentView* view = library.fixture.show();
        QVERIFY(view->selectedCategory());
        QCOMPARE(view->selectedCategory()->id(),
                 library.fixture.store().categories().first()->id());
        const QModelIndexList rows = view->categoryList()->selectionModel()->selectedRows();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().row(), 0);
        QVERIFY(view->showingDetailPlaceholder());
        auto* placeholder = view->findChild<QLabel*>(QStringLiteral("detailPlaceholder"));
        QCOMPARE(placeholder->text(), QStringLiteral("Select a snippet to view details"));
    }

    void categoryFollowsTheSelectedSnippet() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory({});
        QCOMPARE(view->shortcutList()->model()->rowCount(), 4);
        GuiInput::clickRow(view->shortcutList(), 1); // ;home, in Personal
        QVERIFY(view->selectedShortcut());
        QCOMPARE(view->selectedShortcut()->command, QStringLiteral(";home"));
        QCOMPARE(view->selectedCategory()->id(), library.personal->id());
        QCOMPARE(view->title(), QStringLiteral("Personal"));
        QCOMPARE(view->categoryList()->selectionModel()->selectedRows().first().row(), 2);
        QCOMPARE(view->detailView()->command(), QStringLiteral(";home"));
        // The row stays selected in the now narrower list.
        QCOMPARE(view->shortcutList()->selectionModel()->selectedRows().size(), 1);
    }

    void snippetOfAMissingCategoryClearsTheCategory() {
        Library library;
        const Shortcut orphan = library.fixture.addShortcut(
            QStringLiteral(";lost"), QStringLiteral("No home"), QUuid::createUuid());
        ContentView* view = library.fixture.show();
        view->setSelectedCategory({});
        GuiInput::clickRow(view->shortcutList(), 4);
        QCOMPARE(view->selectedShortcut()->id, orphan.id);
        QVERIFY(!view->selectedCategory());
        QCOMPARE(view->title(), QStringLiteral("All Snippets"));
        QVERIFY(view->categoryList()->selectionModel()->selectedRows().isEmpty());
        QCOMPARE(view->shortcutList()->model()->rowCount(), 5);
        QVERIFY(!view->addSnippetButton()->isEnabled());
    }

    void selectingACategoryKeepsTheSnippetShown() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        GuiInput::clickRow(view->shortcutList(), 0); // ;addr
        GuiInput::clickRow(view->categoryList(), 2); // Personal
        QCOMPARE(view->selectedCategory()->id(), library.personal->id());
        QVERIFY(view->selectedShortcut());
        QCOMPARE(view->detailView()->command(), QStringLiteral(";addr"));
        QVERIFY(view->shortcutList()->selectionModel()->selectedRows().isEmpty());
    }

    void categoryUpdatedNotificationIsHarmless() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        NotificationCenter::defaultCenter().post(QStringLiteral("CategoryUpdated"));
        QCOMPARE(view->selectedCategory()->id(), library.work->id());
        QCOMPARE(view->title(), QStringLiteral("Work"));
        QCOMPARE(view->shortcutList()->model()->rowCount(), 3);
    }

    // ---- deleting a snippet

    void deleteAsksFirstAndCancelChangesNothing() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        GuiInput::clickRow(view->shortcutList(), 1); // ;Sig
        GuiInput::clickTrash(view->shortcutList(), 1);
        QMessageBox* alert = GuiInput::findAlert(QStringLiteral("Confirm Delete"));
        QVERIFY(alert);
        QVERIFY(view->showingDeleteAlert());
        QCOMPARE(plain(alert->informativeText()),
                 QStringLiteral("Are you sure you want to delete ';Sig'?"));
        QCOMPARE(view->shortcutToDelete()->command, QStringLiteral(";Sig"));
        QPointer<QMessageBox> closing = alert;
        GuiInput::clickAlertButton(alert, QStringLiteral("Cancel"));
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(library.fixture.store().shortcuts().size(), 4);
        QCOMPARE(view->selectedShortcut()->command, QStringLiteral(";Sig"));
        QVERIFY(!view->showingDetailPlaceholder());
    }

    void confirmedDeleteRemovesSavesAndClearsTheSelection() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        GuiInput::clickRow(view->shortcutList(), 0); // ;addr
        // The detail pane's Delete asks the same question.
        GuiInput::click(view->detailView()->deleteButton());
        QMessageBox* alert = GuiInput::findAlert(QStringLiteral("Confirm Delete"));
        QVERIFY(alert);
        QCOMPARE(plain(alert->informativeText()),
                 QStringLiteral("Are you sure you want to delete ';addr'?"));
        GuiInput::clickAlertButton(alert, QStringLiteral("Delete"));
        QCOMPARE(commands(library.fixture.store().shortcuts()),
                 (QStringList{";home", ";Sig", ";mtg"}));
        QVERIFY(!view->selectedShortcut());
        QVERIFY(!view->shortcutToDelete());
        QVERIFY(view->showingDetailPlaceholder());
        QCOMPARE(shownCommands(view->shortcutList()), (QStringList{";Sig", ";mtg"}));
        QCOMPARE(commands(library.fixture.reloadedStore()->shortcuts()),
                 (QStringList{";home", ";Sig", ";mtg"}));
    }

    void alertQuotesTheCommandExactly() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addShortcut(QStringLiteral("<b>it's</b>  & co "), QStringLiteral("x"), work->id());
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        GuiInput::clickTrash(view->shortcutList(), 0);
        QMessageBox* alert = GuiInput::findAlert(QStringLiteral("Confirm Delete"));
        QVERIFY(alert);
        // Shown as typed, not as markup, double space included.
        QCOMPARE(plain(alert->informativeText()),
                 QStringLiteral("Are you sure you want to delete '<b>it's</b>  & co '?"));
        GuiInput::clickAlertButton(alert, QStringLiteral("Cancel"));
    }

    void trashOfAnotherRowDoesNotSelectIt() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        GuiInput::clickRow(view->shortcutList(), 0);
        GuiInput::clickTrash(view->shortcutList(), 2);
        QMessageBox* alert = GuiInput::findAlert(QStringLiteral("Confirm Delete"));
        QVERIFY(alert);
        QCOMPARE(view->shortcutToDelete()->command, QStringLiteral(";mtg"));
        QCOMPARE(view->selectedShortcut()->command, QStringLiteral(";addr"));
        GuiInput::clickAlertButton(alert, QStringLiteral("Delete"));
        QCOMPARE(commands(library.fixture.store().shortcuts()),
                 (QStringList{";addr", ";home", ";Sig"}));
        QVERIFY(!view->selectedShortcut());
    }

    // ---- palette

    void followsAPaletteChange() {
        Library library;
        ContentView* view = library.fixture.show();
        view->setSelectedCategory(library.work);
        const QPalette original = QApplication::palette();
        QPalette dark = original;
        dark.setColor(QPalette::Window, QColor(30, 30, 32));
        dark.setColor(QPalette::WindowText, QColor(236, 236, 238));
        dark.setColor(QPalette::Highlight, QColor(200, 60, 40));
        dark.setColor(QPalette::PlaceholderText, QColor(140, 140, 150));
        QApplication::setPalette(dark);

        // Widgets hear of the new palette on the next turn of the event loop.
        CategoryRowView* other = view->categoryRow(library.personal->id());
        QTRY_COMPARE(other->editButton()->color(), QColor(200, 60, 40));
        QCOMPARE(other->folderSymbol()->color(), QColor(200, 60, 40));
        QCOMPARE(view->addSnippetButton()->color(), QColor(200, 60, 40));
        auto* placeholder = view->findChild<QLabel*>(QStringLiteral("detailPlaceholder"));
        QCOMPARE(placeholder->palette().color(placeholder->foregroundRole()),
                 QColor(140, 140, 150));
        // The lists take the window colour too.
        const QImage list = view->shortcutList()->viewport()->grab().toImage();
        QCOMPARE(list.pixelColor(list.width() - 2, list.height() - 2), QColor(30, 30, 32));
        QApplication::setPalette(original);
    }

    // ---- columns

    void columnsKeepTheirWidths() {
        Library library;
        ContentView* view = library.fixture.show();
        QCOMPARE(view->findChild<QWidget*>(QStringLiteral("sidebar"))->width(), 250);
        QCOMPARE(view->findChild<QWidget*>(QStringLiteral("snippetColumn"))->width(), 450);
        library.fixture.window()->resize(1600, 800);
        QTRY_COMPARE(view->findChild<QWidget*>(QStringLiteral("snippetColumn"))->width(), 450);
        QVERIFY(view->findChild<QWidget*>(QStringLiteral("detailPane"))->width() > 800);
        QCOMPARE(view->addCategoryButton()->toolTip(), QStringLiteral("Add Category"));
        QCOMPARE(view->addCategoryButton()->focusPolicy(), Qt::NoFocus);
    }
};

QTEST_MAIN(ContentViewTest)
#include "ContentViewTest.moc"
