#pragma once

#include <QObject>
#include <QString>

class LocalSocket;
class QSocketNotifier;

// Listens on a Unix stream socket that only this user may connect to, and hands over each
// connection as it comes.
class LocalServer : public QObject {
    Q_OBJECT
public:
    explicit LocalServer(QObject* parent = nullptr);
    ~LocalServer() override;

    // Listens at `path`, replacing whatever socket file is there; false with errorString() set
    // when it cannot.
    bool listen(const QString& path);
    QString errorString() const { return m_error; }
    void close();

signals:
    // A new connection, a child of this server; deleteLater() it when done.
    void connected(LocalSocket* socket);

private:
    void accept();

    int m_fd = -1;
    QString m_path;
    QString m_error;
    QSocketNotifier* m_notifier = nullptr;
};
