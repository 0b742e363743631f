#include "LocalServer.h"

#include "LocalSocket.h"

#include <QFile>
#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

LocalServer::LocalServer(QObject* parent) : QObject(parent) {}

LocalServer::~LocalServer() { close(); }

bool LocalServer::listen(const QString& path) {
    close();
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || size_t(name.size()) >= sizeof address.sun_path) {
        m_error = tr("the socket's path is too long");
        return false;
    }
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    ::unlink(name.constData());
    // Narrowed to this user before it listens: until then nobody can connect to it at all.
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(name.constData(), S_IRUSR | S_IWUSR) != 0 || ::listen(fd, 16) != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        ::close(fd);
        return false;
    }
    m_fd = fd;
    m_path = path;
    m_notifier = new QSocketNotifier(qintptr(m_fd), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &LocalServer::accept);
    return true;
}

void LocalServer::accept() {
    while (true) {
        const int fd = ::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (fd < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        emit connected(new LocalSocket(fd, this));
    }
}

void LocalServer::close() {
    if (m_fd < 0)
        return;
    delete m_notifier;
    m_notifier = nullptr;
    ::close(m_fd);
    m_fd = -1;
    ::unlink(QFile::encodeName(m_path).constData());
}
