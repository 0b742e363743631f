// Awkward input: huge texts, names of spaces, right-to-left text and emoji, and a library of
// ten thousand snippets. None of it may change the window's layout or lose text.
#include "CategoryRowView.h"
#include "ContentView.h"
#include "CustomTextEditor.h"
#include "ElidedLabel.h"
#include "GuiTestSupport.h"
#include "ShortcutDetailView.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QTest>

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
        const CategoryRef huge = fixture.addCategory(QString(100000, QChar(u'N')));
        const QString command = QString(100000, QChar(u'c'));
        const QString content = QStringLiteral("line\n").repeated(20000);
        fixture.addShortcut(command, content, huge->id());
        ContentView* view = fixture.show();
        const int detailWidth = widthOf(view, "detailPane");
        view->setSelectedCategory(huge);
        GuiInput::clickRow(view->shortcutList(), 0);

        QCOMPARE(widthOf(view, "sidebar"), 250);
        QCOMPARE(widthOf(view, "snippetColumn"), 450);
        QCOMPARE(widthOf(view, "detailPane"), detailWidth);
        QVERIFY(view->window()->width() < 2000);
        QCOMPARE(view->detailView()->command(), command);
        QCOMPARE(view->detailView()->content(), content);
        // The title is cut, not the column.
        QCOMPARE(view->title(), huge->name());
        QVERIFY(view->findChild<ElidedLabel*>(QStringLiteral("title"))->width() < 450);

        // Editing and saving such a snippet works like any other.
        view->detailView()->contentEditor()->moveCursor(QTextCursor::End);
        QTest::keyClicks(view->detailView()->contentEditor(), QStringLiteral("end"));
        view->detailView()->save();
        QCOMPARE(fixture.store().shortcuts().first().content, content + QStringLiteral("end"));
        QCOMPARE(fixture.reloadedStore()->shortcuts().first().command, command);

        // Search reaches into the long content too.
        QTest::keyClicks(view->searchField(), QStringLiteral("LINE"));
        QCOMPARE(view->shortcutList()->model()->rowCount(), 1);
    }

    void namesOfSpacesRightToLeftAndEmojiShowAsTyped() {
        EditorFixture fixture;
        const CategoryRef spaces = fixture.addCategory(QStringLiteral("   "));
        const CategoryRef hebrew = fixture.addCategory(QStringLiteral("עבודה 🚀"));
        fixture.addShortcut(QStringLiteral(";שלום"),
                            QStringLiteral("مرحبا 👋🏽👨‍👩‍👧‍👦"),
                            hebrew->id());
        ContentView* view = fixture.show();
        QCOMPARE(view->categoryRow(spaces->id())
                     ->findChild<ElidedLabel*>(QStringLiteral("categoryName"))
                     ->text(),
                 QStringLiteral("   "));
        view->setSelectedCategory(spaces);
        QCOMPARE(view->title(), QStringLiteral("   "));
        view->setSelectedCategory(hebrew);
        QCOMPARE(view->title(), QStringLiteral("עבודה 🚀"));
        GuiInput::clickRow(view->shortcutList(), 0);
        QCOMPARE(view->detailView()->command(), QStringLiteral(";שלום"));
        QCOMPARE(view->detailView()->content(),
                 QStringLiteral("مرحبا 👋🏽👨‍👩‍👧‍👦"));
        QCOMPARE(widthOf(view, "sidebar"), 250);
        QCOMPARE(widthOf(view, "snippetColumn"), 450);
        // Search finds right-to-left text and emoji.
        GuiInput::commitText(view->searchField(), QStringLiteral("👨‍👩‍👧‍👦"));
        QCOMPARE(view->searchText(), QStringLiteral("👨‍👩‍👧‍👦"));
        QCOMPARE(view->shortcutList()->model()->rowCount(), 1);
        GuiInput::retype(view->searchField(), QString());
        GuiInput::commitText(view->searchField(), QStringLiteral("שלום"));
        QCOMPARE(view->shortcutList()->model()->rowCount(), 1);
    }

    void tenThousandSnippetsFilterScrollAndSelect() {
        EditorFixture fixture;
        const CategoryRef even = fixture.addCategory(QStringLiteral("Even"));
        const CategoryRef odd = fixture.addCategory(QStringLiteral("Odd"));
        QList<Shortcut> many;
        many.reserve(10000);
        for (int i = 0; i < 10000; ++i)
            many.append(Shortcut::create(QStringLiteral(";s%1").arg(i),
                                         QStringLiteral("Snippet number %1").arg(i),
                                         (i % 2 ? odd : even)->id()));
        fixture.store().setShortcuts(many);
        fixture.store().saveShortcuts();
        ContentView* view = fixture.show();

        view->setSelectedCategory({});
        QCOMPARE(view->shortcutList()->model()->rowCount(), 10000);
        view->setSelectedCategory(odd);
        QCOMPARE(view->shortcutList()->model()->rowCount(), 5000);
        QCOMPARE(view->categoryRow(odd->id())->countText(), QStringLiteral("5000 snippets"));

        // Scroll to the end and pick the last row.
        view->shortcutList()->scrollToBottom();
        QCoreApplication::processEvents();
        QCOMPARE(view->shortcutList()->verticalScrollBar()->value(),
                 view->shortcutList()->verticalScrollBar()->maximum());
        GuiInput::clickRow(view->shortcutList(), 4999);
        QCOMPARE(view->selectedShortcut()->command, QStringLiteral(";s9999"));

        // Reported, not asserted: how long typing the search took, keystroke by keystroke
        // (each one refilters the list and repaints what is visible).
        QElapsedTimer typing;
        typing.start();
        QTest::keyClicks(view->searchField(), QStringLiteral("NUMBER 99"));
        view->shortcutList()->repaint();
        qInfo("9 keystrokes of search over 10000 snippets: %lld ms", typing.elapsed());
        // The odd numbers that start with 99: 99, 991..999, 9901..9999.
        QStringList found;
        for (int row = 0; row < view->shortcutList()->model()->rowCount(); ++row)
            found << view->shortcutList()->model()->index(row, 0).data().toString();
        QStringList expected;
        for (int i = 1; i < 10000; i += 2)
            if (QString::number(i).startsWith(QStringLiteral("99")))
                expected << QStringLiteral(";s%1").arg(i);
        QCOMPARE(found, expected);
        // The selected snippet is still in the list and still selected.
        QCOMPARE(view->shortcutList()->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(view->shortcutList()->selectionModel()->selectedRows().first().data().toString(),
                 QStringLiteral(";s9999"));
    }
};

QTEST_MAIN(BadInputTest)
#include "BadInputTest.moc"
