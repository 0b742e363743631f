// The editor's controls for snippets that adapt: "Match the command's case" in the snippet
// form, and the applications a category is limited to in its forms.
#include "AddCategoryDialog.h"
#include "AddSnippetDialog.h"
#include "ApplicationLimitEditor.h"
#include "CategoryRowView.h"
#include "CustomTextEditor.h"
#include "EditCategoryDialog.h"
#include "GuiTestSupport.h"
#include "SnippetDetailView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

namespace {
// The refusal shown in a form, if any.
QString errorOf(QWidget* place) {
    for (auto* line : place->findChildren<QWidget*>(QStringLiteral("duplicateError")))
        if (!line->isHidden())
            return line->findChild<QLabel*>(QStringLiteral("errorMessage"))->text();
    return {};
}
// A click on the box itself (a check box takes clicks on its box and text, not on the whole
// row it is laid out over).
void tick(QCheckBox* box) {
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->height() / 2, box->height() / 2));
}
EditCategoryDialog* openEditDialog(ContentView* view, const QUuid& category) {
    CategoryRowView* row = view->categoryRow(category);
    return row ? GuiInput::openDialog(row->editButton(), [row] { return row->editDialog(); })
               : nullptr;
}
} // namespace

class AdaptiveFormsTest : public QObject {
    Q_OBJECT
private slots:
    // The option is added with a snippet and saved in the pane; a command that differs from
    // another only in case is warned of while typed and refused.
    void matchTheCommandsCase() {
        EditorFixture fixture;
        const Snippet hi = fixture.addSnippet(";hi", "hello", Category::defaultCategoryId);
        ContentView* view = fixture.show();
        auto* dialog = GuiInput::openDialog(view->addSnippetButton(),
                                            [view] { return view->addSnippetDialog(); });
        QVERIFY(dialog);
        SnippetForm* form = dialog->form();
        QVERIFY(!form->matchCaseBox()->isChecked());
        QTest::keyClicks(form->commandField(), ";HI");
        QTest::keyClicks(form->contentEditor(), "hey");
        auto* warning = form->findChild<QLabel*>(QStringLiteral("clashWarning"));
        QVERIFY(warning->isHidden());
        tick(form->matchCaseBox());
        QVERIFY(form->matchCaseBox()->isChecked());
        QVERIFY2(!warning->isHidden(), qPrintable(warning->text()));
        QVERIFY2(warning->text().contains("\u201C;hi\u201D differs from this command only in "
                                          "letter case"),
                 qPrintable(warning->text()));
        GuiInput::click(dialog->submitButton());
        QVERIFY(errorOf(dialog).contains("both would expand for the same keys"));
        GuiInput::retype(form->commandField(), ";hey");
        QVERIFY(warning->isHidden());
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        const auto added = fixture.store().snippetWithCommand(";hey");
        QVERIFY(added && added->matchCase);

        // In the pane: the option is an edit like any other, and saved.
        view->setSelectedSnippet(hi);
        SnippetDetailView* pane = view->detailView();
        QCOMPARE(pane->form()->command(), ";hi");
        QVERIFY(!pane->saveButton()->isEnabled());
        tick(pane->form()->matchCaseBox());
        QVERIFY(pane->saveButton()->isEnabled());
        GuiInput::click(pane->saveButton());
        QVERIFY(fixture.reloaded()->snippet(hi.id)->matchCase);
    }

