#include "InsertSnippetWindow.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "UsageStore.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>

namespace {
// The window over a library of its own, shown as the global key shows it.
struct Fixture {
    TemporarySettings settings;
    SnippetStore store{settings.path()};
    QTemporaryDir state;
    UsageStore usage{state.filePath(QStringLiteral("usage.json"))};
    InsertSnippetWindow window{store, usage};

    Fixture() {
        QVERIFY(!store.addCategory(QStringLiteral("Work")));
        const QUuid work = store.categories().last().id;
        QVERIFY(!store.addSnippet(Snippet::create(";addr", "12 Main Street\nSpringfield", work)));
        QVERIFY(!store.addSnippet(Snippet::create(";sig", "Kind regards,\nAda", {})));
        QVERIFY(!store.addSnippet(Snippet::create(";date", "Today is {{date:yyyy}}.{{cursor}}", {})));
        window.present();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }
    QStringList commands() const {
        QStringList shown;
        const auto* model = window.list()->model();
        for (int row = 0; row < model->rowCount(); ++row)
            shown.append(model->index(row, 0).data().toString());
        return shown;
    }
};
} // namespace

class InsertSnippetWindowTest : public QObject {
    Q_OBJECT
private slots:
    // A query and keys in the search field, and what the window then asks for.
    void keys_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<QString>("inserted"); // the command inserted; empty: none
        QTest::addColumn<QString>("status");
        QTest::newRow("Return inserts the first match")
            << "regards" << QList<int>{Qt::Key_Return} << ";sig" << "";
        QTest::newRow("Down then Enter inserts the second")
            << "" << QList<int>{Qt::Key_Down, Qt::Key_Enter} << ";sig" << "";
        QTest::newRow("Up stops at the first row")
            << "" << QList<int>{Qt::Key_Up, Qt::Key_Up, Qt::Key_Return} << ";addr" << "";
        QTest::newRow("a category's name") << "work" << QList<int>{Qt::Key_Return} << ";addr" << "";
        QTest::newRow("no match: Return does nothing")
            << "zzz" << QList<int>{Qt::Key_Return} << "" << u"No snippet matches “zzz”."_qs;
        QTest::newRow("Escape closes with nothing sent")
            << "sig" << QList<int>{Qt::Key_Escape} << "" << "Snippets found: 2";
    }
    void keys() {
        QFETCH(QString, query);
        QFETCH(QList<int>, keys);
        QFETCH(QString, inserted);
        QFETCH(QString, status);
        Fixture fixture;
        QSignalSpy insertRequested(&fixture.window, &InsertSnippetWindow::insertRequested);
        QSignalSpy dismissed(&fixture.window, &InsertSnippetWindow::dismissed);
        QTest::keyClicks(fixture.window.searchField(), query);
        if (!status.isEmpty())
            QCOMPARE(fixture.window.statusText(), status);
        for (const int key : keys)
            QTest::keyClick(fixture.window.searchField(), Qt::Key(key));
        QCOMPARE(insertRequested.size(), inserted.isEmpty() ? 0 : 1);
        if (!inserted.isEmpty())
            QCOMPARE(insertRequested.at(0).at(0).value<Snippet>().command, inserted);
        const bool escaped = keys.contains(Qt::Key_Escape);
        QCOMPARE(dismissed.size(), escaped ? 1 : 0);
        QCOMPARE(fixture.window.isVisible(), inserted.isEmpty() && !escaped);
    }

    // The list shows command, first line and category; the preview fills the placeholders;
    // Ctrl+C copies that text rather than inserting; the window opens again with an empty search.
    void previewsCopiesAndOpensAfresh() {
        Fixture fixture;
        QCOMPARE(fixture.commands(), (QStringList{";addr", ";sig", ";date"}));
        const auto* model = fixture.window.list()->model();
        QCOMPARE(model->index(0, 1).data().toString(), QStringLiteral("12 Main Street"));
        QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("Work"));
        QTest::keyClicks(fixture.window.searchField(), ";date");
        const QString filled = QStringLiteral("Today is %1.").arg(QDate::currentDate().year());
        QCOMPARE(fixture.window.previewText(), filled);
        QSignalSpy copied(&fixture.window, &InsertSnippetWindow::copied);
        QSignalSpy insertRequested(&fixture.window, &InsertSnippetWindow::insertRequested);
        QTest::keyClick(fixture.window.searchField(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(copied.size(), 1);
        QCOMPARE(insertRequested.size(), 0);
        QCOMPARE(QGuiApplication::clipboard()->text(), filled);
        fixture.window.present();
        QCOMPARE(fixture.window.searchField()->text(), QString());
        QCOMPARE(fixture.commands().size(), 3);
        QCOMPARE(fixture.window.focusWidget(), fixture.window.searchField());
    }

    // Used snippets come first on an empty search; an exact command beats them.
    void usageAndExactCommand() {
        Fixture fixture;
        const QUuid date = fixture.store.snippetWithCommand(";date")->id;
        fixture.usage.recordUse(date, 1000);
        fixture.window.present();
        QCOMPARE(fixture.commands().first(), QStringLiteral(";date"));
        QTest::keyClicks(fixture.window.searchField(), ";sig");
        QCOMPARE(fixture.commands().first(), QStringLiteral(";sig"));
    }

    void emptyLibrary() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        QTemporaryDir state;
        UsageStore usage(state.filePath(QStringLiteral("usage.json")));
        InsertSnippetWindow window(store, usage);
        window.present();
        QSignalSpy insertRequested(&window, &InsertSnippetWindow::insertRequested);
        QTest::keyClick(window.searchField(), Qt::Key_Return);
        QTest::keyClick(window.searchField(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(insertRequested.size(), 0);
        QVERIFY(window.statusText().startsWith(QStringLiteral("There are no snippets yet")));
        QCOMPARE(window.previewText(), QString());
        QVERIFY(!window.accessibleName().isEmpty() && !window.list()->accessibleName().isEmpty() &&
                !window.searchField()->accessibleName().isEmpty());
    }
};

QTEST_MAIN(InsertSnippetWindowTest)
#include "InsertSnippetWindowTest.moc"
