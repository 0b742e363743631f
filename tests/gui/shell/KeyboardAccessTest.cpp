// The editor, its forms and Preferences from the keyboard and for assistive technology: Tab
// reaches every control, each control has a name, and Tab leaves the content.
#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "Autostart.h"
#include "CategoryRowView.h"
#include "CustomTextEditor.h"
#include "EditCategoryDialog.h"
#include "GuiTestSupport.h"
#include "IsolatedTestMain.h"
#include "Preferences.h"
#include "PreferencesView.h"
#include "RecordingAutostartBackend.h"
#include "SnippetDetailView.h"
#include "SnippetForm.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QToolButton>

namespace {
// What assistive technology and the keyboard miss in `window`, the keyboard starting there.
QString missing(QWidget* window, QWidget* start) {
    start->setFocus(Qt::TabFocusReason);
    const QStringList unnamed = unnamedControls(window);
    const QStringList unreachable = unreachableControls(window);
    return QStringLiteral("unnamed: %1; unreachable: %2")
        .arg(unnamed.join(QLatin1String(", ")), unreachable.join(QLatin1String(", ")));
}
const QString nothingMissing = QStringLiteral("unnamed: ; unreachable: ");
} // namespace

class KeyboardAccessTest : public QObject {
    Q_OBJECT

private slots:
    void everyControlHasANameAndATabStop() {
        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"), work.id);
        ContentView* view = fixture.show();
        GuiInput::clickRow(view->snippetList(), 0);
        QVERIFY(view->detailView());
        QCOMPARE(missing(view, view->searchField()), nothingMissing);

        AddSnippetDialog* dialog = GuiInput::openDialog(
            view->addSnippetButton(), [view] { return view->addSnippetDialog(); });
        QVERIFY(dialog);
        QTest::keyClicks(dialog->form()->commandField(),
                         QStringLiteral(";h")); // the clash and its cure
        QCOMPARE(missing(dialog, dialog->form()->commandField()), nothingMissing);
        dialog->reject();

        AddCategoryDialog* categoryDialog = GuiInput::openDialog(
            view->addCategoryButton(), [view] { return view->addCategoryDialog(); });
        QVERIFY(categoryDialog);
        QCOMPARE(missing(categoryDialog, categoryDialog->nameField()), nothingMissing);
        categoryDialog->reject();

        CategoryRowView* row = view->categoryRow(work.id);
        EditCategoryDialog* renaming =
            GuiInput::openDialog(row->editButton(), [row] { return row->editDialog(); });
        QVERIFY(renaming);
        QCOMPARE(missing(renaming, renaming->nameField()), nothingMissing);
        renaming->reject();

        Preferences preferences(fixture.settings().path());
        Autostart autostart(std::make_unique<RecordingAutostartBackend>());
        PreferencesView preferencesView(autostart, preferences);
        preferences.setLayoutInUse(QStringLiteral("German")); // the layout choice shows too
        preferences.setExcludedApplications({QStringLiteral("XTerm")});
        preferencesView.show();
        QVERIFY(GuiInput::waitActive(&preferencesView));
        QCOMPARE(missing(&preferencesView, preferencesView.startAtLoginBox()), nothingMissing);
    }

    // Tab leaves the content for the next control; Ctrl+Tab types a tab character.
    void tabLeavesTheContent() {
        EditorFixture fixture;
        fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"),
                           Category::defaultCategoryId);
        ContentView* view = fixture.show();
        GuiInput::clickRow(view->snippetList(), 0);
        SnippetForm* form = view->detailView()->form();
        CustomTextEditor* content = form->contentEditor();
        content->setFocus(Qt::MouseFocusReason);
        content->moveCursor(QTextCursor::End);
        QTest::keyClick(content, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(form->content(), QStringLiteral("Hello\t"));
        QTest::keyClick(content, Qt::Key_Tab);
        QVERIFY(!content->hasFocus());
        QCOMPARE(form->content(), QStringLiteral("Hello\t"));
    }
};

TYPOLET_ISOLATED_TEST_MAIN(KeyboardAccessTest)
#include "KeyboardAccessTest.moc"
