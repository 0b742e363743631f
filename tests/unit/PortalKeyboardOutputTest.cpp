// Typing through the desktop's RemoteDesktop portal, against a stand-in portal on a private
// session bus that answers as xdg-desktop-portal does and records every call.
#include "PortalKeyboardOutput.h"
#include "PrivateBus.h"
#include "RecordingKeyboardOutput.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QtTest>
#include <xkbcommon/xkbcommon.h>

namespace {
class StandInPortal : public QDBusVirtualObject {
public:
    QStringList calls;
    QVariantMap selectOptions;
    QList<std::pair<int, uint>> keys; // keysym, pressed
    uint answer = 0;                  // 0 allowed, 1 the user said no

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != QLatin1String("org.freedesktop.portal.RemoteDesktop"))
            return false;
        const QString member = message.member();
        if (member == QLatin1String("NotifyKeyboardKeysym")) {
            keys.append(
                {message.arguments().value(2).toInt(), message.arguments().value(3).toUInt()});
            return connection.send(message.createReply());
        }
        calls.append(member);
        const QVariantMap options = qdbus_cast<QVariantMap>(message.arguments().last());
        if (member == QLatin1String("SelectDevices"))
            selectOptions = options;
        QString sender = message.service().mid(1);
        sender.replace(u'.', u'_');
        const QString request = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                                    .arg(sender, options.value("handle_token").toString());
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        QVariantMap results;
        if (member == QLatin1String("CreateSession"))
            results.insert("session_handle", "/org/freedesktop/portal/desktop/session/1_2/typolet");
        if (member == QLatin1String("Start"))
            results = {{"devices", 1u}, {"restore_token", "token-after-start"}};
        QDBusMessage response =
            QDBusMessage::createSignal(request, "org.freedesktop.portal.Request", "Response");
        response << answer << results;
        return connection.send(response);
    }
};

struct Rig {
    PrivateBus bus;
    // Named after the bus: a name already used would hand back the connection of a bus gone.
    QDBusConnection portalSide =
        QDBusConnection::connectToBus(bus.address, "portal " + bus.address);
    QDBusConnection typoletSide =
        QDBusConnection::connectToBus(bus.address, "typolet " + bus.address);
    StandInPortal portal;
    RecordingKeyboardOutput uinput;
    PortalKeyboardOutput output{typoletSide, uinput};
    ~Rig() {
        QDBusConnection::disconnectFromBus(portalSide.name());
        QDBusConnection::disconnectFromBus(typoletSide.name());
    }

    bool serve() {
        return portalSide.registerVirtualObject("/org/freedesktop/portal/desktop", &portal) &&
               portalSide.registerService("org.freedesktop.portal.Desktop");
    }
    bool perform(const Expansion& actions) {
        bool finished = false;
        output.perform(actions, [&finished] { finished = true; });
        return QTest::qWaitFor([&finished] { return finished; });
    }
    // The text the pressed keysyms stand for.
    QString typed() const {
        QString text;
        for (const auto& [keysym, pressed] : portal.keys) {
            if (!pressed)
                continue;
            if (keysym == XKB_KEY_BackSpace)
                text += u'⌫';
            else if (keysym == XKB_KEY_Return)
                text += u'\n';
            else {
                const char32_t c = xkb_keysym_to_utf32(uint32_t(keysym));
                text += QString::fromUcs4(&c, 1);
            }
        }
        return text;
    }
};
} // namespace

class PortalKeyboardOutputTest : public QObject {
    Q_OBJECT
private slots:
    void aKeyboardSessionTypesEveryCharacterAsItsKeysym_data() {
        QTest::addColumn<QString>("storedToken");
        QTest::newRow("the first time: the desktop asks") << QString();
        QTest::newRow("later: the kept token") << QStringLiteral("token-kept");
    }
    void aKeyboardSessionTypesEveryCharacterAsItsKeysym() {
        QFETCH(QString, storedToken);
        Rig rig;
        QVERIFY2(!rig.bus.address.isEmpty(), "dbus-daemon did not start");
        QVERIFY(rig.serve());
        QString saved;
        rig.output.setTokenStore([&] { return storedToken; },
                                 [&](const QString& token) { saved = token; });
        QVERIFY(rig.output.start());
        QTRY_VERIFY(rig.output.isReady());
        QCOMPARE(rig.portal.calls, QStringList({"CreateSession", "SelectDevices", "Start"}));
        QCOMPARE(rig.portal.selectOptions.value("types").toUInt(), 1u); // a keyboard
        QCOMPARE(rig.portal.selectOptions.value("persist_mode").toUInt(), 2u);
        QCOMPARE(rig.portal.selectOptions.value("restore_token").toString(), storedToken);
        QCOMPARE(saved, QStringLiteral("token-after-start"));

        QString text = QStringLiteral("Grüße, 漢字 🙂\r\n");
        for (int i = 0; i < 50; ++i)
            text += QStringLiteral("long text ");
        QVERIFY(rig.perform({ExpansionAction::erase(2), ExpansionAction::type(text)}));
        QString expected = QStringLiteral("⌫⌫") + text;
        expected.remove(u'\r');
        QCOMPARE(rig.typed(), expected);
        for (qsizetype i = 0; i < rig.portal.keys.size(); ++i) // each key pressed, then let go
            QCOMPARE(rig.portal.keys[i].second, uint(i % 2 == 0));
        QVERIFY(rig.uinput.performed.isEmpty());
    }

    // Where the desktop says no, or offers no portal, the uinput keyboard types.
    void withoutTheDesktopsYesTheFallbackTypes() {
        Rig rig;
        rig.portal.answer = 1;
        QVERIFY(rig.serve());
        QVERIFY(rig.output.start());
        QTRY_COMPARE(rig.portal.calls, QStringList{"CreateSession"});
        QVERIFY(rig.perform({ExpansionAction::type("abc")}));
        QVERIFY(!rig.output.isReady());
        QCOMPARE(rig.uinput.performed.size(), 1);
        QVERIFY(rig.portal.keys.isEmpty());

        Rig nobody; // no portal on the bus at all
        QVERIFY(nobody.output.start());
        QVERIFY(nobody.perform({ExpansionAction::type("abc")}));
        QCOMPARE(nobody.uinput.performed.size(), 1);
    }
};

QTEST_GUILESS_MAIN(PortalKeyboardOutputTest)
#include "PortalKeyboardOutputTest.moc"
