// The snippet's fields where they are edited: the "New Snippet" dialog and the detail pane
// share one form, so its rules are checked in both places; then what each place adds (adding
// and selecting; saving, the toast, a content too long to edit).
#include "SnippetForm.h"
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "SnippetDetailView.h"
#include "Timestamp.h"
#include "ToastView.h"
#include "TriggerOption.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QSignalSpy>

namespace {
// Work: ;hi ;bye, the window showing Work.
struct Editing {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    Snippet hi = fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"), work.id);
    Snippet bye = fixture.addSnippet(QStringLiteral(";bye"), QStringLiteral("Goodbye"), work.id);
    ContentView* view = fixture.show(work);

    AddSnippetDialog* openDialog() {
        return GuiInput::openDialog(view->addSnippetButton(),
                                    [this] { return view->addSnippetDialog(); });
    }
    SnippetDetailView* select(int row) {
        GuiInput::clickRow(view->snippetList(), row);
        return view->detailView();
    }
    Snippet stored(const QUuid& id) { return *fixture.store().snippet(id); }
};

QString errorShown(const SnippetForm* form) {
    if (!form->showingCommandError())
        return {};
    return form->findChild<QLabel*>(QStringLiteral("errorMessage"))->text();
}
} // namespace

class SnippetFormTest : public QObject {
    Q_OBJECT

private slots:
    // The store's refusal reaches the user in both places (the store's tests hold the rules);
    // Ctrl+Return submits. The dialog keeps Add off for a blank command.
    void aRefusedCommandIsShown_data() {
        QTest::addColumn<bool>("inDialog");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("dialog: taken") << true << ";bye" << "This command already exists";
        QTest::newRow("pane: blank") << false << "  " << "blank";
    }
    void aRefusedCommandIsShown() {
        QFETCH(bool, inDialog);
        QFETCH(QString, command);
        QFETCH(QString, refusal);
        Editing e;
        AddSnippetDialog* dialog = inDialog ? e.openDialog() : nullptr;
        SnippetForm* form = inDialog ? dialog->form() : e.select(0)->form();
        QVERIFY(form);
        GuiInput::retype(form->commandField(), command);
        if (inDialog)
            QTest::keyClicks(form->contentEditor(), QStringLiteral("Hi,"));
        QTest::keyClick(form->commandField(), Qt::Key_Return, Qt::ControlModifier);
        const QStringList stored = commandsOf(e.fixture.store().snippets());
        QVERIFY2(errorShown(form).contains(refusal), qPrintable(errorShown(form)));
        QCOMPARE(stored, (QStringList{";hi", ";bye"}));
        QCOMPARE(form->command(), command); // the texts stay as typed
        // Typing in the content leaves the message; the next edit of the command hides it.
        QTest::keyClicks(form->contentEditor(), QStringLiteral("!"));
        QVERIFY(form->showingCommandError());
        QTest::keyClick(form->commandField(), Qt::Key_Backspace);
        QVERIFY(!form->showingCommandError());
    }

    // Tab goes in reading order: command, content, then the options and the buttons.
    void tabFollowsTheReadingOrder_data() {
        QTest::addColumn<bool>("inDialog");
        QTest::newRow("dialog") << true;
        QTest::newRow("pane") << false;
    }
    void tabFollowsTheReadingOrder() {
        QFETCH(bool, inDialog);
        Editing e;
        QWidget* place = inDialog ? static_cast<QWidget*>(e.openDialog()) : e.select(0);
        QVERIFY(place);
        SnippetForm* form = place->findChild<SnippetForm*>();
        form->commandField()->setFocus(Qt::OtherFocusReason);
        QTRY_VERIFY(form->commandField()->hasFocus());
        const QStringList order = GuiInput::tabThrough(place->window(), 9);
        QCOMPARE(order.mid(0, 6), (QStringList{"QLineEdit Command", "CustomTextEditor Content",
                                               "QToolButton Insert a placeholder",
                                               "QCheckBox afterWordEnd", "QCheckBox matchCase",
                                               "QComboBox Category"}));
        // Then the buttons (Add and Save are off: nothing to add or save yet).
        QCOMPARE(order.at(6), inDialog ? QStringLiteral("QPushButton cancelButton")
                                       : QStringLiteral("QPushButton deleteButton"));
    }

