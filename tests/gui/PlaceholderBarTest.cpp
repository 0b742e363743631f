// The placeholder menu, preview and warnings, in the New Snippet dialog.
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
        AddSnippetDialog dialog(fixture.store(), fixture.addCategory("Work").id);
        PlaceholderBar* bar = dialog.form()->placeholderBar();
        const auto choose = [bar](const QString& name) {
            bar->menuButton()->menu()->findChild<QAction*>("insert-" + name)->trigger();
        };
        QGuiApplication::clipboard()->setText("Ada");
        // A content given to the editor (as the detail pane loads one), then one typed.
        dialog.form()->contentEditor()->setText("[{{clipboard}}]");
        QCOMPARE(bar->previewText(), "[Ada]");
        dialog.form()->contentEditor()->setText("");
        QTest::keyClicks(dialog.form()->contentEditor(), "Hi ");
        QVERIFY(!bar->isPreviewShown() && !bar->isWarningShown()); // plain text
        choose("clipboard");
        choose("cursor");
        QCOMPARE(dialog.form()->content(), "Hi {{clipboard}}{{cursor}}");
        QCOMPARE(bar->previewText(), "Hi Ada");
        QGuiApplication::clipboard()->setText("Grace");
        QCOMPARE(bar->previewText(), "Hi Grace");

        dialog.form()->contentEditor()->moveCursor(QTextCursor::Start);
        choose("date-format");
        auto* format = dialog.findChild<QInputDialog*>();
        format->setTextValue("yyyy/");
        format->accept();
        QCOMPARE(dialog.form()->content(), "{{date:yyyy/}}Hi {{clipboard}}{{cursor}}");
        QVERIFY(bar->previewText().startsWith(QDate::currentDate().toString("yyyy/")));

        // Unknown, a second cursor, never closed: typed as written, each warned of.
        dialog.form()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(dialog.form()->contentEditor(), " {{name}}{{cursor}} {{date");
        QCOMPARE(bar->warningText().split(u'\n').size(), 3);
        QVERIFY(bar->warningText().contains("{{name}}"));
        QVERIFY(bar->previewText().endsWith(" {{name}}{{cursor}} {{date"));
    }
};

QTEST_MAIN(PlaceholderBarTest)
#include "PlaceholderBarTest.moc"
