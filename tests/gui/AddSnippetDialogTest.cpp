// Adding a snippet from the main window, end to end: the sheet, its rules and the store.
#include "AddSnippetDialog.h"
#include "TriggerOption.h"
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "SnippetDetailView.h"
#include "Timestamp.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QPushButton>

namespace {
// The window with "Work" (holding the `existing` commands) selected and the sheet open.
struct OpenSheet {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    ContentView* view = nullptr;
    AddSnippetDialog* sheet = nullptr;
    explicit OpenSheet(const QStringList& existing = {}) {
        for (const QString& command : existing)
            fixture.addSnippet(command, QStringLiteral("x"), work.id);
        view = fixture.show(work);
        sheet = open();
    }
    AddSnippetDialog* open() {
        return GuiInput::openSheet(view->addSnippetButton(), [this] { return view->addSheet(); });
    }
    const QList<Snippet>& stored() { return fixture.store().snippets(); }
};
} // namespace

class AddSnippetDialogTest : public QObject {
    Q_OBJECT

private slots:
    void addsTheSnippetOnceItsCommandIsNew() {
        OpenSheet s({QStringLiteral(";hi")});
        AddSnippetDialog* sheet = s.sheet;
        QVERIFY(sheet);
        auto* placeholder = sheet->findChild<QLabel*>(QStringLiteral("contentPlaceholder"));
        // The keyboard starts in the command field, which highlights while it is edited.
        QTRY_VERIFY(sheet->isCommandFieldFocused());
        sheet->contentEditor()->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(!sheet->isCommandFieldFocused());
        sheet->commandField()->setFocus(Qt::MouseFocusReason);
        QTRY_VERIFY(sheet->isCommandFieldFocused());
        // Both texts are needed; the content's placeholder shows while the content is empty.
        QVERIFY(!sheet->addButton()->isEnabled());
        QTest::keyClicks(sheet->commandField(), QStringLiteral(";hi"));
        QVERIFY(!sheet->addButton()->isEnabled());
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("a"));
        QVERIFY(!placeholder->isVisible());
        QTest::keyClick(sheet->contentEditor(), Qt::Key_Backspace);
        QVERIFY(placeholder->isVisible());
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("Hi,"));
        QTest::keyClick(sheet->contentEditor(), Qt::Key_Return);
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("Ada"));
        // An existing command is refused; the texts stay.
        auto* error = sheet->findChild<QWidget*>(QStringLiteral("duplicateError"));
        QVERIFY(!error->isVisible());
        GuiInput::click(sheet->addButton());
        QVERIFY(error->isVisible());
        QCOMPARE(error->findChild<QLabel*>(QStringLiteral("errorMessage"))->text(),
                 QStringLiteral("This command already exists"));
        QCOMPARE((QStringList{sheet->command(), sheet->content()}),
                 (QStringList{";hi", "Hi,\nAda"}));
        QCOMPARE(s.stored().size(), 1);
        // Typing in the content leaves the message; the next edit of the command hides it.
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("!"));
        QVERIFY(error->isVisible());
        QTest::keyClick(sheet->commandField(), Qt::Key_Backspace);
        QVERIFY(!error->isVisible());
        // Letter case counts, and nothing is trimmed: ";Hi " is new.
        GuiInput::retype(sheet->commandField(), QStringLiteral(";Hi "));
        const double before = Timestamp::now();
        QVERIFY(GuiInput::clickCloses(sheet->addButton()));
        QCOMPARE(commandsOf(s.stored()), (QStringList{";hi", ";Hi "}));
        QCOMPARE(commandsOf(s.fixture.reloaded()->snippets()), commandsOf(s.stored()));
        const Snippet added = s.stored().last();
        QCOMPARE(added.content, QStringLiteral("Hi,\nAda!"));
        QCOMPARE(added.categoryId, s.work.id);
        QVERIFY(added.createdAt >= before - 1 && added.createdAt <= Timestamp::now() + 1);
        // Selected at once, in the list and in the detail pane.
        QCOMPARE(Shown::rows(s.view->snippetList()), (QStringList{";hi", "*;Hi "}));
        QCOMPARE(s.view->detailView()->snippetId(), added.id);
        // The next sheet starts empty, and Cancel adds nothing.
        sheet = s.open();
        QVERIFY(sheet);
        QVERIFY(sheet->command().isEmpty() && sheet->content().isEmpty());
        // A command inside another is warned of, as typed, and may still be added.
        auto* clash = sheet->findChild<QLabel*>(QStringLiteral("clashWarning"));
        QTest::keyClicks(sheet->commandField(), QStringLiteral(";h"));
        QVERIFY(clash->isVisible() && clash->text().contains(QStringLiteral(";hi")));
        // The cure lets the shorter command wait for its word to end: this one, or the other.
        auto* option = sheet->triggerOption();
        GuiInput::click(option->cureButton());
        QVERIFY(option->checkBox()->isChecked() && !clash->isVisible());
        GuiInput::retype(sheet->commandField(), QStringLiteral(";hiya"));
        QVERIFY(clash->isVisible());
        GuiInput::click(option->cureButton());
        QVERIFY(!option->showingClash());
        QVERIFY(!s.stored().at(0).expandsAfterWordEnd()); // only with the add
        GuiInput::retype(sheet->commandField(), QStringLiteral(";c"));
        QVERIFY(!clash->isVisible());
        QTest::keyClicks(sheet->contentEditor(), QStringLiteral("Cancelled"));
        QVERIFY(GuiInput::clickCloses(sheet->cancelButton()));
        QCOMPARE(s.stored().size(), 2);
    }

    void keyboard_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("adds");
        QTest::addColumn<bool>("closes");
        const auto row = [](const char* name, const char* command, const char* content,
                            const char* keys, bool adds, bool closes) {
            QTest::newRow(name) << QString::fromUtf8(command) << QString::fromUtf8(content)
                                << QString::fromUtf8(keys) << adds << closes;
        };
        row("Ctrl+Return adds", ";k", "Keyboard", "Ctrl+Return", true, true);
        row("keypad Ctrl+Enter adds", ";k", "Keyboard", "Ctrl+Num+Enter", true, true);
        row("a blank command adds nothing", "   ", " ", "Ctrl+Return", false, false);
        row("Escape cancels", ";k", "Keyboard", "Esc", false, true);
        row("Return alone does nothing", ";k", "Keyboard", "Return", false, false);
        row("no content, no Ctrl+Return", ";k", "", "Ctrl+Return", false, false);
    }

    void keyboard() {
        QFETCH(QString, command);
        QFETCH(QString, content);
        QFETCH(QString, keys);
        QFETCH(bool, adds);
        QFETCH(bool, closes);
        OpenSheet s;
        QVERIFY(s.sheet);
        QTest::keyClicks(s.sheet->commandField(), command);
        QTest::keyClicks(s.sheet->contentEditor(), content);
        QPointer<AddSnippetDialog> watched = s.sheet;
        QTest::keySequence(s.sheet->commandField(), QKeySequence(keys));
        if (closes)
            QTRY_VERIFY(watched.isNull());
        else
            QVERIFY(watched && watched->isVisible());
        QCOMPARE(s.fixture.settings().contains(QStringLiteral("Shortcuts")), adds);
        QCOMPARE(s.stored().size(), adds ? 1 : 0);
        if (adds)
            QCOMPARE((QStringList{s.stored().first().command, s.stored().first().content}),
                     (QStringList{command, content}));
    }
};

QTEST_MAIN(AddSnippetDialogTest)
#include "AddSnippetDialogTest.moc"
