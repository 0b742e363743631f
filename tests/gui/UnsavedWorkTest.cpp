// Work in the editor is never dropped: a warning's cure changes nothing until confirmed, a shown
// snippet follows the store and saves only what the user changed, and edits not yet saved are
// kept until the user says what becomes of them.
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "SnippetDetailView.h"
#include "TriggerOption.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>

namespace {
const QString unsavedTitle = QStringLiteral("Unsaved Changes");

// Work: ;br ;hi, the window showing Work.
struct Library {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    Snippet br = fixture.addSnippet(QStringLiteral(";br"), QStringLiteral("Best regards"), work.id);
    Snippet hi = fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"), work.id);
    ContentView* view = fixture.show(work);

    Snippet stored(const QUuid& id) { return *fixture.store().snippet(id); }
    bool brWaits() { return stored(br.id).expandsAfterWordEnd(); }
    SnippetDetailView* select(int row) {
        GuiInput::clickRow(view->snippetList(), row);
        return view->detailView();
    }
    AddSnippetDialog* openDialog() {
        return GuiInput::openDialog(view->addSnippetButton(),
                                    [this] { return view->addSnippetDialog(); });
    }
};
} // namespace

class UnsavedWorkTest : public QObject {
    Q_OBJECT

private slots:
    // Typing ";brb" while ";br" exists warns, and offers to let ";br" wait for a word end.
    void theCureChangesAnotherSnippetOnlyWithTheAdd() {
        Library lib;
        // Cancel leaves every snippet as it was; with the snippet added, the cure is made too.
        for (const bool add : {false, true}) {
            AddSnippetDialog* dialog = lib.openDialog();
            QVERIFY(dialog);
            QTest::keyClicks(dialog->form()->commandField(), QStringLiteral(";brb"));
            QTest::keyClicks(dialog->form()->contentEditor(), QStringLiteral("Be right back"));
            GuiInput::click(dialog->form()->triggerOption()->cureButton());
            QVERIFY(!lib.brWaits());
            QVERIFY(GuiInput::clickCloses(add ? dialog->submitButton() : dialog->cancelButton()));
            QCOMPARE(lib.fixture.reloaded()->snippets().first().expandsAfterWordEnd(), add);
        }
    }

    // The shown snippet changes elsewhere (another window, another program): the view shows
    // the change, keeps what the user edited, and a save writes only the user's edits.
    void aShownSnippetFollowsTheStore() {
        Library lib;
        SnippetDetailView* detail = lib.select(0);
        QCheckBox* option = detail->form()->triggerOption()->checkBox();
        QVERIFY(!option->isChecked());
        QVERIFY(!lib.fixture.store().updateSnippet(lib.br, lib.br.command, lib.br.content,
                                                   std::nullopt, Snippet::Trigger::AfterWordEnd));
        QVERIFY(option->isChecked());
        QVERIFY(!detail->saveButton()->isEnabled());
        // A small edit of the content, saved, keeps the option.
        detail->form()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(detail->form()->contentEditor(), QStringLiteral(","));
        GuiInput::click(detail->saveButton());
        QVERIFY(lib.brWaits());
        QCOMPARE(lib.stored(lib.br.id).content, QStringLiteral("Best regards,"));
        // An edit of the command pending while the content changes elsewhere: both stay.
        QTest::keyClick(detail->form()->commandField(), Qt::Key_End);
        QTest::keyClicks(detail->form()->commandField(), QStringLiteral("x"));
        Snippet now = lib.stored(lib.br.id);
        QVERIFY(!lib.fixture.store().updateSnippet(now, now.command, QStringLiteral("Regards")));
        QCOMPARE(detail->form()->commandField()->text(), QStringLiteral(";brx"));
        QCOMPARE(detail->form()->contentEditor()->toPlainText(), QStringLiteral("Regards"));
        QVERIFY(detail->saveButton()->isEnabled());
        GuiInput::click(detail->saveButton());
        now = lib.stored(lib.br.id);
        QCOMPARE((QStringList{now.command, now.content}), (QStringList{";brx", "Regards"}));
        QVERIFY(now.expandsAfterWordEnd());
    }

    // Leaving an edited snippet asks; each answer does what it says.
    void leavingAnEditAsks_data() {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("shownAfter");
        QTest::addColumn<QString>("storedContent");
        QTest::addColumn<bool>("modifiedAfter");
        QTest::newRow("Save") << "Save" << ";hi" << "Best regards!" << false;
        QTest::newRow("Discard") << "Discard" << ";hi" << "Best regards" << false;
        QTest::newRow("Cancel") << "Cancel" << ";br" << "Best regards" << true;
    }
    void leavingAnEditAsks() {
        QFETCH(QString, answer);
        QFETCH(QString, shownAfter);
        QFETCH(QString, storedContent);
        QFETCH(bool, modifiedAfter);
        Library lib;
        SnippetDetailView* detail = lib.select(0);
        // Marked as modified, with Save on, only while the texts differ from the stored ones.
        QVERIFY(!detail->saveButton()->isEnabled() && !lib.view->isWindowModified());
        detail->form()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(detail->form()->contentEditor(), QStringLiteral("!"));
        QVERIFY(detail->saveButton()->isEnabled() && lib.view->isWindowModified());
        QTest::keyClick(detail->form()->contentEditor(), Qt::Key_Backspace);
        QVERIFY(!detail->saveButton()->isEnabled() && !lib.view->isWindowModified());
        QTest::keyClicks(detail->form()->contentEditor(), QStringLiteral("!"));

        AlertAnswer asked(unsavedTitle, answer);
        lib.select(1);
        QTRY_VERIFY(asked.answered());
        QVERIFY(asked.message().contains(QStringLiteral(";br")));
        QTRY_COMPARE(detail->form()->commandField()->text(), shownAfter);
        QCOMPARE(lib.stored(lib.br.id).content, storedContent);
        QCOMPARE(lib.view->isWindowModified(), modifiedAfter);
        QCOMPARE(Shown::rows(lib.view->snippetList()).contains(QStringLiteral("*") + shownAfter),
                 true);
        if (modifiedAfter)
            QCOMPARE(detail->form()->content(), QStringLiteral("Best regards!"));
    }

