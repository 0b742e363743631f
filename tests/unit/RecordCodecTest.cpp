#include "Category.h"
#include "RecordCodec.h"
#include "Shortcut.h"
#include "ShortcutListEncoder.h"
#include "Timestamp.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>
#include <cstring>

namespace {
const QUuid kId{QStringLiteral("6f1c2b7e-0a9d-4c4b-9f43-1e2d3c4b5a69")};
const QUuid kCategory{QStringLiteral("a1b2c3d4-e5f6-4789-abcd-ef0123456789")};

QJsonObject validShortcutObject() {
    return QJsonObject{{"id", "6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69"},
                       {"command", ";addr"},
                       {"content", "1 Main St"},
                       {"createdAt", 12.5},
                       {"categoryId", "A1B2C3D4-E5F6-4789-ABCD-EF0123456789"}};
}

QByteArray arrayOf(std::initializer_list<QJsonValue> values) {
    return QJsonDocument(QJsonArray(values)).toJson(QJsonDocument::Compact);
}
} // namespace

class RecordCodecTest : public QObject {
    Q_OBJECT
private slots:
    void identityIsTheIdAlone() {
        const Shortcut a(kId, ";a", "one", 1, kCategory);
        const Shortcut b(kId, ";b", "two", 2, QUuid::createUuid());
        QCOMPARE(a, b);
        QCOMPARE(qHash(a), qHash(b));
        QSet<Shortcut> set{a, b};
        QCOMPARE(set.size(), 1);
        QVERIFY(!(a == Shortcut(QUuid::createUuid(), ";a", "one", 1, kCategory)));

        const Category work(kCategory, "Work", 3);
        const Category renamed(kCategory, "Office", 3);
        QVERIFY(work == renamed);
        QCOMPARE(qHash(work), qHash(renamed));
    }

    void encodesEveryKeyCompactlyWithUpperCaseIds() {
        const Shortcut shortcut(kId, QString(), QString(), -1.25, kCategory);
        const QByteArray json = *RecordCodec::encodeShortcuts({shortcut});
        QVERIFY(!json.contains('\n'));
        QVERIFY(!json.contains(": "));
        const QJsonObject object = QJsonDocument::fromJson(json).array().at(0).toObject();
        QCOMPARE(object.keys().size(), 5);
        QCOMPARE(object.value("id").toString(), "6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69");
        QCOMPARE(object.value("categoryId").toString(), "A1B2C3D4-E5F6-4789-ABCD-EF0123456789");
        QVERIFY(object.value("command").isString());
        QCOMPARE(object.value("command").toString(), QString());
        QVERIFY(object.value("content").isString());
        QCOMPARE(object.value("createdAt").toDouble(), -1.25);
    }

