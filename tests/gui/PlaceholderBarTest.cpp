// The placeholder menu, preview and warnings of both content forms: the detail pane and the
// New Snippet sheet.
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "PlaceholderBar.h"
#include "SnippetDetailView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputDialog>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

namespace {
// One of the two forms, open on a snippet whose content is "Hi ".
struct Form {
    EditorFixture fixture;
    Category work = fixture.addCategory(QStringLiteral("Work"));
    std::unique_ptr<AddSnippetDialog> sheet;
    CustomTextEditor* editor = nullptr;
    PlaceholderBar* bar = nullptr;
    QPushButton* save = nullptr; // the detail pane's

    explicit Form(bool detailPane) {
        if (detailPane) {
            fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hi "), work.id);
            ContentView* view = fixture.show(work);
            GuiInput::clickRow(view->snippetList(), 0);
            editor = view->detailView()->contentEditor();
            bar = view->detailView()->placeholderBar();
            save = view->detailView()->saveButton();
        } else {
            sheet = std::make_unique<AddSnippetDialog>(fixture.store(), work.id, nullptr);
            sheet->show();
            editor = sheet->contentEditor();
            bar = sheet->placeholderBar();
            QTest::keyClicks(editor, QStringLiteral("Hi "));
        }
        editor->moveCursor(QTextCursor::End);
    }
    void choose(const QString& name) {
        QAction* action = bar->menuButton()->menu()->findChild<QAction*>("insert-" + name);
        QVERIFY(action);
        action->trigger();
    }
};
} // namespace

class PlaceholderBarTest : public QObject {
    Q_OBJECT
private slots:
    void menuInsertsAtTheCaretAndThePreviewFollows_data() {
        QTest::addColumn<bool>("detailPane");
        QTest::newRow("detail pane") << true;
        QTest::newRow("New Snippet sheet") << false;
    }
    void menuInsertsAtTheCaretAndThePreviewFollows() {
        QFETCH(bool, detailPane);
        Form form(detailPane);
        // Plain text: nothing to preview or warn of.
        QVERIFY(!form.bar->isPreviewShown());
        QVERIFY(!form.bar->isWarningShown());

        QGuiApplication::clipboard()->setText(QStringLiteral("Ada"));
        form.choose("clipboard");
        form.choose("cursor");
        QCOMPARE(form.editor->text(), QStringLiteral("Hi {{clipboard}}{{cursor}}"));
        QVERIFY(!form.save || form.save->isEnabled()); // an insertion is an edit
        QVERIFY(form.bar->isPreviewShown());
        QCOMPARE(form.bar->previewText(), QStringLiteral("Hi Ada"));
        QGuiApplication::clipboard()->setText(QStringLiteral("Grace"));
        QCOMPARE(form.bar->previewText(), QStringLiteral("Hi Grace"));

        // The format dialog's answer goes in at the caret, at the start now.
        form.editor->moveCursor(QTextCursor::Start);
        form.choose("date-format");
        auto* dialog = form.editor->window()->findChild<QInputDialog*>();
        QVERIFY(dialog);
        dialog->setTextValue(QStringLiteral("yyyy/"));
        dialog->accept();
        QCOMPARE(form.editor->text(), QStringLiteral("{{date:yyyy/}}Hi {{clipboard}}{{cursor}}"));
        QVERIFY(form.bar->previewText().startsWith(QDate::currentDate().toString("yyyy/")));
        QVERIFY(!form.bar->isWarningShown());

        // Typed as written, each said once: unknown, a second cursor, a brace never closed.
        form.editor->moveCursor(QTextCursor::End);
        QTest::keyClicks(form.editor, QStringLiteral(" {{name}}{{cursor}} {{date"));
        QVERIFY(form.bar->isWarningShown());
        const QStringList warnings = form.bar->warningText().split(u'\n');
        QCOMPARE(warnings.size(), 3);
        QVERIFY(warnings[0].contains(QStringLiteral("{{name}}")));
        QVERIFY(warnings[2].contains(QStringLiteral("{{date")));
        QVERIFY(form.bar->previewText().endsWith(QStringLiteral(" {{name}}{{cursor}} {{date")));
        // The editor's text is stored as written.
        QVERIFY(form.editor->text().endsWith(QStringLiteral("{{cursor}} {{date")));
    }

    // A content the editor shows only in part gets no menu, preview or warning.
    void notOfferedForAContentShownInPart() {
        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        const QString huge = "{{date}}" + QString(SnippetDetailView::editableContentLimit, u'x');
        fixture.addSnippet(QStringLiteral(";big"), huge, work.id);
        ContentView* view = fixture.show(work);
        GuiInput::clickRow(view->snippetList(), 0);
        SnippetDetailView* detail = view->detailView();
        QVERIFY(detail->contentIsCut());
        QVERIFY(!detail->placeholderBar()->isVisible());
        QVERIFY(!detail->placeholderBar()->menuButton()->isEnabled());
    }
};

QTEST_MAIN(PlaceholderBarTest)
#include "PlaceholderBarTest.moc"
