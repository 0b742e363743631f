#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

// Whether the user's session is the active one at its seat, as systemd-logind says
// (org.freedesktop.login1.Session.Active). With fast user switching another user's session
// becomes active on the same seat; logind then takes the input devices' access away from ours,
// but a descriptor opened before keeps reading, so Typolet must close its own.
//
// Every call is asynchronous: the answer arrives in the event loop. Without logind (or when it
// does not know the session) the session counts as active and nothing is reported.
class LogindSessionWatch : public QObject {
    Q_OBJECT
public:
    // Follows logind on `bus` (the system bus on a real system).
    explicit LogindSessionWatch(const QDBusConnection& bus, QObject* parent = nullptr);

    // Starts following the session `id` (XDG_SESSION_ID); empty: the one logind picks for the
    // caller ("auto").
    void start(const QString& id);
    bool isActive() const { return m_active; }

signals:
    void activeChanged(bool active);

private slots:
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList& invalidated);

private:
    void follow(const QString& path);
    void askActive();
    void setActive(bool active);

    QDBusConnection m_bus;
    QString m_path;
    bool m_active = true;
};
