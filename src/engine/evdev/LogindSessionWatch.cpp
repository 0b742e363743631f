#include "LogindSessionWatch.h"

#include "Logging.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {
const QString service = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
} // namespace

LogindSessionWatch::LogindSessionWatch(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), m_bus(bus) {}

void LogindSessionWatch::start(const QString& id) {
    if (!m_bus.isConnected() || !m_path.isEmpty())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(service, managerPath, managerInterface,
                                                       QStringLiteral("GetSession"));
    call << (id.isEmpty() ? QStringLiteral("auto") : id);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (!reply.isValid()) {
            qCInfo(lcEngine).noquote()
                << QStringLiteral("logind does not know this session (%1); the keyboards stay "
                                  "open when another user's session takes the seat")
                       .arg(reply.error().message());
            return;
        }
        follow(reply.value().path());
    });
}

void LogindSessionWatch::follow(const QString& path) {
    m_path = path;
    m_bus.connect(service, path, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                  SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    askActive();
}

void LogindSessionWatch::askActive() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, m_path, propertiesInterface, QStringLiteral("Get"));
    call << sessionInterface << QStringLiteral("Active");
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            setActive(reply.value().variant().toBool());
    });
}

void LogindSessionWatch::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                           const QStringList& invalidated) {
    if (interface != sessionInterface)
        return;
    if (const auto active = changed.constFind(QStringLiteral("Active")); active != changed.cend())
        setActive(active->toBool());
    else if (invalidated.contains(QStringLiteral("Active")))
        askActive();
}

void LogindSessionWatch::setActive(bool active) {
    if (active == m_active)
        return;
    m_active = active;
    emit activeChanged(active);
}