    void addingASnippet() {
        Editing e;
        AddSnippetDialog* dialog = e.openDialog();
        QVERIFY(dialog);
        SnippetForm* form = dialog->form();
        // The keyboard starts in the command; both texts are needed.
        QTRY_VERIFY(form->commandField()->hasFocus());
        QVERIFY(!dialog->submitButton()->isEnabled());
        QTest::keyClicks(form->commandField(), QStringLiteral(";Hi "));
        QTest::keyClick(form->commandField(), Qt::Key_Return); // Return alone never submits
        QVERIFY(!dialog->submitButton()->isEnabled());
        QTest::keyClicks(form->contentEditor(), QStringLiteral("Hi,"));
        QTest::keyClick(form->contentEditor(), Qt::Key_Return); // a line break
        QTest::keyClicks(form->contentEditor(), QStringLiteral("Ada!"));
        QTest::keyClick(form->commandField(), Qt::Key_Return);
        QVERIFY(dialog->isVisible());
        const double before = Timestamp::now();
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        const Snippet added = e.fixture.store().snippets().last();
        QCOMPARE((QStringList{added.command, added.content}), (QStringList{";Hi ", "Hi,\nAda!"}));
        QCOMPARE(added.categoryId, e.work.id);
        QVERIFY(added.createdAt >= before - 1 && added.createdAt <= Timestamp::now() + 1);
        // Selected at once, in the list and in the pane.
        QCOMPARE(Shown::rows(e.view->snippetList()), (QStringList{";hi", ";bye", "*;Hi "}));
        QCOMPARE(e.view->detailView()->snippetId(), added.id);
        // The next dialog starts empty; Escape and Cancel add nothing.
        for (const bool byEscape : {true, false}) {
            dialog = e.openDialog();
            QVERIFY(dialog);
            QVERIFY(dialog->form()->command().isEmpty() && dialog->form()->content().isEmpty());
            QTest::keyClicks(dialog->form()->commandField(), QStringLiteral(";c"));
            QTest::keyClicks(dialog->form()->contentEditor(), QStringLiteral("Cancelled"));
            QPointer<AddSnippetDialog> closing = dialog;
            if (byEscape)
                QTest::keyClick(dialog->form()->commandField(), Qt::Key_Escape);
            else
                GuiInput::click(dialog->cancelButton());
            QTRY_VERIFY(closing.isNull());
            QCOMPARE(e.fixture.store().snippets().size(), 3);
        }
    }

    // A command inside another is warned of as typed; the cure lets the shorter command wait
    // for its word to end, whichever snippet it belongs to.
    void theClashWarningAndItsCure() {
        Editing e;
        AddSnippetDialog* dialog = e.openDialog();
        QVERIFY(dialog);
        TriggerOption* option = dialog->form()->triggerOption();
        auto* warning = dialog->findChild<QLabel*>(QStringLiteral("clashWarning"));
        QTest::keyClicks(dialog->form()->commandField(), QStringLiteral(";h"));
        QVERIFY(warning->isVisible() && warning->text().contains(QStringLiteral(";hi")));
        GuiInput::click(option->cureButton());
        QVERIFY(option->checkBox()->isChecked() && !warning->isVisible());
        GuiInput::retype(dialog->form()->commandField(), QStringLiteral(";hiya"));
        QVERIFY(warning->isVisible());
        GuiInput::click(option->cureButton());
        QVERIFY(!option->showingClash());
        QVERIFY(!e.stored(e.hi.id).expandsAfterWordEnd()); // only with the add
        GuiInput::retype(dialog->form()->commandField(), QStringLiteral(";c"));
        QVERIFY(!warning->isVisible());
    }

