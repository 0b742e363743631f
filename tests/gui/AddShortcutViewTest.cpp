// Adding a snippet from the main window, end to end: the sheet, its rules and the store.
#include "AddShortcutView.h"
#include "ContentView.h"
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "ShortcutDetailView.h"
#include "Timestamp.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>

class AddShortcutViewTest : public QObject {
    Q_OBJECT

private:
    // Opens the sheet with the Add Snippet button and waits until it has the keyboard.
    static AddShortcutView* openSheet(ContentView* view) {
        GuiInput::click(view->addSnippetButton());
        AddShortcutView* sheet = view->addSheet();
        if (sheet)
            GuiInput::waitActive(sheet);
        return sheet;
    }
    static void type(AddShortcutView* sheet, const QString& command, const QString& content) {
        QTest::keyClicks(sheet->commandField(), command);
        QTest::keyClicks(sheet->contentEditor(), content);
    }

private slots:
    void addsTheSnippetToTheSelectedCategoryAndSelectsIt() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addShortcut(QStringLiteral(";first"), QStringLiteral("First"), work->id());
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);

        const double before = Timestamp::now();
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        QVERIFY(sheet->isVisible());
        QCOMPARE(sheet->size(), QSize(480, 480));
        QCOMPARE(sheet->windowModality(), Qt::WindowModal);
        QCOMPARE(sheet->windowTitle(), QStringLiteral("New Snippet"));
        QVERIFY(view->showingAddSheet());

        // Both texts are needed, and nothing is trimmed.
        QVERIFY(!sheet->addButton()->isEnabled());
        QTest::keyClicks(sheet->commandField(), QStringLiteral(";sig "));
        QVERIFY(!sheet->addButton()->isEnabled());
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("Best regards,"));
        QTest::keyClick(sheet->contentEditor(), Qt::Key_Return);
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("Ada"));
        QVERIFY(sheet->addButton()->isEnabled());
        QCOMPARE(sheet->addButton()->toolTip(), QStringLiteral("Add Snippet"));

        QPointer<AddShortcutView> closing = sheet;
        GuiInput::click(sheet->addButton());
        QTRY_VERIFY(closing.isNull());
        QVERIFY(!view->showingAddSheet());

        const QList<Shortcut>& shortcuts = fixture.store().shortcuts();
        QCOMPARE(shortcuts.size(), 2);
        const Shortcut added = shortcuts.last();
        QCOMPARE(added.command, QStringLiteral(";sig "));
        QCOMPARE(added.content, QStringLiteral("Best regards,\nAda"));
        QCOMPARE(added.categoryId, work->id());
        QVERIFY(added.createdAt >= before - 1 && added.createdAt <= Timestamp::now() + 1);

        // Selected at once: the list row, the detail pane.
        QVERIFY(view->selectedShortcut());
        QCOMPARE(view->selectedShortcut()->id, added.id);
        const QModelIndexList selected = view->shortcutList()->selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(selected.first().row(), 1);
        QVERIFY(!view->showingDetailPlaceholder());
        QCOMPARE(view->detailView()->command(), QStringLiteral(";sig "));

        // Written to disk.
        const auto reloaded = fixture.reloadedStore();
        QCOMPARE(reloaded->shortcuts().size(), 2);
        QCOMPARE(reloaded->shortcuts().last().content, QStringLiteral("Best regards,\nAda"));
    }

    void refusesAnExistingCommandUntilTheCommandIsEdited() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addShortcut(QStringLiteral(";hi"), QStringLiteral("Hello"), work->id());
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);

        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        QWidget* error = sheet->findChild<QWidget*>(QStringLiteral("duplicateError"));
        QVERIFY(error);
        QVERIFY(!error->isVisible());

        type(sheet, QStringLiteral(";hi"), QStringLiteral("Hi there"));
        GuiInput::click(sheet->addButton());
        QVERIFY(sheet->isVisible());
        QVERIFY(sheet->showingDuplicateError());
        QVERIFY(error->isVisible());
        QCOMPARE(error->findChild<QLabel*>(QStringLiteral("errorMessage"))->text(),
                 QStringLiteral("This command already exists"));
        QCOMPARE(fixture.store().shortcuts().size(), 1);
        // The typed texts stay.
        QCOMPARE(sheet->command(), QStringLiteral(";hi"));
        QCOMPARE(sheet->content(), QStringLiteral("Hi there"));

        // Typing in the content leaves the message; the next edit of the command takes it away.
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("!"));
        QVERIFY(error->isVisible());
        QTest::keyClick(sheet->commandField(), Qt::Key_Backspace);
        QVERIFY(!error->isVisible());
        QVERIFY(!sheet->showingDuplicateError());

        // Letter case counts here: ;Hi is a different command.
        GuiInput::retype(sheet->commandField(), QStringLiteral(";Hi"));
        QPointer<AddShortcutView> closing = sheet;
        GuiInput::click(sheet->addButton());
        QTRY_VERIFY(closing.isNull());
        QCOMPARE(fixture.store().shortcuts().size(), 2);
        QCOMPARE(fixture.store().shortcuts().last().command, QStringLiteral(";Hi"));
        QCOMPARE(fixture.store().shortcuts().last().content, QStringLiteral("Hi there!"));
    }

    void keyboard_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("adds");
        QTest::addColumn<bool>("closes");
        QTest::newRow("Ctrl+Return adds")
            << int(Qt::Key_Return) << int(Qt::ControlModifier) << true << true;
        QTest::newRow("Ctrl+Enter adds")
            << int(Qt::Key_Enter) << int(Qt::ControlModifier | Qt::KeypadModifier) << true << true;
        QTest::newRow("Escape cancels") << int(Qt::Key_Escape) << 0 << false << true;
        QTest::newRow("Return alone does nothing") << int(Qt::Key_Return) << 0 << false << false;
    }

    void keyboard() {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(bool, adds);
        QFETCH(bool, closes);
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        QCOMPARE(QApplication::activeWindow(), sheet);
        type(sheet, QStringLiteral(";k"), QStringLiteral("Keyboard"));
        QPointer<AddShortcutView> watched = sheet;
        QTest::keyClick(sheet->commandField(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        if (closes)
            QTRY_VERIFY(watched.isNull());
        else
            QVERIFY(watched && watched->isVisible());
        QCOMPARE(fixture.store().shortcuts().size(), adds ? 1 : 0);
        if (adds)
            QCOMPARE(fixture.store().shortcuts().first().content, QStringLiteral("Keyboard"));
    }

    void shortcutDoesNothingWhileAFieldIsEmpty() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        QTest::keyClicks(sheet->commandField(), QStringLiteral(";only"));
        QTest::keyClick(sheet->commandField(), Qt::Key_Return, Qt::ControlModifier);
        QTest::qWait(50);
        QVERIFY(sheet->isVisible());
        QVERIFY(fixture.store().shortcuts().isEmpty());
    }

    void cancelAddsNothing() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        type(sheet, QStringLiteral(";c"), QStringLiteral("Cancelled"));
        QPointer<AddShortcutView> closing = sheet;
        QCOMPARE(sheet->cancelButton()->toolTip(), QStringLiteral("Cancel"));
        GuiInput::click(sheet->cancelButton());
        QTRY_VERIFY(closing.isNull());
        QVERIFY(fixture.store().shortcuts().isEmpty());
        QVERIFY(!fixture.settings().contains(QStringLiteral("Shortcuts")));

        // The next sheet starts empty.
        AddShortcutView* next = openSheet(view);
        QVERIFY(next);
        QVERIFY(next->command().isEmpty());
        QVERIFY(next->content().isEmpty());
        QVERIFY(!next->showingDuplicateError());
    }

    void commandOfSpacesIsStoredAsTyped() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        type(sheet, QStringLiteral("   "), QStringLiteral(" "));
        QVERIFY(sheet->addButton()->isEnabled());
        GuiInput::click(sheet->addButton());
        QTRY_COMPARE(fixture.store().shortcuts().size(), 1);
        QCOMPARE(fixture.store().shortcuts().first().command, QStringLiteral("   "));
        QCOMPARE(fixture.store().shortcuts().first().content, QStringLiteral(" "));
    }

    void contentPlaceholderFollowsTheContent() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        auto* placeholder = sheet->findChild<QLabel*>(QStringLiteral("contentPlaceholder"));
        QVERIFY(placeholder);
        QCOMPARE(placeholder->text(), QStringLiteral("Enter your content here..."));
        QCOMPARE(sheet->commandField()->placeholderText(),
                 QStringLiteral("Enter shortcut (e.g. ;hello)"));
        QVERIFY(placeholder->isVisible());
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("a"));
        QVERIFY(!placeholder->isVisible());
        QTest::keyClick(sheet->contentEditor(), Qt::Key_Backspace);
        QVERIFY(placeholder->isVisible());
    }

    void commandFieldHighlightsWhileEdited() {
        EditorFixture fixture;
        const CategoryRef work = fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        view->setSelectedCategory(work);
        AddShortcutView* sheet = openSheet(view);
        QVERIFY(sheet);
        // The sheet puts the keyboard in the command field.
        QTRY_VERIFY(sheet->isCommandFieldFocused());
        sheet->contentEditor()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(!sheet->isCommandFieldFocused());
        sheet->commandField()->setFocus(Qt::MouseFocusReason);
        QTRY_VERIFY(sheet->isCommandFieldFocused());
    }

    void addSnippetNeedsASelectedCategory() {
        EditorFixture fixture;
        fixture.addCategory(QStringLiteral("Work"));
        ContentView* view = fixture.show();
        QVERIFY(view->selectedCategory());
        QVERIFY(view->addSnippetButton()->isEnabled());
        QCOMPARE(view->addSnippetButton()->toolTip(), QStringLiteral("Add Snippet"));
        // Ctrl-click on the selected category takes the selection away.
        const int row = view->categoryList()->selectionModel()->selectedRows().first().row();
        GuiInput::clickRow(view->categoryList(), row, Qt::ControlModifier);
        QVERIFY(!view->selectedCategory());
        QVERIFY(!view->addSnippetButton()->isEnabled());
        GuiInput::click(view->addSnippetButton());
        QVERIFY(!view->showingAddSheet());
    }
};

QTEST_MAIN(AddShortcutViewTest)
#include "AddShortcutViewTest.moc"
