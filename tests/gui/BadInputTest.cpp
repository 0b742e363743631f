// Awkward input: huge texts, names of spaces, right-to-left text and emoji, and a library of
// ten thousand snippets. None of it may change the window's layout or lose text.
#include "CategoryRowView.h"
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"
#include "SnippetDetailView.h"

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>

namespace {
int widthOf(ContentView* view, const char* name) {
    return view->findChild<QWidget*>(QString::fromLatin1(name))->width();
}
} // namespace

class BadInputTest : public QObject {
    Q_OBJECT

private slots:
    void hugeTextsKeepTheColumnsAndEveryCharacter() {
        EditorFixture fixture;
        const Category huge = fixture.addCategory(QString(100000, QChar(u'N')));
        const QString command(100000, QChar(u'c'));
        const QString content = QStringLiteral("line\n").repeated(20000);
        fixture.addSnippet(command, content, huge.id);
        ContentView* view = fixture.show();
        const auto widths = [view] {
            return QList<int>{widthOf(view, "sidebar"), widthOf(view, "snippetColumn"),
                              widthOf(view, "detailPane")};
        };
        const QList<int> before = widths();
        view->setSelectedCategory(huge);
        GuiInput::clickRow(view->snippetList(), 0);
        QCOMPARE(widths(), before);
        QVERIFY(view->window()->width() < 2000);
        QCOMPARE(view->detailView()->form()->command(), command);
        QCOMPARE(view->detailView()->form()->content(), content);
        // The title is cut, not the column.
        QCOMPARE(view->title(), huge.name);
        QVERIFY(view->findChild<QLabel*>(QStringLiteral("title"))->width() <= before[1]);
        // Editing and saving such a snippet works like any other; search reaches into it.
        view->detailView()->form()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(view->detailView()->form()->contentEditor(), QStringLiteral("end"));
        view->detailView()->save();
        QCOMPARE(fixture.store().snippets().first().content, content + QStringLiteral("end"));
        QCOMPARE(fixture.reloaded()->snippets().first().command, command);
        QTest::keyClicks(view->searchField(), QStringLiteral("LINE"));
        QCOMPARE(view->snippetList()->model()->rowCount(), 1);
        // The side columns keep their widths; a wider window widens the detail pane alone.
        view->window()->resize(1600, 800);
        QTRY_VERIFY(widthOf(view, "detailPane") > before[2]);
        QCOMPARE(widths().mid(0, 2), before.mid(0, 2));
    }

    void namesOfSpacesRightToLeftAndEmojiShowAsTyped() {
        EditorFixture fixture;
        const Category spaces = fixture.addCategory(QStringLiteral("   "));
        const Category hebrew = fixture.addCategory(QStringLiteral("עבודה 🚀"));
        const QString content = QStringLiteral("مرحبا 👋🏽👨‍👩‍👧‍👦");
        fixture.addSnippet(QStringLiteral(";שלום"), content, hebrew.id);
        ContentView* view = fixture.show(spaces);
        QCOMPARE(Shown::rowLabel(view->categoryRow(spaces.id), "categoryName"),
                 QStringLiteral("   "));
        QCOMPARE(view->title(), QStringLiteral("   "));
        view->setSelectedCategory(hebrew);
        GuiInput::clickRow(view->snippetList(), 0);
        QCOMPARE(Shown::snippets(view), (QStringList{"עבודה 🚀", "*;שלום"}));
        QCOMPARE((QStringList{view->detailView()->form()->command(), view->detailView()->form()->content()}),
                 (QStringList{";שלום", content}));
        // Search finds emoji and right-to-left text.
        GuiInput::commitText(view->searchField(), QStringLiteral("👨‍👩‍👧‍👦"));
        QCOMPARE(view->searchText(), QStringLiteral("👨‍👩‍👧‍👦"));
        QCOMPARE(view->snippetList()->model()->rowCount(), 1);
        GuiInput::retype(view->searchField(), QString());
        GuiInput::commitText(view->searchField(), QStringLiteral("שלום"));
        QCOMPARE(view->snippetList()->model()->rowCount(), 1);
    }

    void tenThousandSnippetsFilterScrollAndSelect() {
        EditorFixture fixture;
        const Category even = fixture.addCategory(QStringLiteral("Even"));
        const Category odd = fixture.addCategory(QStringLiteral("Odd"));
        QList<Snippet> many;
        for (int i = 0; i < 10000; ++i)
            many.append(Snippet::create(QStringLiteral(";s%1").arg(i),
                                         QStringLiteral("Snippet number %1").arg(i),
                                         (i % 2 ? odd : even).id));
        fixture.store().setSnippets(many);
        fixture.store().saveSnippets();
        ContentView* view = fixture.show();
        view->setSelectedCategory(std::nullopt);
        QCOMPARE(view->snippetList()->model()->rowCount(), 10000);
        view->setSelectedCategory(odd);
        QCOMPARE(view->snippetList()->model()->rowCount(), 5000);
        QCOMPARE(view->categoryRow(odd.id)->countText(), QStringLiteral("5000 snippets"));
        // Scroll to the end and pick the last row.
        QScrollBar* scroll = view->snippetList()->verticalScrollBar();
        view->snippetList()->scrollToBottom();
        QCoreApplication::processEvents();
        QCOMPARE(scroll->value(), scroll->maximum());
        GuiInput::clickRow(view->snippetList(), 4999);
        QCOMPARE(view->selectedSnippet()->command, QStringLiteral(";s9999"));
        // Each keystroke refilters all of them. Found: the odd numbers starting with 99, the
        // selected one still selected.
        QTest::keyClicks(view->searchField(), QStringLiteral("NUMBER 99"));
        QStringList expected{";s99"};
        for (int i = 991; i < 10000; i += 2)
            if (i < 1000 || i / 100 == 99)
                expected << QStringLiteral(";s%1").arg(i);
        expected.last().prepend(u'*');
        QCOMPARE(Shown::rows(view->snippetList()), expected);
    }
};

QTEST_MAIN(BadInputTest)
#include "BadInputTest.moc"
