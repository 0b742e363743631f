#pragma once

#include <QProcess>
#include <QString>

// A session bus of the test's own (dbus-daemon), ended with the test: stand-ins for desktop
// services register on it without touching the user's bus.
struct PrivateBus {
    QProcess daemon;
    QString address;
    PrivateBus() {
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"),
                      QStringLiteral("--print-address")});
        if (daemon.waitForReadyRead(10000))
            address = QString::fromUtf8(daemon.readLine()).trimmed();
    }
    ~PrivateBus() {
        daemon.terminate();
        daemon.waitForFinished();
    }
};
