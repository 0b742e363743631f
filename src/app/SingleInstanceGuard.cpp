#include "SingleInstanceGuard.h"

#include "Logging.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QEventLoop>
#include <QTimer>
#include <unistd.h>

namespace {
// How long a second launch keeps trying to reach a Typolet that holds the lock but may still
// be starting up.
constexpr int connectPatienceMs = 5000;
} // namespace

SingleInstanceGuard::SingleInstanceGuard(QString serverName, QObject* parent)
    : QObject(parent),
      m_serverName(serverName.isEmpty() ? defaultServerName() : std::move(serverName)),
      m_lock(m_serverName + QStringLiteral(".lock")) {
    // Only a lock whose process has gone is stale, however old it is.
    m_lock.setStaleLockTime(0);
}

SingleInstanceGuard::~SingleInstanceGuard() {
    if (m_server)
        m_server->close();
}

QString SingleInstanceGuard::defaultServerName() {
    // One Typolet per user and X display: the engine watches and types on one display, so
    // instances on two displays (a second seat, a test server) never expand the same keys.
    QString display = qEnvironmentVariable("DISPLAY");
    display.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    const QString file = display.isEmpty() ? QStringLiteral("typolet.socket")
                                           : QStringLiteral("typolet-%1.socket").arg(display);
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir())
        return QDir(runtime).filePath(file);
    // No private runtime folder: the shared temporary folder, with the user id in the name.
    return QDir(QDir::tempPath())
        .filePath(QStringLiteral("%1-%2").arg(static_cast<qulonglong>(::getuid())).arg(file));
}

SingleInstanceGuard::Role SingleInstanceGuard::claim() {
    if (m_lock.tryLock(0)) {
        listen();
        return Role::Primary;
    }
    if (m_lock.error() != QLockFile::LockFailedError) {
        // The lock cannot be taken at all (for example an unwritable folder): run rather than
        // refuse to start, but without the guard.
        qCWarning(lcApp).noquote() << QStringLiteral("Cannot check for another running Typolet (lock file %1)")
                              .arg(m_lock.error() == QLockFile::PermissionError
                                       ? QStringLiteral("not writable")
                                       : QStringLiteral("unreadable"));
        return Role::Primary;
    }
    m_notified = notifyPrimary();
    return Role::Secondary;
}

void SingleInstanceGuard::listen() {
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // We hold the lock, so a socket file still there belongs to a Typolet that is gone.
    QLocalServer::removeServer(m_serverName);
    if (!m_server->listen(m_serverName)) {
        qCWarning(lcApp).noquote() << QStringLiteral("Cannot listen for later launches on %1: %2")
                              .arg(m_serverName, m_server->errorString());
        return;
    }
    connect(m_server.get(), &QLocalServer::newConnection, this,
            &SingleInstanceGuard::acceptConnections);
}

void SingleInstanceGuard::acceptConnections() {
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        auto handle = [this, socket] {
            if (!socket->canReadLine())
                return;
            const QByteArray line = socket->readLine();
            if (line == activateMessage)
                emit activationRequested();
            socket->disconnectFromServer();
        };
        connect(socket, &QLocalSocket::readyRead, this, handle);
        // The request may have arrived with the connection.
        handle();
    }
}

bool SingleInstanceGuard::notifyPrimary() {
    QElapsedTimer elapsed;
    elapsed.start();
    while (true) {
        QLocalSocket socket;
        socket.connectToServer(m_serverName);
        if (socket.waitForConnected(1000)) {
            socket.write(activateMessage);
            while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(2000)) {
            }
            const bool sent = socket.bytesToWrite() == 0;
            socket.disconnectFromServer();
            return sent;
        }
        if (elapsed.elapsed() > connectPatienceMs)
            return false;
        // The first Typolet may still be starting: try again shortly, events still flowing.
        QEventLoop pause;
        QTimer::singleShot(100, &pause, &QEventLoop::quit);
        pause.exec();
    }
}
