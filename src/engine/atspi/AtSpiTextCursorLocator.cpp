#include "AtSpiTextCursorLocator.h"

#include "AtSpiBusAddress.h"
#include "Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QPointer>
#include <QTimer>
#include <algorithm>

namespace {
// ATSPI_COORD_TYPE_SCREEN: desktop coordinates, rather than ones within the window.
constexpr uint screenCoordinates = 0;
const QString connectionName = QStringLiteral("typolet-text-cursor");
const QString textInterface = QStringLiteral("org.a11y.atspi.Text");

// One question about the cursor: answered once, by the calls or by the deadline, whichever
// comes first.
struct Question {
    QPointer<QObject> context;
    TextCursorLocator::Answer answered;

    void answer(std::optional<QRect> cursor) {
        TextCursorLocator::Answer once = std::exchange(answered, {});
        if (once && context)
            once(cursor);
    }
};

// The cursor's rectangle from a GetCharacterExtents reply (x, y, width, height).
std::optional<QRect> cursorIn(const QDBusPendingReply<int, int, int, int>& reply) {
    // An application that does not know its layout answers with an empty box; the place after
    // the last character is as tall as a line but may have no width.
    if (reply.isError() || reply.argumentAt<3>() <= 0)
        return std::nullopt;
    const QRect cursor(reply.argumentAt<0>(), reply.argumentAt<1>(),
                       std::max(reply.argumentAt<2>(), 1), reply.argumentAt<3>());
    qCDebug(lcEngine).noquote() << QStringLiteral("Text cursor at %1,%2, %3 high")
                                       .arg(cursor.x())
                                       .arg(cursor.y())
                                       .arg(cursor.height());
    return cursor;
}
} // namespace

AtSpiTextCursorLocator::AtSpiTextCursorLocator(QObject* parent) : QObject(parent) {}

AtSpiTextCursorLocator::~AtSpiTextCursorLocator() {
    if (m_bus) {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(connectionName);
    }
}

void AtSpiTextCursorLocator::start() {
    AtSpiBusAddress::find(this, [this](const QString& address, const QString& whyNot) {
        if (address.isEmpty())
            unavailable(whyNot);
        else
            listenOn(address);
    });
}

void AtSpiTextCursorLocator::listenOn(const QString& address) {
    m_bus =
        std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, connectionName));
    if (!m_bus->isConnected()) {
        const QString why = m_bus->lastError().message();
        m_bus.reset();
        QDBusConnection::disconnectFromBus(connectionName);
        unavailable(QStringLiteral("the accessibility bus refused the connection: ") + why);
        return;
    }
    m_bus->connect(QString(), QString(), QStringLiteral("org.a11y.atspi.Event.Object"),
                   QStringLiteral("StateChanged"), this, SLOT(stateChanged(QDBusMessage)));
    m_bus->connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                   QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), this,
                   SLOT(nameOwnerChanged(QString, QString, QString)));
    // Applications send focus events only while someone has registered for them.
    QDBusMessage registration = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
    registration << QStringLiteral("object:state-changed:focused") << QStringList() << QString();
    auto* call = new QDBusPendingCallWatcher(m_bus->asyncCall(registration), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* answer) {
                answer->deleteLater();
                if (answer->isError()) {
                    unavailable(QStringLiteral("the accessibility registry did not answer: ") +
                                answer->error().message());
                    return;
                }
                qCInfo(lcEngine).noquote()
                    << QStringLiteral("The text cursor is located through the accessibility bus");
            });
}

void AtSpiTextCursorLocator::unavailable(const QString& why) {
    qCInfo(lcEngine).noquote()
        << QStringLiteral("The text cursor cannot be located (%1): windows open over the "
                          "focused window instead")
               .arg(why);
}

void AtSpiTextCursorLocator::stateChanged(const QDBusMessage& event) {
    // kind, detail1 (1: the state was set, 0: cleared), detail2, any data, properties
    const QVariantList arguments = event.arguments();
    if (arguments.size() < 2 || arguments.at(0).toString() != QLatin1String("focused"))
        return;
    if (arguments.at(1).toInt() != 0) {
        m_service = event.service();
        m_path = event.path();
    } else if (event.service() == m_service && event.path() == m_path) {
        // A lost focus may be reported after the next object's gain (they come from different
        // applications): only the object that has the focus now is forgotten.
        m_service.clear();
        m_path.clear();
    }
}

void AtSpiTextCursorLocator::nameOwnerChanged(const QString& name, const QString&,
                                              const QString& newOwner) {
    if (newOwner.isEmpty() && name == m_service) {
        m_service.clear();
        m_path.clear();
    }
}

void AtSpiTextCursorLocator::locate(QObject* context, Answer answered) {
    if (!m_bus || m_service.isEmpty()) {
        answered(std::nullopt);
        return;
    }
    auto question = std::make_shared<Question>(Question{context, std::move(answered)});
    QTimer::singleShot(answerDeadlineMs, this, [question] {
        if (question->answered)
            qCDebug(lcEngine).noquote()
                << QStringLiteral("Text cursor: no answer in time from the focused application");
        question->answer(std::nullopt);
    });
    const QString service = m_service, path = m_path;
    QDBusMessage caret = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    caret << textInterface << QStringLiteral("CaretOffset");
    auto* call = new QDBusPendingCallWatcher(m_bus->asyncCall(caret, answerDeadlineMs), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this, question, service, path](QDBusPendingCallWatcher* answer) {
                answer->deleteLater();
                const QDBusPendingReply<QDBusVariant> offset = *answer;
                const int at = offset.isError() ? -1 : offset.value().variant().toInt();
                if (at < 0) { // not a text, or one without a cursor
                    question->answer(std::nullopt);
                    return;
                }
                QDBusMessage extents = QDBusMessage::createMethodCall(
                    service, path, textInterface, QStringLiteral("GetCharacterExtents"));
                extents << at << screenCoordinates;
                auto* next =
                    new QDBusPendingCallWatcher(m_bus->asyncCall(extents, answerDeadlineMs), this);
                connect(next, &QDBusPendingCallWatcher::finished, this,
                        [question](QDBusPendingCallWatcher* box) {
                            box->deleteLater();
                            question->answer(cursorIn(*box));
                        });
            });
}
