// The text cursor asked of an application on a real D-Bus daemon standing for the accessibility
// bus: its answer is taken, an empty box is no place, and an application that never answers
// leaves the question unanswered only until the deadline.
#include "AtSpiTextCursorLocator.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QtTest>

namespace {
const QString fieldPath = QStringLiteral("/org/a11y/atspi/accessible/7");

// The accessibility registry: takes event registrations.
class Registry : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("RegisterEvent"))
            registered = true;
        connection.send(message.createReply());
        return true;
    }
    QString introspect(const QString&) const override { return {}; }
    bool registered = false;
};

// A focused text field of an application, answering with `box` (x, y, width, height), or not
// at all.
class TextField : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++asked;
        if (!answers)
            return true; // taken, and never answered
        if (message.member() == QLatin1String("Get")) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(caretOffset))));
        } else if (message.member() == QLatin1String("GetCharacterExtents")) {
            askedOffset = message.arguments().value(0).toInt();
            askedCoordinates = message.arguments().value(1).toUInt();
            connection.send(message.createReply({box.x(), box.y(), box.width(), box.height()}));
        } else {
            connection.send(message.createErrorReply(QDBusError::UnknownMethod, {}));
        }
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

    bool answers = true;
    int caretOffset = 12;
    QRect box;
    int asked = 0;
    int askedOffset = -1;
    uint askedCoordinates = 99;
};
} // namespace

class AtSpiTextCursorLocatorTest : public QObject {
    Q_OBJECT

    // Asks once and waits for the answer; nothing when none came.
    static std::optional<std::optional<QRect>> ask(TextCursorLocator& locator, QObject* context) {
        std::optional<std::optional<QRect>> answer;
        locator.locate(context, [&](std::optional<QRect> cursor) { answer = cursor; });
        if (!QTest::qWaitFor([&] { return answer.has_value(); }, 5000))
            return std::nullopt;
        return answer;
    }

private slots:
    void answers_data() {
        QTest::addColumn<bool>("answers");
        QTest::addColumn<QRect>("box");
        QTest::addColumn<QRect>("expected"); // empty: no place
        QTest::newRow("after the last character: no width")
            << true << QRect(300, 200, 0, 18) << QRect(300, 200, 1, 18);
        QTest::newRow("on a character") << true << QRect(-40, 700, 9, 20) << QRect(-40, 700, 9, 20);
        QTest::newRow("an empty box") << true << QRect(0, 0, 0, 0) << QRect();
        QTest::newRow("never answers") << false << QRect(300, 200, 0, 18) << QRect();
    }

    void answers() {
        QFETCH(bool, answers);
        QFETCH(QRect, box);
        QFETCH(QRect, expected);
        QProcess daemon;
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"),
                      QStringLiteral("--print-address=1")});
        QVERIFY2(daemon.waitForStarted(), qPrintable(daemon.errorString()));
        QVERIFY(QTest::qWaitFor([&] { return daemon.canReadLine(); }, 10000));
        const QString address = QString::fromUtf8(daemon.readLine()).trimmed();
        qputenv("AT_SPI_BUS_ADDRESS", address.toUtf8());

        Registry registry;
        QDBusConnection registryBus = QDBusConnection::connectToBus(address, "registry");
        QVERIFY(registryBus.registerService("org.a11y.atspi.Registry"));
        QVERIFY(registryBus.registerVirtualObject("/org/a11y/atspi/registry", &registry));
        TextField field;
        field.answers = answers;
        field.box = box;
        QDBusConnection application = QDBusConnection::connectToBus(address, "application");
        QVERIFY(application.registerVirtualObject(fieldPath, &field));

        {
            AtSpiTextCursorLocator locator;
            locator.start();
            QTRY_VERIFY(registry.registered);
            // The field takes the focus: kind, set, detail, data, properties.
            QDBusMessage focus =
                QDBusMessage::createSignal(fieldPath, QStringLiteral("org.a11y.atspi.Event.Object"),
                                           QStringLiteral("StateChanged"));
            focus << QStringLiteral("focused") << 1 << 0 << QVariant::fromValue(QDBusVariant(0))
                  << QVariantMap();
            QVERIFY(application.send(focus));
            // Before the focus event arrives the answer is "unknown" without a question.
            std::optional<std::optional<QRect>> cursor;
            QVERIFY(QTest::qWaitFor(
                [&] {
                    cursor = ask(locator, this);
                    return !cursor || field.asked > 0;
                },
                10000));
            QVERIFY2(cursor, "the question was never answered");
            QCOMPARE(cursor->value_or(QRect()), expected);
            if (answers) {
                QCOMPARE(field.askedOffset, field.caretOffset);
                QCOMPARE(field.askedCoordinates, 0u); // the screen's
            }
        }
        application.unregisterObject(fieldPath);
        registryBus.unregisterObject("/org/a11y/atspi/registry");
        QDBusConnection::disconnectFromBus("application");
        QDBusConnection::disconnectFromBus("registry");
        qunsetenv("AT_SPI_BUS_ADDRESS");
        daemon.terminate();
        QVERIFY(daemon.waitForFinished(10000));
    }
};

QTEST_GUILESS_MAIN(AtSpiTextCursorLocatorTest)
#include "AtSpiTextCursorLocatorTest.moc"
