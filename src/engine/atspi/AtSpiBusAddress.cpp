#include "AtSpiBusAddress.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>

namespace {
// The accessibility bus can take a while to come up when D-Bus starts it for this question.
constexpr int busAddressTimeoutMs = 25000;
} // namespace

void AtSpiBusAddress::find(QObject* context,
                           std::function<void(const QString&, const QString&)> found) {
    // Set where the accessibility bus is not found through the session bus; AT-SPI's own
    // libraries honour it first as well.
    const QString given = qEnvironmentVariable("AT_SPI_BUS_ADDRESS");
    if (!given.isEmpty()) {
        found(given, {});
        return;
    }
    // With no session bus address at all, libdbus would launch a session bus for the display;
    // starting one is the desktop's business, not Typolet's.
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") &&
        (runtime.isEmpty() || !QFileInfo::exists(runtime + QStringLiteral("/bus")))) {
        found({}, QStringLiteral("there is no D-Bus session bus"));
        return;
    }
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        found({}, QStringLiteral("the D-Bus session bus did not answer"));
        return;
    }
    // When the accessibility bus does not run yet, D-Bus starts it (at-spi-bus-launcher) for
    // this question, as it does for the first GTK application of a session. Typolet does not
    // set the bus's IsEnabled switch (org.a11y.Status): GTK applications report their focus
    // without it, while Qt applications and the browsers wait for it; switching it on would
    // make every application started afterwards build its accessibility tree, for the whole
    // session and beyond Typolet's life, so that stays the user's or the desktop's choice.
    const QDBusMessage ask = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
        QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
    auto* call = new QDBusPendingCallWatcher(session.asyncCall(ask, busAddressTimeoutMs), context);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, context,
                     [found = std::move(found)](QDBusPendingCallWatcher* answer) {
                         answer->deleteLater();
                         const QDBusPendingReply<QString> reply = *answer;
                         if (reply.isError() || reply.value().isEmpty())
                             found({}, QStringLiteral("no accessibility bus: ") +
                                           reply.error().message());
                         else
                             found(reply.value(), {});
                     });
}
