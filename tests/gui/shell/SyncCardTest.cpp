// The Preferences window's "Sync" group: choosing a folder that already holds another computer's
// library merges it and says what that added, the group lists the computers there and names a
// file it cannot read, and "Stop Syncing" leaves the library on this computer. A command two
// computers each gave a snippet is marked in the snippet list.
#include "Autostart.h"
#include "IsolatedTestMain.h"
#include "Preferences.h"
#include "PreferencesView.h"
#include "RecordingAutostartBackend.h"
#include "SnippetListModel.h"
#include "SnippetStore.h"
#include "SyncCard.h"
#include "SyncFile.h"
#include "SyncFolder.h"
#include "TestData.h"
#include "Timestamp.h"

#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "Translations.h"

class SyncCardTest : public QObject {
    Q_OBJECT
private slots:
    void chooseListAndStop();
    void sameCommandIsMarkedInTheList();
};

void SyncCardTest::chooseListAndStop() {
    Translations::install(*QCoreApplication::instance()); // the English plural forms
    QTemporaryDir home;
    SnippetStore store(home.filePath(QStringLiteral("Typolet.conf")));
    Preferences preferences(store.file());
    SyncFolder sync(store, [&preferences] { return preferences.syncComputerId(); }, home.filePath(QStringLiteral("sync.json")));
    Autostart autostart(std::make_unique<RecordingAutostartBackend>());
    PreferencesView view(autostart, preferences, &sync);
    SyncCard* card = view.syncCard();
    QVERIFY(card);
    QVERIFY(!store.addSnippet(Snippet::create(QStringLiteral(";mine"), QStringLiteral("here"),
                                              Category::defaultCategoryId)));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(card->stopButton()->isHidden());

    // Another computer's library is in the folder already.
    const QString folder = home.filePath(QStringLiteral("Sync"));
    QVERIFY(QDir().mkpath(folder + QStringLiteral("/Typolet")));
    SyncMerge::Library other;
    SyncMerge::stampLocalChanges(
        other, {Category::defaultCategory()},
        {Snippet::create(QStringLiteral(";a"), QStringLiteral("1"), Category::defaultCategoryId),
         Snippet::create(QStringLiteral(";b"), QStringLiteral("2"), Category::defaultCategoryId)},
        QStringLiteral("dddd4444"), Timestamp::now());
    QVERIFY(replaceFile(folder + QStringLiteral("/Typolet/laptop-dddd4444.json"),
                        SyncFile::encode(QStringLiteral("dddd4444"), QStringLiteral("laptop"), other)));

    card->chooseFolder(folder);
    QCOMPARE(card->statusLabel()->text(),
             QStringLiteral("Added 2 snippets from the other computers in this folder."));
    QCOMPARE(preferences.syncFolder(), QFileInfo(folder).absoluteFilePath());
    QVERIFY(card->folderLabel()->text().contains(folder));
    QVERIFY(card->stopButton()->isVisible());
    QCOMPARE(store.snippets().size(), 3);
    QCOMPARE(card->computerList()->count(), 2);
    QVERIFY(card->computerList()->item(0)->text().contains(QLatin1String("(this computer): 3 snippets")));
    QVERIFY(card->computerList()->item(1)->text().startsWith(QLatin1String("laptop: 2 snippets")));

    // A file that does not read is named, and left as it is.
    QVERIFY(replaceFile(folder + QStringLiteral("/Typolet/desk-eeee5555.json"), "{\"version\": 1, \"snip"));
    sync.readFolder();
    QVERIFY(card->problemsLabel()->isVisible());
    QVERIFY(card->problemsLabel()->text().contains(QLatin1String("desk-eeee5555.json")));

    card->stopButton()->click();
    QVERIFY(card->stopButton()->isHidden());
    QVERIFY(!sync.isActive());
    QVERIFY(preferences.syncFolder().isEmpty());
    QCOMPARE(store.snippets().size(), 3);
    QVERIFY(card->problemsLabel()->isHidden());
}

void SyncCardTest::sameCommandIsMarkedInTheList() {
    // Two computers each added ";sig": both stay, both rows are marked until one changes.
    QTemporaryDir home;
    SnippetStore store(home.filePath(QStringLiteral("Typolet.conf")));
    const Snippet a = Snippet::create(QStringLiteral(";sig"), QStringLiteral("A"), Category::defaultCategoryId);
    const Snippet b = Snippet::create(QStringLiteral(";sig"), QStringLiteral("B"), Category::defaultCategoryId);
    const Snippet other = Snippet::create(QStringLiteral(";x"), QStringLiteral("x"), Category::defaultCategoryId);
    QVERIFY(!store.replaceLibrary(store.categories(), {a, b, other}));
    SnippetListModel model(store);
    const auto marked = [&](const QUuid& id) {
        return model.index(model.rowOf(id)).data(SnippetListModel::ClashRole).toBool();
    };
    QVERIFY(marked(a.id) && marked(b.id) && !marked(other.id));
    QVERIFY(model.index(model.rowOf(a.id)).data(Qt::AccessibleTextRole).toString().contains(QLatin1String("too")));
    QVERIFY(!store.updateSnippet(b, QStringLiteral(";sig2"), b.content));
    QVERIFY(!marked(a.id) && !marked(b.id));
}

TYPOLET_ISOLATED_TEST_MAIN(SyncCardTest)
#include "SyncCardTest.moc"
