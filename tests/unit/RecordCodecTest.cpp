#include "RecordCodec.h"
#include "Category.h"
#include "SnippetListEncoder.h"
#include "Timestamp.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QtTest>
#include <bit>

namespace {
const QUuid kId{QStringLiteral("6f1c2b7e-0a9d-4c4b-9f43-1e2d3c4b5a69")};
const QUuid kCategory{QStringLiteral("a1b2c3d4-e5f6-4789-abcd-ef0123456789")};
constexpr double kInfinity = std::numeric_limits<double>::infinity();

QJsonObject validSnippetObject() {
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
    void writesCompactJsonWithEveryKeyAndUpperCaseIds() {
        QCOMPARE(
            *RecordCodec::encodeSnippets({Snippet(kId, "", "", -1.25, kCategory)}),
            R"([{"categoryId":"A1B2C3D4-E5F6-4789-ABCD-EF0123456789","command":"","content":"",)"
            R"("createdAt":-1.25,"id":"6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69"}])");
        QCOMPARE(*RecordCodec::encodeCategories({Category::defaultCategory()}),
                 R"([{"createdAt":-978307200,"id":"00000000-0000-0000-0000-000000000000",)"
                 R"("name":"Uncategory"}])");
        QCOMPARE(Timestamp::toDateTime(0), QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC));
    }

    void roundTripsExactly() {
        // Any finite time must read back bit for bit, and any text whatever its content.
        auto* random = QRandomGenerator::global();
        QList<Snippet> snippets;
        for (int i = 0; i < 200; ++i) {
            double time = std::bit_cast<double>(random->generate64());
            if (!std::isfinite(time))
                time = random->generateDouble() * 1e9 - 5e8;
            QString content = "\n\t\"\\";
            for (int c = 0; c < 20; ++c)
                content.append(QChar(char16_t(random->bounded(1, 0xD7FF))));
            snippets.append(Snippet(QUuid::createUuid(), ";c" + QString::number(i), content, time,
                                      QUuid::createUuid()));
        }
        snippets.first().createdAt = 33896568936174910000.0; // written as a 20-digit integer
        const auto decoded = RecordCodec::decodeSnippets(*RecordCodec::encodeSnippets(snippets));
        QVERIFY(decoded);
        QCOMPARE(decoded->size(), snippets.size());
        const auto fields = [](const Snippet& s) {
            return std::tuple(s.id, s.command, s.content, std::bit_cast<quint64>(s.createdAt),
                              s.categoryId);
        };
        for (qsizetype i = 0; i < snippets.size(); ++i)
            QVERIFY2(fields(decoded->at(i)) == fields(snippets[i]),
                     qPrintable(QString::number(i)));
    }

    void readsLowerCaseIdsAndIgnoresUnknownKeys() {
        QJsonObject object = validSnippetObject();
        object["id"] = "6f1c2b7e-0a9d-4c4b-9f43-1e2d3c4b5a69";
        object["extra"] = QJsonArray{1, 2};
        const auto decoded = RecordCodec::decodeSnippets(arrayOf({object}));
        QVERIFY(decoded && decoded->size() == 1);
        const auto snippet = decoded->constFirst();
        QCOMPARE(snippet.id, kId);
        QCOMPARE(RecordCodec::encode(snippet).value("id").toString(),
                 "6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69");
        const auto categories = RecordCodec::decodeCategories(
            R"([{"id":"a1b2c3d4-e5f6-4789-abcd-ef0123456789","name":"Work","createdAt":5.5,"x":1}])");
        QVERIFY(categories);
        QCOMPARE(categories->at(0).id, kCategory);
        QCOMPARE(categories->at(0).name, "Work");
        QCOMPARE(categories->at(0).createdAt, 5.5);
        QCOMPARE(RecordCodec::decodeSnippets("[]")->size(), 0);
        QCOMPARE(RecordCodec::decodeCategories("[]")->size(), 0);
    }

