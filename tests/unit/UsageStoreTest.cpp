#include "UsageStore.h"
#include "TestData.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
const QUuid kId = QUuid::fromString(QStringLiteral("6a1f3c52-8a8e-4e0c-9a57-2b1c0d6f4e11"));
} // namespace

class UsageStoreTest : public QObject {
    Q_OBJECT
private slots:
    // What is on disk when Typolet starts, and what it reads from it.
    void readsOrStartsAfresh_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("damaged");
        // A usage file of version `version` whose one record is `record` (keyed by kId).
        const auto file = [](const char* record, const char* version = "1") {
            return QByteArray("{\"version\":") + version + ",\"snippets\":{\"" +
                   kId.toString(QUuid::WithoutBraces).toLatin1() + "\":" + record + "}}";
        };
        QTest::newRow("missing") << QByteArray() << 0 << false;
        QTest::newRow("valid") << file("{\"count\":12,\"last\":1700000000000}") << 12 << false;
        QTest::newRow("not JSON") << QByteArray("\x01\xff[[") << 0 << true;
        QTest::newRow("cut short") << file("{\"count\":12").chopped(3) << 0 << true;
        QTest::newRow("another version") << file("{\"count\":1,\"last\":1}", "7") << 0 << true;
        QTest::newRow("negative count") << file("{\"count\":-3,\"last\":1}") << 0 << true;
        QTest::newRow("not an id")
            << QByteArray("{\"version\":1,\"snippets\":{\"x\":{\"count\":1,\"last\":1}}}")
            << 0 << true;
    }
    void readsOrStartsAfresh() {
        QFETCH(QByteArray, file);
        QFETCH(int, count);
        QFETCH(bool, damaged);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("state/Typolet/usage.json"));
        if (!file.isEmpty()) {
            QDir().mkpath(QFileInfo(path).absolutePath());
            QVERIFY(replaceFile(path, file));
        }
        UsageStore store(path);
        QCOMPARE(store.usageOf(kId).count, count);
        QCOMPARE(!store.loadError().isEmpty(), damaged);
        // Counting goes on and replaces a damaged file with a sound one.
        store.recordUse(kId, 1'800'000'000'000);
        QCOMPARE(store.save(), std::nullopt);
        UsageStore reread(path);
        QCOMPARE(reread.loadError(), QString());
        QCOMPARE(reread.usageOf(kId), (SnippetUsage{count + 1, 1'800'000'000'000}));
    }

    void countsSavesAfterADelayAndClears() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("usage.json"));
        {
            UsageStore store(path);
            QSignalSpy changed(&store, &UsageStore::usageChanged);
            store.recordUse(kId, 2000);
            store.recordUse(kId, 1000); // a clock set back does not make the last use older
            store.setCounting(false);
            store.recordUse(kId, 3000);
            QCOMPARE(changed.size(), 2);
            QCOMPARE(store.usageOf(kId), (SnippetUsage{2, 2000}));
            QTRY_VERIFY(QFileInfo::exists(path)); // the delayed save
        }
        UsageStore store(path);
        QCOMPARE(store.usageOf(kId), (SnippetUsage{2, 2000}));
        store.clear();
        QCOMPARE(UsageStore(path).usage().size(), 0);
    }
};

QTEST_GUILESS_MAIN(UsageStoreTest)
#include "UsageStoreTest.moc"
