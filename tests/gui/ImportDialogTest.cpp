// Importing a match file from the editor: the dialog shows the command that clashes, and the
// choice made for it is what the store does.
#include "ImportDialog.h"
#include "GuiTestSupport.h"
#include "LibraryTransfer.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>

class ImportDialogTest : public QObject {
    Q_OBJECT
private slots:
    void theClashIsShownAndTheChoiceReachesTheStore() {
        EditorFixture fixture;
        fixture.addSnippet(";a", "old", Category::defaultCategoryId);
        ContentView* view = fixture.show();
        QTemporaryDir dir;
        QFile file(dir.filePath("work.yml"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("matches:\n  - trigger: \";a\"\n    replace: \"new\"\n"
                   "  - trigger: \";b\"\n    replace: \"bee\"\n  - regex: \"x\"\n    replace: y\n");
        file.close();

        LibraryTransfer transfer(fixture.store(), *view);
        transfer.importFrom(file.fileName());
        ImportDialog* dialog = transfer.importDialog();
        QVERIFY(dialog && GuiInput::waitActive(dialog));
        QCOMPARE(dialog->table()->item(0, 0)->text(), ";a");
        QCOMPARE(dialog->table()->item(1, 2)->text(), "work");
        QVERIFY(dialog->resolutionChoice(0) && !dialog->resolutionChoice(1));
        QCOMPARE(dialog->resolutionChoice(0)->currentText(), "Skip");
        QVERIFY(dialog->summary()->text().contains("1 entry"));

        // "Replace" for every clash, from the keyboard.
        dialog->allClashesChoice()->setFocus();
        QTest::keyClick(dialog->allClashesChoice(), Qt::Key_Down);
        QTest::keyClick(dialog->allClashesChoice(), Qt::Key_Down);
        QCOMPARE(dialog->resolutionChoice(0)->currentText(), "Replace");
        QVERIFY(GuiInput::clickCloses(dialog->importButton()));

        const auto reloaded = fixture.reloaded();
        QCOMPARE(commandsOf(reloaded->snippets()), (QStringList{";a", ";b"}));
        QCOMPARE(reloaded->snippets()[0].content, "new");
        QCOMPARE(reloaded->snippets()[1].content, "bee");
        QCOMPARE(reloaded->category(reloaded->snippets()[1].categoryId)->name, "work");
    }
};

QTEST_MAIN(ImportDialogTest)
#include "ImportDialogTest.moc"