    // A search that would hide the snippet being edited asks the same; Cancel keeps the search.
    void searchHidingAnEditAsks_data() {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("searchAfter");
        QTest::addColumn<QString>("storedContent");
        QTest::newRow("Save") << "Save" << "rex" << "Best regards!";
        QTest::newRow("Discard") << "Discard" << "rex" << "Best regards";
        QTest::newRow("Cancel") << "Cancel" << "re" << "Best regards";
    }
    void searchHidingAnEditAsks() {
        QFETCH(QString, answer);
        QFETCH(QString, searchAfter);
        QFETCH(QString, storedContent);
        Library lib;
        SnippetDetailView* detail = lib.select(0);
        detail->form()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(detail->form()->contentEditor(), QStringLiteral("!"));
        // A search that keeps it in the list asks nothing.
        AlertAnswer asked(unsavedTitle, answer);
        QTest::keyClicks(lib.view->searchField(), QStringLiteral("re"));
        QVERIFY(!asked.answered());
        QCOMPARE(Shown::rows(lib.view->snippetList()), QStringList{"*;br"});
        QTest::keyClicks(lib.view->searchField(), QStringLiteral("x"));
        QVERIFY(asked.answered());
        QCOMPARE(lib.view->searchField()->text(), searchAfter);
        QCOMPARE(lib.stored(lib.br.id).content, storedContent);
        // The pane shows the snippet only while the list does.
        const bool shown = !lib.view->showingDetailPlaceholder();
        QCOMPARE(shown, answer == QStringLiteral("Cancel"));
        QCOMPARE(Shown::rows(lib.view->snippetList()),
                 shown ? QStringList{"*;br"} : QStringList{});
        if (shown)
            QCOMPARE(detail->form()->content(), QStringLiteral("Best regards!"));
    }

    // The window asks the same before it lets the program end; automatic saving asks nothing.
    void quittingAndAutomaticSaving() {
        Library lib;
        SnippetDetailView* detail = lib.select(0);
        GuiInput::retype(detail->form()->commandField(), QStringLiteral(";bye"));
        {
            AlertAnswer asked(unsavedTitle, QStringLiteral("Cancel"));
            QVERIFY(!lib.view->settleEdits());
            QVERIFY(asked.answered());
            QCOMPARE(detail->form()->command(), QStringLiteral(";bye"));
        }
        {
            AlertAnswer asked(unsavedTitle, QStringLiteral("Save"));
            QVERIFY(lib.view->settleEdits());
            QVERIFY(asked.answered());
            QCOMPARE(lib.stored(lib.br.id).command, QStringLiteral(";bye"));
        }
        QVERIFY(lib.view->settleEdits()); // nothing left to ask about
        lib.view->setSaveEditsOnLeave(true);
        GuiInput::retype(detail->form()->commandField(), QStringLiteral(";brr"));
        AlertAnswer never(unsavedTitle, QStringLiteral("Cancel"));
        lib.select(1);
        QTRY_COMPARE(detail->form()->commandField()->text(), QStringLiteral(";hi"));
        QCOMPARE(lib.stored(lib.br.id).command, QStringLiteral(";brr"));
        // A save the store refuses keeps the user there, with the reason shown.
        GuiInput::retype(detail->form()->commandField(), QStringLiteral(";brr"));
        QVERIFY(!lib.view->settleEdits());
        QVERIFY(detail->form()->showingCommandError());
        QCOMPARE(lib.stored(lib.hi.id).command, QStringLiteral(";hi"));
        QVERIFY(!never.answered());
    }

    // Escape in the editor puts the stored texts back.
    void escapeReverts() {
        Library lib;
        SnippetDetailView* detail = lib.select(0);
        detail->form()->triggerOption()->checkBox()->click();
        GuiInput::retype(detail->form()->commandField(), QStringLiteral(";x"));
        QTest::keyClicks(detail->form()->contentEditor(), QStringLiteral("more"));
        QTest::keyClick(detail->form()->contentEditor(), Qt::Key_Escape);
        QCOMPARE((QStringList{detail->form()->command(), detail->form()->content()}),
                 (QStringList{";br", "Best regards"}));
        QVERIFY(!detail->form()->triggerOption()->checkBox()->isChecked());
        QVERIFY(!detail->saveButton()->isEnabled() && !lib.view->isWindowModified());
        QVERIFY(lib.view->settleEdits());
    }
};

QTEST_MAIN(UnsavedWorkTest)
#include "UnsavedWorkTest.moc"
