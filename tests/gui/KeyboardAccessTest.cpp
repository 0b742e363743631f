// The editor from the keyboard and for assistive technology: Tab goes through every control
// and out of the content, each control has a name, the lists show where the focus is.
#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"
#include "PlainButton.h"
#include "SnippetDetailView.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>

class KeyboardAccessTest : public QObject {
    Q_OBJECT

private slots:
    void everyControlHasAName() {
        EditorFixture fixture;
        const Category work = fixture.addCategory(QStringLiteral("Work"));
        fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"), work.id);
        ContentView* view = fixture.show();
        GuiInput::clickRow(view->snippetList(), 0);
        QVERIFY(view->detailView());
        QCOMPARE(unnamedControls(view).join(QLatin1Char(',')), QString());
        AddSnippetDialog* sheet =
            GuiInput::openSheet(view->addSnippetButton(), [view] { return view->addSheet(); });
        QVERIFY(sheet);
        QTest::keyClicks(sheet->commandField(), QStringLiteral(";h")); // with the clash warning
        QCOMPARE(unnamedControls(sheet).join(QLatin1Char(',')), QString());
        sheet->reject();
        AddCategoryDialog* categorySheet = GuiInput::openSheet(
            view->addCategoryButton(), [view] { return view->addCategorySheet(); });
        QVERIFY(categorySheet);
        QCOMPARE(unnamedControls(categorySheet).join(QLatin1Char(',')), QString());
    }

    // Tab leaves the content for the next control; Ctrl+Tab types a tab character.
    void tabLeavesTheContent() {
        EditorFixture fixture;
        fixture.addSnippet(QStringLiteral(";hi"), QStringLiteral("Hello"),
                           Category::defaultCategoryId);
        ContentView* view = fixture.show();
        GuiInput::clickRow(view->snippetList(), 0);
        CustomTextEditor* content = view->detailView()->contentEditor();
        content->setFocus(Qt::MouseFocusReason);
        content->moveCursor(QTextCursor::End);
        QTest::keyClick(content, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(view->detailView()->content(), QStringLiteral("Hello\t"));
        QTest::keyClick(content, Qt::Key_Tab);
        QVERIFY(!content->hasFocus());
        QCOMPARE(view->detailView()->content(), QStringLiteral("Hello\t"));
    }
};

QTEST_MAIN(KeyboardAccessTest)
#include "KeyboardAccessTest.moc"