    // The open windows' classes are offered; the limit is saved with the category, and one
    // that lets a command expand twice in an application is refused with the store's words.
    void limitingACategory() {
        EditorFixture fixture;
        const Category work = fixture.addCategory("Work");
        const Category home = fixture.addCategory("Home");
        ContentView* view = fixture.show();
        int asked = 0;
        view->setOpenWindowClasses([&asked] {
            ++asked;
            return QStringList{"Gedit", "XTerm"};
        });
        EditCategoryDialog* dialog = openEditDialog(view, work.id);
        QVERIFY(dialog);
        ApplicationLimitEditor* limit = dialog->limitEditor();
        QVERIFY(limit->note()->isHidden());
        QVERIFY(!limit->applicationsField()->isEnabled());
        QVERIFY(!dialog->submitButton()->isEnabled());
        QMenu* menu = limit->openWindowsButton()->menu();
        emit menu->aboutToShow();
        QCOMPARE(asked, 1);
        QCOMPARE(menu->actions().size(), 2);
        menu->actions().at(1)->trigger();
        QCOMPARE(limit->kindBox()->currentText(), "Only in\u2026");
        QCOMPARE(limit->applicationsField()->text(), "XTerm");
        QVERIFY(limit->applicationsField()->isEnabled());
        // Offered again, what is listed already cannot be added twice.
        emit menu->aboutToShow();
        QVERIFY(!menu->actions().at(1)->isEnabled());
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        QCOMPARE(fixture.reloaded()->category(work.id)->limit,
                 (Category::Limit{Category::Limit::Kind::onlyIn, {"XTerm"}}));
        // The sidebar tells where its snippets expand.
        QTRY_COMPARE(view->categoryRow(work.id)->findChild<QLabel*>("categoryName")->toolTip(),
                     "Work\nOnly in XTerm");

        // ;a in both, kept apart; Home may not be made to expand everywhere.
        fixture.addSnippet(";a", "in the terminal", work.id);
        QVERIFY(!fixture.store().updateCategory(*fixture.store().category(home.id), "Home",
                                                Category::Limit{Category::Limit::Kind::exceptIn,
                                                                {"xterm"}}));
        fixture.addSnippet(";a", "elsewhere", home.id);
        dialog = openEditDialog(view, home.id);
        QVERIFY(dialog);
        QCOMPARE(dialog->limitEditor()->kindBox()->currentText(), "Everywhere except\u2026");
        QCOMPARE(dialog->limitEditor()->applicationsField()->text(), "xterm");
        GuiInput::retype(dialog->limitEditor()->applicationsField(), "Gedit");
        GuiInput::click(dialog->submitButton());
        QVERIFY2(errorOf(dialog).contains("\u201C;a\u201D would both expand in the same application"),
                 qPrintable(errorOf(dialog)));
        QCOMPARE(fixture.store().category(home.id)->limit.applications, QStringList{"xterm"});
        dialog->reject();
    }

    // A new category may be limited at once; where the session cannot tell applications, the
    // form says what that means and offers no windows.
    void newCategoryOnWayland() {
        EditorFixture fixture;
        ContentView* view = fixture.show();
        auto* dialog = GuiInput::openDialog(view->addCategoryButton(),
                                            [view] { return view->addCategoryDialog(); });
        QVERIFY(dialog);
        ApplicationLimitEditor* limit = dialog->limitEditor();
        QVERIFY(!limit->note()->isHidden());
        QVERIFY(limit->note()->text().contains("expand nowhere"));
        QVERIFY(!limit->openWindowsButton()->isEnabled());
        QTest::keyClicks(dialog->nameField(), "Chat");
        limit->kindBox()->setFocus();
        QTest::keyClick(limit->kindBox(), Qt::Key_End);
        QCOMPARE(limit->kindBox()->currentText(), "Everywhere except\u2026");
        QTest::keyClicks(limit->applicationsField(), "kitty,  Alacritty ,kitty");
        QVERIFY(GuiInput::clickCloses(dialog->submitButton()));
        const auto stored = fixture.reloaded()->categories();
        const auto chat = std::find_if(stored.cbegin(), stored.cend(),
                                       [](const Category& c) { return c.name == "Chat"; });
        QVERIFY(chat != stored.cend());
        QCOMPARE(chat->limit, (Category::Limit{Category::Limit::Kind::exceptIn, {"kitty", "Alacritty"}}));
    }
};

QTEST_MAIN(AdaptiveFormsTest)
#include "AdaptiveFormsTest.moc"