    void savingInThePane() {
        Editing e;
        SnippetDetailView* detail = e.select(0);
        SnippetForm* form = detail->form();
        QVERIFY(!detail->saveButton()->isEnabled());
        QSignalSpy toastShown(detail, &SnippetDetailView::toastVisibilityChanged);
        QTest::keyClick(form->commandField(), Qt::Key_End);
        QTest::keyClicks(form->commandField(), QStringLiteral("ya"));
        form->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(form->contentEditor(), QStringLiteral(" there"));
        QCheckBox* wait = form->triggerOption()->checkBox();
        QTest::mouseClick(wait, Qt::LeftButton, {}, QPoint(6, wait->height() / 2));
        GuiInput::click(detail->saveButton());
        // The same record with the new values; category and creation time kept.
        const Snippet saved = e.stored(e.hi.id);
        QCOMPARE((QStringList{saved.command, saved.content}),
                 (QStringList{";hiya", "Hello there"}));
        QVERIFY(saved.expandsAfterWordEnd());
        QCOMPARE(saved.categoryId, e.work.id);
        QCOMPARE(saved.createdAt, e.hi.createdAt);
        QCOMPARE(e.fixture.reloaded()->snippets().first().content, QStringLiteral("Hello there"));
        QCOMPARE(Shown::snippets(e.view), (QStringList{"Work", "*;hiya", ";bye"}));
        QCOMPARE(e.view->selectedSnippet()->command, QStringLiteral(";hiya"));
        QVERIFY(!detail->saveButton()->isEnabled());
        // The confirmation shows, covering neither button, then goes away on its own.
        ToastView* toast = detail->toast();
        QVERIFY(toast->isVisible());
        QTRY_VERIFY(detail->findChild<QPropertyAnimation*>()->state() ==
                    QAbstractAnimation::Stopped);
        for (const QWidget* button : {static_cast<QWidget*>(detail->saveButton()),
                                      static_cast<QWidget*>(detail->deleteButton())})
            QVERIFY(!toast->geometry().intersects(
                QRect(button->mapTo(detail, QPoint(0, 0)), button->size())));
        QTRY_VERIFY_WITH_TIMEOUT(!toast->isVisible(), 15000);
        QCOMPARE(toastShown.size(), 2);
        // The option shows again when the snippet is selected again.
        e.select(1);
        QVERIFY(!wait->isChecked());
        e.select(0);
        QVERIFY(wait->isChecked() && !detail->saveButton()->isEnabled());
        // Ctrl+Return saves from anywhere in the window, only a pending edit, only while a
        // snippet is shown.
        e.view->searchField()->setFocus();
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(!detail->showingToast());
        form->contentEditor()->setFocus();
        form->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(form->contentEditor(), QStringLiteral("!"));
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored(e.hi.id).content, QStringLiteral("Hello there!"));
        QTest::keyClicks(form->contentEditor(), QStringLiteral("pending"));
        e.view->setSelectedSnippet(std::nullopt);
        QTest::keyClick(e.view->searchField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored(e.hi.id).content, QStringLiteral("Hello there!"));
        // A snippet removed elsewhere while shown is not saved back.
        e.select(0);
        QTest::keyClicks(form->contentEditor(), QStringLiteral("?"));
        QVERIFY(!e.fixture.store().removeSnippet(e.hi.id));
        QVERIFY(e.view->showingDetailPlaceholder());
        detail->save();
        QCOMPARE(commandsOf(e.fixture.store().snippets()), QStringList{";bye"});
    }

    // A content too long to lay out is shown in part, read-only; saving a new command keeps
    // the whole content, and an ordinary snippet is editable again afterwards.
    void aHugeContentIsShownInPartAndKeptWhole() {
        Editing e;
        QString huge(SnippetForm::editableLineLimit + 5, QLatin1Char('x'));
        huge[SnippetForm::editableLineLimit - 1] = QChar(0xD83D); // half of an emoji
        huge[SnippetForm::editableLineLimit] = QChar(0xDE00);
        const Snippet big = e.fixture.addSnippet(QStringLiteral(";big"), huge, e.work.id);
        SnippetForm* form = e.select(0)->form();
        e.view->setSelectedSnippet(big);
        QVERIFY(form->contentIsCut() && form->contentEditor()->isReadOnly());
        QCOMPARE(form->contentEditor()->toPlainText(),
                 huge.left(SnippetForm::editableLineLimit - 1));
        QTest::keyClick(form->commandField(), Qt::Key_End);
        QTest::keyClicks(form->commandField(), QStringLiteral("2"));
        QTest::keyClick(form->commandField(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(e.stored(big.id).command, QStringLiteral(";big2"));
        QCOMPARE(e.stored(big.id).content, huge);
        e.view->setSelectedSnippet(e.stored(e.hi.id));
        QVERIFY(!form->contentIsCut() && !form->contentEditor()->isReadOnly());
        QCOMPARE(form->content(), QStringLiteral("Hello"));
    }
};

QTEST_MAIN(SnippetFormTest)
#include "SnippetFormTest.moc"
