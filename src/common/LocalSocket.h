#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

// A connected Unix stream socket, read as data arrives through the event loop. Typolet's own
// sockets carry a line or a few kilobytes, so a write waits until it is all sent; reads never
// wait. (Qt's local sockets would bring Qt Network and its libraries into every start.)
class LocalSocket : public QObject {
    Q_OBJECT
public:
    // Takes over `fd`, a connected stream socket.
    explicit LocalSocket(int fd, QObject* parent = nullptr);
    ~LocalSocket() override;

    // Connects to the socket at `path`; null when nothing listens there.
    static LocalSocket* connectTo(const QString& path, QObject* parent = nullptr);

    bool isOpen() const { return m_fd >= 0; }
    // Sends all of `data`, waiting at most `timeoutMs` for the peer to take it; false when it
    // could not.
    bool write(const QByteArray& data, int timeoutMs = 2000);
    // What has arrived and not been taken yet; takes it.
    QByteArray readAll();
    // Whether a whole line has arrived; readLine() takes it, with its line end.
    bool canReadLine();
    QByteArray readLine();
    void close();

signals:
    void readyRead();
    // The peer closed its end, or the connection broke.
    void disconnected();

private:
    void receive();

    int m_fd = -1;
    QSocketNotifier* m_notifier = nullptr;
    QByteArray m_received;
};
