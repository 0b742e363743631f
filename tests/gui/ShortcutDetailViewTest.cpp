// The detail pane: editing, saving with its duplicate rule, the toast, and reselection.
#include "ShortcutDetailView.h"
#include "ContentView.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "ToastView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

class ShortcutDetailViewTest : public QObject {
    Q_OBJECT

private:
    // Work: ;hi ;bye   and the window with ;hi selected.
    struct Editing {
        EditorFixture fixture;
        CategoryRef work;
        Shortcut hi;
        Shortcut bye;
        ContentView* view = nullptr;
        ShortcutDetailView* detail = nullptr;
        Editing() {
            work = fixture.addCategory(QStringLiteral("Work"));
            hi = fixture.addShortcut(QStringLiteral(";hi"), QStringLiteral("Hello"), work->id());
            bye =
                fixture.addShortcut(QStringLiteral(";bye"), QStringLiteral("Goodbye"), work->id());
            view = fixture.show();
            view->setSelectedCategory(work);
            GuiInput::clickRow(view->shortcutList(), 0);
            detail = view->detailView();
        }
        const Shortcut& stored(int index) { return fixture.store().shortcuts().at(index); }
    };

private slots:
    void showsTheSelectedSnippet() {
        Editing e;
        QVERIFY(e.detail);
        QCOMPARE(e.detail->shortcutId(), e.hi.id);
        QCOMPARE(e.detail->commandField()->text(), QStringLiteral(";hi"));
        QCOMPARE(e.detail->contentEditor()->toPlainText(), QStringLiteral("Hello"));
        QCOMPARE(e.detail->commandField()->placeholderText(), QStringLiteral("Command"));
        QCOMPARE(e.detail->saveButton()->toolTip(), QStringLiteral("Save Changes"));
        QCOMPARE(e.detail->deleteButton()->toolTip(), QStringLiteral("Delete Snippet"));
        QVERIFY(!e.detail->saveButton()->isEnabled());
    }

    void saveStoresTheEditAndShowsTheToast() {
        Editing e;
        QSignalSpy toast(e.detail, &ShortcutDetailView::toastVisibilityChanged);
        QTest::keyClick(e.detail->commandField(), Qt::Key_End);
        QTest::keyClicks(e.detail->commandField(), QStringLiteral("ya"));
        QVERIFY(e.detail->isEdited());
        QVERIFY(e.detail->saveButton()->isEnabled());
        e.detail->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral(" there"));
        GuiInput::click(e.detail->saveButton());

        // Same record, new texts, same category and creation time.
        QCOMPARE(e.fixture.store().shortcuts().size(), 2);
        QCOMPARE(e.stored(0).id, e.hi.id);
        QCOMPARE(e.stored(0).command, QStringLiteral(";hiya"));
        QCOMPARE(e.stored(0).content, QStringLiteral("Hello there"));
        QCOMPARE(e.stored(0).categoryId, e.work->id());
        QCOMPARE(e.stored(0).createdAt, e.hi.createdAt);
        QCOMPARE(e.fixture.reloadedStore()->shortcuts().first().command, QStringLiteral(";hiya"));

        // The list and the window's selection show the saved values.
        QCOMPARE(e.view->selectedShortcut()->command, QStringLiteral(";hiya"));
        QCOMPARE(e.view->shortcutList()->model()->index(0, 0).data().toString(),
                 QStringLiteral(";hiya"));
        QCOMPARE(e.view->shortcutList()->selectionModel()->selectedRows().first().row(), 0);

        // Save is off until the next keystroke.
        QVERIFY(!e.detail->isEdited());
        QVERIFY(!e.detail->saveButton()->isEnabled());

