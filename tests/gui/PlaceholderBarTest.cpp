// The placeholder menu, preview and warnings, in the New Snippet sheet.
#include "PlaceholderBar.h"
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMenu>
#include <QToolButton>

class PlaceholderBarTest : public QObject {
    Q_OBJECT
private slots:
    void menuInsertsAtTheCaretAndThePreviewAndWarningsFollow() {
        EditorFixture fixture;
        AddSnippetDialog sheet(fixture.store(), fixture.addCategory("Work").id, nullptr);
        PlaceholderBar* bar = sheet.placeholderBar();
        const auto choose = [bar](const QString& name) {
            bar->menuButton()->menu()->findChild<QAction*>("insert-" + name)->trigger();
        };
        QGuiApplication::clipboard()->setText("Ada");
        // A content given to the editor (as the detail pane loads one), then one typed.
        sheet.contentEditor()->setText("[{{clipboard}}]");
        QCOMPARE(bar->previewText(), "[Ada]");
        sheet.contentEditor()->setText("");
        QTest::keyClicks(sheet.contentEditor(), "Hi ");
        QVERIFY(!bar->isPreviewShown() && !bar->isWarningShown()); // plain text
        choose("clipboard");
        choose("cursor");
        QCOMPARE(sheet.content(), "Hi {{clipboard}}{{cursor}}");
        QCOMPARE(bar->previewText(), "Hi Ada");
        QGuiApplication::clipboard()->setText("Grace");
        QCOMPARE(bar->previewText(), "Hi Grace");

        sheet.contentEditor()->moveCursor(QTextCursor::Start);
        choose("date-format");
        auto* dialog = sheet.findChild<QInputDialog*>();
        dialog->setTextValue("yyyy/");
        dialog->accept();
        QCOMPARE(sheet.content(), "{{date:yyyy/}}Hi {{clipboard}}{{cursor}}");
        QVERIFY(bar->previewText().startsWith(QDate::currentDate().toString("yyyy/")));

        // Unknown, a second cursor, never closed: typed as written, each warned of.
        sheet.contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(sheet.contentEditor(), " {{name}}{{cursor}} {{date");
        QCOMPARE(bar->warningText().split(u'\n').size(), 3);
        QVERIFY(bar->warningText().contains("{{name}}"));
        QVERIFY(bar->previewText().endsWith(" {{name}}{{cursor}} {{date"));
    }
};

QTEST_MAIN(PlaceholderBarTest)
#include "PlaceholderBarTest.moc"
