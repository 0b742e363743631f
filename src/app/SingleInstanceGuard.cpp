#include "SingleInstanceGuard.h"

#include "LocalServer.h"
#include "LocalSocket.h"
#include "Logging.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QSysInfo>
#include <QRegularExpression>
#include <QEventLoop>
#include <QTimer>

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

SingleInstanceGuard::~SingleInstanceGuard() = default;

QString SingleInstanceGuard::displayKey(const QString& x11Display, const QString& waylandDisplay) {
    if (!waylandDisplay.isEmpty())
        return QStringLiteral("wayland-") + QFileInfo(waylandDisplay).fileName();
    // "[protocol/][host]:number[.screen]", read as Xlib reads it: the screen does not make
    // another server, the number is a number (":07" is display 7), and the local machine has
    // several names. Every spelling of one display must give one key, or a second engine
    // starts beside the first and every expansion comes out twice.
    static const QRegularExpression form(QStringLiteral("^(?:([A-Za-z]+)/)?(.*):(\\d+)(\\.\\d+)?$"));
    const QRegularExpressionMatch match = form.match(x11Display);
    if (!match.hasMatch())
        return {};
    const QString protocol = match.captured(1).toLower();
    QString host = match.captured(2);
    if (host.startsWith(QLatin1Char('/')) || protocol == QLatin1String("unix") ||
        protocol == QLatin1String("local"))
        host.clear(); // a socket path (launchd-style) or the local socket, named or not
    const QString self = QSysInfo::machineHostName();
    if (host == QLatin1String("localhost") || host == QLatin1String("unix") ||
        host == QLatin1String("127.0.0.1") || host == QLatin1String("::1") || host == self)
        host.clear();
    host.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    bool numeric = false;
    const qulonglong number = match.captured(3).toULongLong(&numeric);
    if (!numeric)
        return {};
    return host + QLatin1Char('_') + QString::number(number);
}

QString SingleInstanceGuard::defaultServerName() {
    // One Typolet per user and display: the engine watches and types on one display, so
    // instances on two displays (a second seat, a test server) never expand the same keys,
    // while two names for the same display lead to the same guard.
    const QString display =
        displayKey(qEnvironmentVariable("DISPLAY"), qEnvironmentVariable("WAYLAND_DISPLAY"));
    const QString file = display.isEmpty() ? QStringLiteral("typolet.socket")
                                           : QStringLiteral("typolet-%1.socket").arg(display);
    // A folder only this user can write: Qt checks that the runtime folder is the user's own
    // and private (making one in /tmp when XDG_RUNTIME_DIR is unset), and gives none otherwise.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                 QStringLiteral("/typolet");
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                          QFileDevice::ExeOwner);
    }
    return QDir(folder).filePath(file);
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
    // We hold the lock, so a socket file still there belongs to a Typolet that is gone: the
    // server replaces it.
    m_server = std::make_unique<LocalServer>();
    if (!m_server->listen(m_serverName)) {
        qCWarning(lcApp).noquote() << QStringLiteral("Cannot listen for later launches on %1: %2")
                              .arg(m_serverName, m_server->errorString());
        return;
    }
    connect(m_server.get(), &LocalServer::connected, this, &SingleInstanceGuard::answer);
}

void SingleInstanceGuard::answer(LocalSocket* socket) {
    connect(socket, &LocalSocket::disconnected, socket, &QObject::deleteLater);
    auto handle = [this, socket] {
        if (!socket->canReadLine())
            return;
        const QByteArray line = socket->readLine();
        socket->close();
        socket->deleteLater();
        if (line == activateMessage)
            emit activationRequested();
        else if (line == insertMessage)
            emit insertRequested();
    };
    connect(socket, &LocalSocket::readyRead, this, handle);
}

bool SingleInstanceGuard::notifyPrimary() {
    QElapsedTimer elapsed;
    elapsed.start();
    while (true) {
        if (const std::unique_ptr<LocalSocket> socket(LocalSocket::connectTo(m_serverName));
            socket)
            return socket->write(m_request);
        if (elapsed.elapsed() > connectPatienceMs)
            return false;
        // The first Typolet may still be starting: try again shortly, events still flowing.
        QEventLoop pause;
        QTimer::singleShot(100, &pause, &QEventLoop::quit);
        pause.exec();
    }
}

QString SingleInstanceGuard::requestDescription() const {
    return qstrcmp(m_request, insertMessage) == 0 ? QStringLiteral("open Insert Snippet")
                                                  : QStringLiteral("bring its windows forward");
}
