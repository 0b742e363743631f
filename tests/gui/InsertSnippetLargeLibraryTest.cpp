// The insert window over a library large enough that its search index is made on another
// thread: the window opens before the index is there, and edits made while it is open show up.
#include "InsertSnippetWindow.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "UsageStore.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>

class InsertSnippetLargeLibraryTest : public QObject {
    Q_OBJECT
private slots:
    void indexesAfterOpeningAndFollowsEdits() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        QList<Snippet> snippets;
        for (int i = 0; i < 2500; ++i)
            snippets.append(Snippet::create(QStringLiteral(";s%1").arg(i),
                                            QStringLiteral("note number %1").arg(i), {}));
        store.setSnippets(snippets);
        QTemporaryDir state;
        UsageStore usage(state.filePath(QStringLiteral("usage.json")));
        InsertSnippetWindow window(store, usage);
        QSignalSpy inserted(&window, &InsertSnippetWindow::insertRequested);
        const auto shown = [&window] {
            QStringList commands;
            const auto* model = window.list()->model();
            for (int row = 0; row < model->rowCount(); ++row)
                commands.append(model->index(row, 0).data().toString());
            return commands;
        };

        // Nothing is indexed before the window is asked for, and asking does not wait for it.
        window.present();
        QCOMPARE(window.statusText(), QStringLiteral("Preparing the search…"));
        QCOMPARE(shown(), QStringList());
        QTRY_COMPARE(window.statusText(), QStringLiteral("Snippets found: 2500, the best 200 shown."));

        QTest::keyClicks(window.searchField(), "zebra");
        QCOMPARE(shown(), QStringList());
        QVERIFY(!store.addSnippet(Snippet::create(";zebra", "Striped", {})));
        QTRY_COMPARE(shown(), QStringList{";zebra"});
        QCOMPARE(window.previewText(), QStringLiteral("Striped"));

        // Changed while the list still shows it as it was: what goes out is the change.
        QVERIFY(!store.updateSnippet(*store.snippetWithCommand(";zebra"), ";zebra", "Spotted"));
        QTest::keyClick(window.searchField(), Qt::Key_Return);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(inserted.takeFirst().at(0).value<Snippet>().content, QStringLiteral("Spotted"));

        window.present();
        QTest::keyClicks(window.searchField(), "zebra");
        QTRY_COMPARE(window.previewText(), QStringLiteral("Spotted"));
        // Deleted while shown: Return sends nothing, and the list catches up.
        QVERIFY(!store.removeSnippet(store.snippetWithCommand(";zebra")->id));
        QTest::keyClick(window.searchField(), Qt::Key_Return);
        QCOMPARE(inserted.size(), 0);
        QTRY_COMPARE(shown(), QStringList());
        QCOMPARE(window.statusText(), QStringLiteral("No snippet matches “zebra”."));
    }
};

QTEST_MAIN(InsertSnippetLargeLibraryTest)
#include "InsertSnippetLargeLibraryTest.moc"
