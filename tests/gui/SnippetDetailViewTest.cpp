// The detail pane: editing, saving with its duplicate rule, the toast, and reselection.
#include "SnippetDetailView.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "ToastView.h"
#include "TriggerOption.h"

#include <QCheckBox>

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QPropertyAnimation>
#include <QSignalSpy>

namespace {
// Work: ;hi ;bye, and the window with ;hi selected.
struct Editing {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    Snippet hi = fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"), work.id);
    ContentView* view = nullptr;
    SnippetDetailView* detail = nullptr;
    QLabel* error = nullptr;
    Editing() {
        fixture.addSnippet(QStringLiteral(";bye"), QStringLiteral("Goodbye"), work.id);
        view = fixture.show(work);
        GuiInput::clickRow(view->snippetList(), 0);
        detail = view->detailView();
        error = detail->findChild<QLabel*>(QStringLiteral("duplicateError"));
    }
    Snippet stored() { return fixture.store().snippets().first(); }
    // The texts the pane shows, and those stored for ;hi.
    QStringList shown() const {
        return {detail->commandField()->text(), detail->contentEditor()->toPlainText()};
    }
    QStringList saved() { return {stored().command, stored().content}; }
};
} // namespace

class SnippetDetailViewTest : public QObject {
    Q_OBJECT

private slots:
    void saveStoresTheEditAndShowsTheToast() {
        Editing e;
        QCOMPARE(e.shown(), (QStringList{";hi", "Hello"}));
        QVERIFY(!e.detail->saveButton()->isEnabled());

        QSignalSpy toastShown(e.detail, &SnippetDetailView::toastVisibilityChanged);
        QTest::keyClick(e.detail->commandField(), Qt::Key_End);
        QTest::keyClicks(e.detail->commandField(), QStringLiteral("ya"));
        QVERIFY(e.detail->saveButton()->isEnabled());
        e.detail->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral(" there"));
        GuiInput::click(e.detail->saveButton());
        // Same record with the new texts; category and creation time kept.
        QCOMPARE(commandsOf(e.fixture.store().snippets()), (QStringList{";hiya", ";bye"}));
        QCOMPARE(e.saved(), (QStringList{";hiya", "Hello there"}));
        QCOMPARE(e.stored().id, e.hi.id);
        QCOMPARE(e.stored().categoryId, e.work.id);
        QCOMPARE(e.stored().createdAt, e.hi.createdAt);
        QCOMPARE(e.fixture.reloaded()->snippets().first().content, QStringLiteral("Hello there"));
        // The list and the window's selection show the saved values.
        QCOMPARE(Shown::snippets(e.view), (QStringList{"Work", "*;hiya", ";bye"}));
        QCOMPARE(e.view->selectedSnippet()->command, QStringLiteral(";hiya"));
        QVERIFY(!e.detail->saveButton()->isEnabled());
        // The confirmation shows, then goes away on its own.
        ToastView* toast = e.detail->toast();
        QVERIFY(toast->isVisible());
        // Where it comes to rest it covers neither Save nor Delete.
        QTRY_VERIFY(e.detail->findChild<QPropertyAnimation*>()->state() ==
                    QAbstractAnimation::Stopped);
        for (const QWidget* button : {static_cast<QWidget*>(e.detail->saveButton()),
                                      static_cast<QWidget*>(e.detail->deleteButton())})
            QVERIFY(!toast->geometry().intersects(
                QRect(button->mapTo(e.detail, QPoint(0, 0)), button->size())));
        QCOMPARE(toastShown.size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(!toast->isVisible(), 15000);
        QCOMPARE(toastShown.size(), 2);
        QCOMPARE(toastShown.at(1).at(0).toBool(), false);
        // Save is off until the next keystroke.
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("!"));
        QVERIFY(e.detail->saveButton()->isEnabled());
        // A snippet removed elsewhere while shown is not saved back.
        QVERIFY(!e.fixture.store().removeSnippet(e.hi.id));
        QVERIFY(e.view->showingDetailPlaceholder());
        e.detail->save();
        QCOMPARE(commandsOf(e.fixture.store().snippets()), QStringList{";bye"});
        QVERIFY(!e.detail->showingToast());
    }

    // The option is part of the snippet: switching it is an edit, saved with the texts and
    // shown again when the snippet is selected again.
    void theWordEndOptionIsSavedWithTheSnippet() {
        Editing e;
        QCheckBox* option = e.detail->triggerOption()->checkBox();
        QVERIFY(!option->isChecked());
        QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(6, option->height() / 2));
        QVERIFY(e.detail->saveButton()->isEnabled());
        GuiInput::click(e.detail->saveButton());
        QVERIFY(e.stored().expandsAfterWordEnd());
        QVERIFY(e.fixture.reloaded()->snippets().first().expandsAfterWordEnd());
        GuiInput::clickRow(e.view->snippetList(), 1);
        QVERIFY(!option->isChecked());
        GuiInput::clickRow(e.view->snippetList(), 0);
        QVERIFY(option->isChecked() && !e.detail->saveButton()->isEnabled());
    }

    void anotherSnippetsCommandIsRefusedUntilEdited() {
        Editing e;
        QVERIFY(e.error);
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";bye"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(e.error->isVisible());
        QCOMPARE(e.error->text(), QStringLiteral("This command already exists"));
        QCOMPARE(e.shown(), (QStringList{";bye", "Hello"}));
        QCOMPARE(e.saved(), (QStringList{";hi", "Hello"}));
        QVERIFY(!e.detail->showingToast());
        // Content edits leave the message; the command's next change takes it away.
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("x"));
        QVERIFY(e.error->isVisible());
        QTest::keyClick(e.detail->commandField(), Qt::Key_Backspace);
        QVERIFY(!e.error->isVisible());
        // Selecting another snippet, with the edit discarded, drops it and the message.
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";bye"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(e.error->isVisible());
        AlertAnswer discard(ContentView::unsavedTitle(), QStringLiteral("Discard"));
        GuiInput::clickRow(e.view->snippetList(), 1);
        QTRY_COMPARE(e.shown(), (QStringList{";bye", "Goodbye"}));
        QVERIFY(!e.detail->saveButton()->isEnabled());
        QVERIFY(!e.error->isVisible());
        GuiInput::clickRow(e.view->snippetList(), 0);
        QCOMPARE(e.shown(), (QStringList{";hi", "Hello"}));
        QCOMPARE(e.saved(), (QStringList{";hi", "Hello"}));
        // Letter case counts (;BYE is not ;bye).
        GuiInput::retype(e.detail->commandField(), QStringLiteral(";BYE"));
        GuiInput::click(e.detail->saveButton());
        QVERIFY(!e.error->isVisible());
        QCOMPARE(e.stored().command, QStringLiteral(";BYE"));
        // A blank command is refused with the reason: it would expand on every key.
        for (const QString& command : {QString(), QStringLiteral("  ")}) {
            GuiInput::retype(e.detail->commandField(), command);
            GuiInput::click(e.detail->saveButton());
            QVERIFY(e.error->isVisible());
            QVERIFY(e.error->text().contains(QStringLiteral("blank")));
            QCOMPARE(e.stored().command, QStringLiteral(";BYE"));
        }
    }

    void ctrlReturnSavesOnlyAPendingEdit() {
        Editing e;
        e.detail->contentEditor()->setFocus();
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(!e.detail->showingToast());
        QCOMPARE(e.detail->content(), QStringLiteral("Hello"));
        // An edit of the content alone: the snippet's own command is no duplicate.
        e.detail->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("!"));
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(e.detail->showingToast());
        QVERIFY(!e.error->isVisible());
        QCOMPARE(e.stored().content, QStringLiteral("Hello!"));
        // Return alone is a line break in the content, not a save.
        QTest::keyClick(e.detail->contentEditor(), Qt::Key_Return);
        QCOMPARE(e.detail->content(), QStringLiteral("Hello!\n"));
        QCOMPARE(e.stored().content, QStringLiteral("Hello!"));
        // It works from anywhere in the window...
        e.view->searchField()->setFocus();
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored().content, QStringLiteral("Hello!\n"));
        // ...while a snippet is selected.
        e.detail->contentEditor()->setFocus();
        QTest::keyClicks(e.detail->contentEditor(), QStringLiteral("pending"));
        e.view->setSelectedSnippet(std::nullopt);
        QVERIFY(e.view->showingDetailPlaceholder());
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored().content, QStringLiteral("Hello!\n"));
    }

    // A content too long to lay out is shown in part, read-only; saving a new command keeps
    // the whole content, and an ordinary snippet is editable again afterwards.
    void aHugeContentIsShownInPartAndKeptWhole() {
        Editing e;
        QString huge(SnippetDetailView::editableLineLimit + 5, QLatin1Char('x'));
        huge[SnippetDetailView::editableLineLimit - 1] = QChar(0xD83D); // half of an emoji
        huge[SnippetDetailView::editableLineLimit] = QChar(0xDE00);
        const Snippet big = e.fixture.addSnippet(QStringLiteral(";big"), huge, e.work.id);
        e.view->setSelectedSnippet(big);
        QVERIFY(e.detail->contentIsCut());
        QVERIFY(e.detail->contentEditor()->isReadOnly());
        QCOMPARE(e.detail->contentEditor()->toPlainText(),
                 huge.left(SnippetDetailView::editableLineLimit - 1));
        QTest::keyClick(e.detail->commandField(), Qt::Key_End);
        QTest::keyClicks(e.detail->commandField(), QStringLiteral("2"));
        QTest::keyClick(e.detail->commandField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.fixture.store().snippets().last().command, QStringLiteral(";big2"));
        QCOMPARE(e.fixture.store().snippets().last().content, huge);

        e.view->setSelectedSnippet(e.stored());
        QVERIFY(!e.detail->contentIsCut() && !e.detail->contentEditor()->isReadOnly());
        QCOMPARE(e.shown(), (QStringList{";hi", "Hello"}));
    }
};

QTEST_MAIN(SnippetDetailViewTest)
#include "SnippetDetailViewTest.moc"
