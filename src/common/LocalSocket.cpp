#include "LocalSocket.h"

#include <QFile>
#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

LocalSocket::LocalSocket(int fd, QObject* parent) : QObject(parent), m_fd(fd) {
    ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) | O_NONBLOCK);
    m_notifier = new QSocketNotifier(qintptr(m_fd), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &LocalSocket::receive);
}

LocalSocket::~LocalSocket() { close(); }

LocalSocket* LocalSocket::connectTo(const QString& path, QObject* parent) {
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || size_t(name.size()) >= sizeof address.sun_path)
        return nullptr;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return nullptr;
    // A Unix socket connects at once or not at all.
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return nullptr;
    }
    return new LocalSocket(fd, parent);
}

bool LocalSocket::write(const QByteArray& data, int timeoutMs) {
    qsizetype sent = 0;
    while (m_fd >= 0 && sent < data.size()) {
        const ssize_t done = ::send(m_fd, data.constData() + sent, size_t(data.size() - sent),
                                    MSG_NOSIGNAL);
        if (done > 0) {
            sent += done;
        } else if (done < 0 && errno == EINTR) {
            continue;
        } else if (done < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd ready{m_fd, POLLOUT, 0};
            if (::poll(&ready, 1, timeoutMs) <= 0)
                return false;
        } else {
            return false;
        }
    }
    return m_fd >= 0;
}

void LocalSocket::receive() {
    bool closed = false;
    char buffer[16384];
    while (true) {
        const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
        if (got > 0) {
            m_received.append(buffer, got);
            continue;
        }
        if (got < 0 && errno == EINTR)
            continue;
        closed = got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
        break;
    }
    if (!m_received.isEmpty())
        emit readyRead();
    if (closed && m_fd >= 0) {
        close();
        emit disconnected();
    }
}

QByteArray LocalSocket::readAll() { return std::exchange(m_received, {}); }

bool LocalSocket::canReadLine() { return m_received.contains('\n'); }

QByteArray LocalSocket::readLine() {
    const qsizetype end = m_received.indexOf('\n');
    if (end < 0)
        return {};
    const QByteArray line = m_received.left(end + 1);
    m_received.remove(0, end + 1);
    return line;
}

void LocalSocket::close() {
    if (m_fd < 0)
        return;
    delete m_notifier;
    m_notifier = nullptr;
    ::close(m_fd);
    m_fd = -1;
}
