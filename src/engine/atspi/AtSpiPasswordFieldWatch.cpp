#include "AtSpiPasswordFieldWatch.h"

#include "Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>

namespace {
// ATSPI_ROLE_PASSWORD_TEXT in AT-SPI's list of roles. GTK's entries with hidden text, Qt's line
// edits in password mode and the browsers' password inputs all report it.
constexpr uint passwordTextRole = 40;
// How long a focused object may take to name its role; meanwhile its keys are left alone.
constexpr int roleTimeoutMs = 1000;
// The accessibility bus can take a while to come up when D-Bus starts it for this question.
constexpr int busAddressTimeoutMs = 25000;
const QString connectionName = QStringLiteral("typolet-accessibility");
} // namespace

AtSpiPasswordFieldWatch::AtSpiPasswordFieldWatch(QObject* parent) : QObject(parent) {}

AtSpiPasswordFieldWatch::~AtSpiPasswordFieldWatch() {
    if (m_bus) {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(connectionName);
    }
}

bool AtSpiPasswordFieldWatch::passwordFieldFocused() const {
    // While a newly focused object has not said what it is, it may be a password field.
    return m_field == Field::Password || m_field == Field::Asking;
}

void AtSpiPasswordFieldWatch::start() {
    // Set where the accessibility bus is not found through the session bus; AT-SPI's own
    // libraries honour it first as well.
    const QString given = qEnvironmentVariable("AT_SPI_BUS_ADDRESS");
    if (!given.isEmpty()) {
        listenOn(given);
        return;
    }
    // With no session bus address at all, libdbus would launch a session bus for the display;
    // starting one is the desktop's business, not Typolet's.
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") &&
        (runtime.isEmpty() || !QFileInfo::exists(runtime + QStringLiteral("/bus")))) {
        unavailable(QStringLiteral("there is no D-Bus session bus"));
        return;
    }
    QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected()) {
        unavailable(QStringLiteral("the D-Bus session bus did not answer"));
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
    auto* call = new QDBusPendingCallWatcher(session.asyncCall(ask, busAddressTimeoutMs), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* answer) {
                answer->deleteLater();
                const QDBusPendingReply<QString> reply = *answer;
                if (reply.isError() || reply.value().isEmpty()) {
                    unavailable(QStringLiteral("no accessibility bus: ") + reply.error().message());
                    return;
                }
                listenOn(reply.value());
            });
}

void AtSpiPasswordFieldWatch::listenOn(const QString& address) {
    // Connecting waits for the local bus daemon's greeting: one short step, once.
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

    // One rule for every name on the bus, so that a focus change costs no call to the bus.
    m_bus->connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                   QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), this,
                   SLOT(nameOwnerChanged(QString, QString, QString)));

    // Applications send focus events only while someone has registered for them (no extra
    // properties, from every application).
    QDBusMessage registration = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
    registration << QStringLiteral("object:state-changed:focused") << QStringList() << QString();
    auto* call = new QDBusPendingCallWatcher(m_bus->asyncCall(registration), this);
    connect(
        call, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* answer) {
            answer->deleteLater();
            if (answer->isError()) {
                unavailable(QStringLiteral("the accessibility registry did not answer: ") +
                            answer->error().message());
                return;
            }
            qCInfo(lcEngine).noquote()
                << QStringLiteral("Password fields are recognised through the accessibility bus");
        });
}

void AtSpiPasswordFieldWatch::unavailable(const QString& why) {
    if (m_saidUnavailable)
        return;
    m_saidUnavailable = true;
    qCWarning(lcEngine).noquote()
        << QStringLiteral("Password fields cannot be recognised (%1); keys typed in them are "
                          "handled like any others")
               .arg(why);
}

void AtSpiPasswordFieldWatch::stateChanged(const QDBusMessage& event) {
    // kind, detail1 (1: the state was set, 0: cleared), detail2, any data, properties
    const QVariantList arguments = event.arguments();
    if (arguments.size() < 2 || arguments.at(0).toString() != QLatin1String("focused"))
        return;
    const QString service = event.service();
    const QString path = event.path();
    if (arguments.at(1).toInt() == 0) {
        // A lost focus may be reported after the next object's gain (they come from different
        // applications): only the object that has the focus now is forgotten.
        if (service == m_service && path == m_path)
            forgetFocus();
        return;
    }
    focusGained(service, path);
}

void AtSpiPasswordFieldWatch::focusGained(const QString& service, const QString& path) {
    const bool wasPassword = m_field == Field::Password;
    m_service = service;
    m_path = path;
    const auto settle = [this, wasPassword](uint knownRole) {
        m_field = knownRole == passwordTextRole ? Field::Password : Field::Plain;
        const bool isPassword = m_field == Field::Password;
        // Each focus change, for whoever needs to know when it was taken in.
        qCDebug(lcEngine).noquote() << (isPassword ? QStringLiteral("Focus: a password field")
                                                   : QStringLiteral("Focus: not a password field"));
        if (isPassword != wasPassword)
            qCInfo(lcEngine).noquote()
                << (isPassword ? QStringLiteral("A password field has the focus: keys typed "
                                                "there are not looked at")
                               : QStringLiteral("The password field lost the focus"));
    };
    // The focus event does not say what the object is: it is asked, and answers later.
    m_field = Field::Asking;
    const QDBusMessage ask = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.a11y.atspi.Accessible"), QStringLiteral("GetRole"));
    auto* call = new QDBusPendingCallWatcher(m_bus->asyncCall(ask, roleTimeoutMs), this);
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this, service, path, settle](QDBusPendingCallWatcher* answer) {
                answer->deleteLater();
                if (m_field != Field::Asking || service != m_service || path != m_path)
                    return; // the focus has moved on meanwhile
                const QDBusPendingReply<uint> reply = *answer;
                // An object that cannot name its role is taken for a plain field, so that a
                // broken application does not stop expansion in it for good.
                settle(reply.isError() ? 0 : reply.value());
            });
}

void AtSpiPasswordFieldWatch::nameOwnerChanged(const QString& name, const QString&,
                                             const QString& newOwner) {
    // The application ended (or left the bus) with the focus in one of its fields.
    if (newOwner.isEmpty() && name == m_service)
        forgetFocus();
}

void AtSpiPasswordFieldWatch::forgetFocus() {
    if (m_field == Field::Password)
        qCInfo(lcEngine).noquote() << QStringLiteral("The password field lost the focus");
    m_service.clear();
    m_path.clear();
    m_field = Field::None;
}
