#include "UsageDescription.h"

#include <QtTest>

class UsageDescriptionTest : public QObject {
    Q_OBJECT
private slots:
    void describes_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("daysAgo");
        QTest::addColumn<QString>("expected");
        QTest::newRow("never") << 0 << 0 << "Not used yet";
        QTest::newRow("once today") << 1 << 0 << "Used once, last today";
        QTest::newRow("yesterday") << 12 << 1 << "Used 12 times, last yesterday";
        QTest::newRow("this week") << 3 << 4 << "Used 3 times, last 4 days ago";
        const QDate long_ago = QDate(2026, 3, 1);
        QTest::newRow("long ago") << 2 << int(long_ago.daysTo(QDate(2026, 3, 20)))
                                  << "Used 2 times, last on " +
                                         QLocale().toString(long_ago, QLocale::ShortFormat);
    }
    void describes() {
        QFETCH(int, count);
        QFETCH(int, daysAgo);
        QFETCH(QString, expected);
        const QDateTime now(QDate(2026, 3, 20), QTime(9, 30));
        const SnippetUsage usage{count, now.addDays(-daysAgo).addSecs(-3600).toMSecsSinceEpoch()};
        QCOMPARE(UsageDescription::describe(usage, now), expected);
    }
};

QTEST_GUILESS_MAIN(UsageDescriptionTest)
#include "UsageDescriptionTest.moc"
