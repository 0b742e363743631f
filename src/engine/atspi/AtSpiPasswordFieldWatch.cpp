#include "AtSpiPasswordFieldWatch.h"

#include "AtSpiBusAddress.h"
#include "Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {
// ATSPI_ROLE_PASSWORD_TEXT in AT-SPI's list of roles. GTK's entries with hidden text, Qt's line
// edits in password mode and the browsers' password inputs all report it.
constexpr uint passwordTextRole = 40;
// How long a focused object may take to name its role; meanwhile its keys are left alone.
constexpr int roleTimeoutMs = 1000;
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
    AtSpiBusAddress::find(this, [this](const QString& address, const QString& whyNot) {
        if (address.isEmpty())
            unavailable(whyNot);
        else
            listenOn(address);
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
