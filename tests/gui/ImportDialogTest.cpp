// Importing from the editor: the file is read while the window goes on, the dialog shows the
// commands that clash, and the choice made for each is what the store does.
#include "ImportDialog.h"
#include "GuiTestSupport.h"
#include "ImportCandidateModel.h"
#include "ImportJob.h"
#include "LibraryTransfer.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>

namespace {
QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& contents) {
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        return {};
    return file.fileName();
}

QString cell(const QAbstractItemModel* model, int row, int column) {
    return model->index(row, column).data().toString();
}

ImportPlan planOf(int count, const QString& content) {
    ImportPlan plan;
    for (int i = 0; i < count; ++i)
        plan.addSnippet(
            Snippet::create(";c" + QString::number(i), content, Category::defaultCategoryId));
    return plan;
}
} // namespace

class ImportDialogTest : public QObject {
    Q_OBJECT
private slots:
    void theClashIsShownAndTheChoiceReachesTheStore() {
        EditorFixture fixture;
        fixture.addSnippet(";a", "old", Category::defaultCategoryId);
        fixture.addSnippet(";c", "sea", Category::defaultCategoryId);
        ContentView* view = fixture.show();
        QTemporaryDir dir;
        const QString path =
            writeFile(dir, "work.yml",
                      "matches:\n  - trigger: \";a\"\n    replace: \"new\"\n  - trigger: \";b\"\n"
                      "    replace: \"bee\"\n  - trigger: \";c\"\n    replace: \"see\"\n"
                      "  - regex: \"x\"\n    replace: y\n"
                      "  - trigger: \";up\"\n    replace: \"{{up}}\"\n"
                      "    vars:\n      - name: up\n        type: shell\n");

        // Read on its own thread: the dialog comes once the window's loop has run.
        LibraryTransfer transfer(fixture.store(), *view);
        transfer.importFrom(path);
        QVERIFY(transfer.importJob() && !transfer.importDialog());
        QTRY_VERIFY(transfer.importDialog());
        ImportDialog* dialog = transfer.importDialog();
        QVERIFY(GuiInput::waitActive(dialog));
        const ImportCandidateModel* model = dialog->model();
        QCOMPARE(cell(model, 0, ImportCandidateModel::commandColumn), ";a");
        QCOMPARE(cell(model, 1, ImportCandidateModel::categoryColumn), "work");
        QCOMPARE(cell(model, 0, ImportCandidateModel::clashColumn), "Skip");
        QCOMPARE(cell(model, 1, ImportCandidateModel::clashColumn), "");
        QVERIFY(!(model->flags(model->index(1, ImportCandidateModel::clashColumn)) &
                  Qt::ItemIsEditable));
        QVERIFY(dialog->summary()->text().contains("2 entries"));
        // What Typolet cannot do is named before the import, and left out.
        QVERIFY2(dialog->summary()->text().contains(
                     "Left out: x (regular expression), ;up (shell). Typolet cannot do these."),
                 qPrintable(dialog->summary()->text()));

        // "Replace" for every clash, from the keyboard; then ";c" alone back to "Keep Both"
        // through its row's own choice.
        dialog->allClashesChoice()->setFocus();
        QTest::keyClick(dialog->allClashesChoice(), Qt::Key_Down);
        QTest::keyClick(dialog->allClashesChoice(), Qt::Key_Down);
        QCOMPARE(cell(model, 0, ImportCandidateModel::clashColumn), "Replace");
        QTableView* table = dialog->table();
        table->edit(model->index(2, ImportCandidateModel::clashColumn));
        auto* choice = table->viewport()->findChild<QComboBox*>();
        QVERIFY(choice && choice->currentText() == "Replace");
        QTest::keyClick(choice, Qt::Key_Up);
        QCOMPARE(cell(model, 2, ImportCandidateModel::clashColumn), "Keep Both");
        QVERIFY(GuiInput::clickCloses(dialog->importButton()));

        const auto reloaded = fixture.reloaded();
        QStringList stored;
        for (const Snippet& s : reloaded->snippets())
            stored.append(s.command + '=' + s.content + '@' +
                          reloaded->category(s.categoryId)->name);
        QCOMPARE(stored, (QStringList{";a=new@Uncategory", ";c=sea@Uncategory", ";b=bee@work",
                                      ";c=see@work"}));
    }

    // Cancel in the progress dialog: the reading stops, no import dialog comes, nothing is
    // imported.
    void cancelledReadingImportsNothing() {
        EditorFixture fixture;
        fixture.addSnippet(";a", "old", Category::defaultCategoryId);
        ContentView* view = fixture.show();
        QTemporaryDir dir;
        QByteArray matches = "matches:\n";
        for (int i = 0; i < 50'000; ++i)
            matches += "  - trigger: \";m" + QByteArray::number(i) + "\"\n    replace: x\n";
        const QString path = writeFile(dir, "many.yml", matches);

        LibraryTransfer transfer(fixture.store(), *view);
        transfer.importFrom(path);
        QPointer<ImportJob> job = transfer.importJob();
        QVERIFY(job && transfer.importProgress());
        QSignalSpy finished(job.data(), &ImportJob::finished);
        auto* cancel = transfer.importProgress()->findChild<QPushButton*>();
        QVERIFY(cancel);
        cancel->click();
        QVERIFY(job->isCancelled());
        QTRY_VERIFY(!job); // its thread ended and it was deleted
        QCOMPARE(finished.size(), 0);
        QVERIFY(!transfer.importDialog() && !transfer.importProgress());
        QCOMPARE(commandsOf(fixture.store().snippets()), QStringList{";a"});
        QCOMPARE(commandsOf(fixture.reloaded()->snippets()), QStringList{";a"});
    }

    // 100,000 clashing commands: a model of as many rows, and a choice made in it is the plan's.
    void aHundredThousandClashesAreOneModel() {
        EditorFixture fixture;
        constexpr int count = 100'000;
        QVERIFY(!fixture.store().importSnippets(planOf(count, "old")));
        ImportDialog dialog(fixture.store(), planOf(count, "new"));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCOMPARE(dialog.model()->rowCount(), count);
        QCOMPARE(dialog.clashCount(), count);
        const QModelIndex last =
            dialog.model()->index(count - 1, ImportCandidateModel::clashColumn);
        QVERIFY(dialog.model()->setData(last, int(ImportPlan::Resolution::keepBoth)));
        QCOMPARE(dialog.plan().resolutions[count - 1], ImportPlan::Resolution::keepBoth);
        QCOMPARE(dialog.plan().resolutions[0], ImportPlan::Resolution::skip);
        dialog.model()->setAllResolutions(ImportPlan::Resolution::replace);
        QCOMPARE(dialog.plan().resolutions.count(ImportPlan::Resolution::replace), count);
    }
};

QTEST_MAIN(ImportDialogTest)
#include "ImportDialogTest.moc"