    void rejectsRecordsThatBreakTheForm() {
        // clang-format off
        const QList<std::pair<QString, QJsonValue>> breaks = { // undefined: the key is removed
            {"categoryId", QJsonValue::Undefined}, {"categoryId", QJsonValue::Null},
            {"id", "{6F1C2B7E-0A9D-4C4B-9F43-1E2D3C4B5A69}"},
            {"id", "not-a-uuid-at-all-but-36-characters!"}, {"createdAt", "12.5"},
            {"command", 5}, {"content", QJsonArray{"a"}}};
        // clang-format on
        QVERIFY(RecordCodec::decodeSnippets(arrayOf({validSnippetObject()})));
        for (const auto& [key, value] : breaks) {
            QJsonObject broken = validSnippetObject();
            if (value.isUndefined())
                broken.remove(key);
            else
                broken[key] = value;
            // A bad record is left out and counted; the rest of the list is kept.
            int unreadable = 0;
            const auto kept =
                RecordCodec::decodeSnippets(arrayOf({validSnippetObject(), broken}), &unreadable);
            QVERIFY(kept && kept->size() == 1);
            QCOMPARE(unreadable, 1);
        }
    }

    void rejectsDocumentsThatAreNotArraysOfRecords() {
        const QByteArray noName = R"([{"id":"a1b2c3d4-e5f6-4789-abcd-ef0123456789","createdAt":0)";
        for (const QByteArray& json :
             {QByteArray(), arrayOf({validSnippetObject()}).chopped(3), QByteArray("{}"),
              QByteArray("[1,2]"), QByteArray(100000, '[') + QByteArray(100000, ']'),
              QByteArray("\x00\xff\xfe[", 4), noName + "}]", noName + R"(,"name":null}])"}) {
            // Not a list at all, or a list of which nothing can be read.
            int unreadable = 0;
            const auto snippets = RecordCodec::decodeSnippets(json, &unreadable);
            QVERIFY2(!snippets || (snippets->isEmpty() && unreadable > 0), json.left(60).constData());
            unreadable = 0;
            const auto categories = RecordCodec::decodeCategories(json, &unreadable);
            QVERIFY2(!categories || (categories->isEmpty() && unreadable > 0),
                     json.left(60).constData());
        }
    }

    void listEncoderWritesWhatTheCodecWrites() {
        // Saving reuses each snippet's earlier JSON; after any mix of edits the bytes must
        // still be exactly the codec's.
        auto* random = QRandomGenerator::global();
        SnippetListEncoder encoder;
        QList<Snippet> snippets;
        for (int i = 0; i < 50; ++i)
            snippets.append(Snippet::create(";s" + QString::number(i), "c", QUuid()));
        for (int round = 0; round < 200; ++round) {
            Snippet& s = snippets[random->bounded(snippets.size())];
            // clang-format off
            switch (random->bounded(6)) {
            case 0: s.command += u'é'; break;
            case 1: s.content = QString::number(round) + "\n\""; break;
            case 2: s.createdAt = (round % 2) ? 0.0 : -0.0; break;
            case 3: s.categoryId = QUuid::createUuid(); break;
            case 4: snippets.append(Snippet::create(";n", "", QUuid())); break;
            case 5: snippets.removeAt(random->bounded(snippets.size())); break;
            }
            // clang-format on
            QCOMPARE(*encoder.encode(snippets), *RecordCodec::encodeSnippets(snippets));
        }
        // Times that JSON cannot hold are not written.
        snippets[0].createdAt = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!encoder.encode(snippets));
        QVERIFY(!RecordCodec::encodeSnippets(snippets));
        QVERIFY(!RecordCodec::encodeCategories({Category(kCategory, "x", kInfinity)}));
    }
};

QTEST_GUILESS_MAIN(RecordCodecTest)
#include "RecordCodecTest.moc"