        // The toast, at the top, then gone on its own.
        QVERIFY(e.detail->showingToast());
        QVERIFY(e.detail->toast()->isVisible());
        QCOMPARE(e.detail->toast()->message(), QStringLiteral("Changes saved successfully!"));
        QCOMPARE(toast.size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(!e.detail->showingToast(), 15000);
        QTRY_VERIFY_WITH_TIMEOUT(!e.detail->toast()->isVisible(), 15000);
        QCOMPARE(toast.size(), 2);
        QCOMPARE(toast.at(1).at(0).toBool(), false);

        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("!"));
        QVERIFY(e.detail->saveButton()->isEnabled());
    }

    void toastSitsAtTheTopCentre() {
        Editing e;
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("x"));
        e.detail->save();
        ToastView* toast = e.detail->toast();
        // It slides in from above; once settled its badge is 20 below the top, centred.
        QTRY_COMPARE(toast->y(), 20 - ToastView::shadowMargin);
        QVERIFY(qAbs(toast->geometry().center().x() - e.detail->rect().center().x()) <= 1);
        QVERIFY(toast->width() < e.detail->width());
    }

    void ownCommandIsNoDuplicate() {
        Editing e;
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("Oh, "));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(!e.detail->showingDuplicateError());
        QCOMPARE(e.stored(0).command, QStringLiteral(";hi"));
        QCOMPARE(e.stored(0).content, QStringLiteral("Oh, Hello"));
    }

    void anotherSnippetsCommandIsRefusedUntilEdited() {
        Editing e;
        QWidget* error = e.detail->findChild<QLabel*>(QStringLiteral("duplicateError"));
        QVERIFY(error);
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";bye"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(e.detail->showingDuplicateError());
        QVERIFY(error->isVisible());
        QCOMPARE(qobject_cast<QLabel*>(error)->text(),
                 QStringLiteral("This command already exists"));
        QCOMPARE(e.stored(0).command, QStringLiteral(";hi"));
        QVERIFY(!e.detail->showingToast());
        QCOMPARE(e.detail->command(), QStringLiteral(";bye"));

        // Content edits leave the message; the command's next change takes it away.
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("x"));
        QVERIFY(error->isVisible());
        QTest::keyClick(e.detail->commandField(), Qt::Key_Backspace);
        QVERIFY(!error->isVisible());

        // Letter case counts: ;BYE is not ;bye.
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";BYE"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(!e.detail->showingDuplicateError());
        QCOMPARE(e.stored(0).command, QStringLiteral(";BYE"));
    }

    void emptyCommandCanBeSaved() {
        Editing e;
        GuiInput::retype(e.detail->commandField(), QString());
        QVERIFY(e.detail->saveButton()->isEnabled());
        GuiInput::click(e.detail->saveButton());
        QCOMPARE(e.stored(0).command, QString());
    }

    void ctrlReturnSavesOnlyWhenThereIsAnEdit() {
        Editing e;
        QCOMPARE(QApplication::activeWindow(), e.fixture.window());
        e.detail->contentEditor()->setFocus();
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(!e.detail->showingToast());
        QCOMPARE(e.detail->contentEditor()->toPlainText(), QStringLiteral("Hello"));

        e.detail->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("!"));
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(e.detail->showingToast());
        QCOMPARE(e.stored(0).content, QStringLiteral("Hello!"));
        // Return alone is a line break in the content, not a save.
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return);
        QCOMPARE(e.detail->content(), QStringLiteral("Hello!\n"));
        QCOMPARE(e.stored(0).content, QStringLiteral("Hello!"));

        // It works from anywhere in the window, e.g. the search field.
        e.view->searchField()->setFocus();
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored(0).content, QStringLiteral("Hello!\n"));
    }

    void ctrlReturnIsIgnoredWithoutASelectedSnippet() {
        Editing e;
        e.detail->contentEditor()->setFocus();
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("pending "));
        e.view->setSelectedShortcut(std::nullopt);
        QVERIFY(e.view->showingDetailPlaceholder());
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored(0).content, QStringLiteral("Hello"));
    }

    void reselectionDiscardsThePendingEdit() {
        Editing e;
        QTest::keyClicks(e.detail->commandField(), QStringLiteral("-draft"));
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("Draft "));
        QVERIFY(e.detail->isEdited());
        GuiInput::clickRow(e.view->shortcutList(), 1);
        QCOMPARE(e.detail->shortcutId(), e.bye.id);
        QCOMPARE(e.detail->command(), QStringLiteral(";bye"));
        QCOMPARE(e.detail->content(), QStringLiteral("Goodbye"));
        QVERIFY(!e.detail->isEdited());
        QVERIFY(!e.detail->saveButton()->isEnabled());
        GuiInput::clickRow(e.view->shortcutList(), 0);
        QCOMPARE(e.detail->command(), QStringLiteral(";hi"));
        QCOMPARE(e.detail->content(), QStringLiteral("Hello"));
        QCOMPARE(e.stored(0).command, QStringLiteral(";hi"));
    }

    void reselectionClearsTheDuplicateMessage() {
        Editing e;
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";bye"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(e.detail->showingDuplicateError());
        GuiInput::clickRow(e.view->shortcutList(), 1);
        QVERIFY(!e.detail->showingDuplicateError());
        QVERIFY(!e.detail->findChild<QLabel*>(QStringLiteral("duplicateError"))->isVisible());
    }

    void snippetDeletedElsewhereSavesNothing() {
        Editing e;
        QTest::keyClicks(e.detail->commandField(), QStringLiteral("!"));
        const QUuid id = e.detail->shortcutId();
        // Another part of the program removes it while the pane still shows it.
        e.fixture.store().removeShortcut(id);
        QVERIFY(e.view->showingDetailPlaceholder());
        e.detail->save();
        QCOMPARE(e.fixture.store().shortcuts().size(), 1);
        QVERIFY(!e.detail->showingToast());
    }
};

QTEST_MAIN(ShortcutDetailViewTest)
#include "ShortcutDetailViewTest.moc"