    void defaultCategoryIsWrittenAtTheUnixEpoch() {
        const CategoryRef category = Category::defaultCategory();
        QCOMPARE(category->id(), Category::defaultCategoryId);
        QCOMPARE(category->name(), "Uncategory");
        QVERIFY(category != Category::defaultCategory()); // a new object every time
        const QByteArray json = *RecordCodec::encodeCategories({category});
        QCOMPARE(json, R"([{"createdAt":-978307200,"id":"00000000-0000-0000-0000-000000000000","name":"Uncategory"}])");
        QCOMPARE(Timestamp::toDateTime(0), QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC));
    }

    void roundTripsExactly() {
        // Times must read back bit for bit, whatever the double; texts whatever their content.
        auto* random = QRandomGenerator::global();
        QList<Shortcut> shortcuts;
        for (int i = 0; i < 200; ++i) {
            quint64 bits = random->generate64();
            double time;
            std::memcpy(&time, &bits, sizeof time);
            if (!std::isfinite(time))
                time = random->generateDouble() * 1e9 - 5e8;
            QString content;
            for (int c = 0; c < 20; ++c)
                content.append(QChar(char16_t(random->bounded(1, 0xD7FF))));
            shortcuts.append(Shortcut(QUuid::createUuid(), ";c" + QString::number(i),
                                      content + "\n\t\"\\", time, QUuid::createUuid()));
        }
        const auto decoded = RecordCodec::decodeShortcuts(*RecordCodec::encodeShortcuts(shortcuts));
        QVERIFY(decoded);
        QCOMPARE(decoded->size(), shortcuts.size());
        for (qsizetype i = 0; i < shortcuts.size(); ++i) {
            const Shortcut& a = shortcuts[i];
            const Shortcut& b = decoded->at(i);
            QCOMPARE(b.id, a.id);
            QCOMPARE(b.command, a.command);
            QCOMPARE(b.content, a.content);
            QCOMPARE(std::memcmp(&a.createdAt, &b.createdAt, sizeof(double)), 0);
            QCOMPARE(b.categoryId, a.categoryId);
        }
    }

    void readsLowerCaseIdsAndIgnoresUnknownKeys() {
        QJsonObject object = validShortcutObject();
        object["id"] = "6f1c2b7e-0a9d-4c4b-9f43-1e2d3c4b5a69";
        object["extra"] = QJsonArray{1, 2};
        const auto shortcut = RecordCodec::decodeShortcut(object);
        QVERIFY(shortcut);
        QCOMPARE(shortcut->id, kId);
        QCOMPARE(RecordCodec::encode(*shortcut).value("id").toString(),
                 "6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69");
    }

    void rejectsRecordsThatBreakTheForm_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QJsonValue>("value"); // undefined: key removed
        QTest::newRow("no categoryId") << "categoryId" << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("null categoryId") << "categoryId" << QJsonValue(QJsonValue::Null);
        QTest::newRow("no id") << "id" << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("braced id") << "id" << QJsonValue("{6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69}");
        QTest::newRow("short id") << "id" << QJsonValue("6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A6");
        QTest::newRow("garbage id") << "id" << QJsonValue("not-a-uuid-at-all-but-36-characters!");
        QTest::newRow("hyphens moved") << "id" << QJsonValue("6F1C2B7E0-A9D-4C4B-9F43-1E2D3C4B5A69");
        QTest::newRow("numeric id") << "id" << QJsonValue(7);
        QTest::newRow("string time") << "createdAt" << QJsonValue("12.5");
        QTest::newRow("null time") << "createdAt" << QJsonValue(QJsonValue::Null);
        QTest::newRow("number command") << "command" << QJsonValue(5);
        QTest::newRow("array content") << "content" << QJsonValue(QJsonArray{"a"});
        QTest::newRow("object content") << "content" << QJsonValue(QJsonObject{{"a", 1}});
    }
    void rejectsRecordsThatBreakTheForm() {
        QFETCH(QString, key);
        QFETCH(QJsonValue, value);
        QJsonObject broken = validShortcutObject();
        if (value.isUndefined())
            broken.remove(key);
        else
            broken[key] = value;
        QVERIFY(!RecordCodec::decodeShortcut(broken));
        // One bad record spoils the whole list.
        QVERIFY(RecordCodec::decodeShortcuts(arrayOf({validShortcutObject()})));
        QVERIFY(!RecordCodec::decodeShortcuts(arrayOf({validShortcutObject(), broken})));
    }

    void rejectsDocumentsThatAreNotArraysOfRecords_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("truncated") << arrayOf({validShortcutObject()}).chopped(3);
        QTest::newRow("object") << QByteArray(R"({"Shortcuts":[]})");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("array of null") << QByteArray("[null]");
        QTest::newRow("array of numbers") << QByteArray("[1,2]");
        QTest::newRow("deep nesting") << (QByteArray(100000, '[') + QByteArray(100000, ']'));
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe[", 4);
    }
    void rejectsDocumentsThatAreNotArraysOfRecords() {
        QFETCH(QByteArray, json);
        QVERIFY(!RecordCodec::decodeShortcuts(json));
        QVERIFY(!RecordCodec::decodeCategories(json));
    }

    void emptyArrayIsAnEmptyList() {
        QCOMPARE(RecordCodec::decodeShortcuts("[]")->size(), 0);
        QCOMPARE(RecordCodec::decodeCategories("[]")->size(), 0);
    }

    void categoriesFollowTheSameRules() {
        const QByteArray good = R"([{"id":"a1b2c3d4-e5f6-4789-abcd-ef0123456789","name":"Work","createdAt":0,"colour":"red"}])";
        const auto categories = RecordCodec::decodeCategories(good);
        QVERIFY(categories);
        QCOMPARE(categories->at(0)->id(), kCategory);
        QCOMPARE(categories->at(0)->name(), "Work");
        QCOMPARE(categories->at(0)->createdAt(), 0.0);
        QVERIFY(!RecordCodec::decodeCategories(R"([{"id":"a1b2c3d4-e5f6-4789-abcd-ef0123456789","createdAt":0}])"));
        QVERIFY(!RecordCodec::decodeCategories(R"([{"id":"a1b2c3d4-e5f6-4789-abcd-ef0123456789","name":null,"createdAt":0}])"));
    }

    void listEncoderWritesWhatTheCodecWrites() {
        // The save path reuses each snippet's earlier JSON; after any mix of edits its output
        // must still be exactly the codec's.
        auto* random = QRandomGenerator::global();
        ShortcutListEncoder encoder;
        QList<Shortcut> shortcuts;
        for (int i = 0; i < 50; ++i)
            shortcuts.append(Shortcut::create(";s" + QString::number(i), "c", QUuid()));
        for (int round = 0; round < 200; ++round) {
            Shortcut& s = shortcuts[random->bounded(shortcuts.size())];
            switch (random->bounded(6)) {
            case 0: s.command += u'é'; break;
            case 1: s.content = QString::number(round) + "\n\""; break;
            case 2: s.createdAt = (round % 2) ? 0.0 : -0.0; break;
            case 3: s.categoryId = QUuid::createUuid(); break;
            case 4: shortcuts.append(Shortcut::create(";n", "", QUuid())); break;
            case 5: shortcuts.removeAt(random->bounded(shortcuts.size())); break;
            }
            QCOMPARE(*encoder.encode(shortcuts), *RecordCodec::encodeShortcuts(shortcuts));
        }
        shortcuts[0].createdAt = std::numeric_limits<double>::infinity();
        QVERIFY(!encoder.encode(shortcuts));
    }

    void timesThatJsonCannotHoldAreNotWritten() {
        const Shortcut bad(kId, ";x", "x", std::numeric_limits<double>::quiet_NaN(), kCategory);
        QVERIFY(!RecordCodec::encodeShortcuts({bad}));
        QVERIFY(!RecordCodec::encodeCategories(
            {CategoryRef::create(kCategory, "x", std::numeric_limits<double>::infinity())}));
    }
};

QTEST_GUILESS_MAIN(RecordCodecTest)
#include "RecordCodecTest.moc"
