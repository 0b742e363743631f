#pragma once

#include <QLockFile>
#include <QObject>
#include <QString>
#include <memory>

class LocalServer;
class LocalSocket;

// Only one Typolet may run per user: two engines would expand every snippet twice.
//
// The first launch takes a lock file and listens on a local socket named per user. A later
// launch finds the lock held, asks the running Typolet through the socket to bring its
// windows forward, and is expected to exit. A lock left behind by a Typolet that crashed is
// recognised (its process is gone) and taken over, as is its socket.
class SingleInstanceGuard : public QObject {
    Q_OBJECT
public:
    enum class Role {
        Primary,   // this process is the one Typolet; it listens for later launches
        Secondary, // another Typolet runs; it has been asked to come forward
    };

    // `serverName` empty: the per-user default (see defaultServerName()).
    explicit SingleInstanceGuard(QString serverName = {}, QObject* parent = nullptr);
    ~SingleInstanceGuard() override;

    // Decides this process's role. Call once, before starting the engine.
    Role claim();

    // After claim() returned Secondary: whether the running Typolet received the request.
    bool notifiedPrimary() const { return m_notified; }

    QString serverName() const { return m_serverName; }

    // typolet-<display>.socket in $XDG_RUNTIME_DIR (a private folder of the user's session),
    // or in the temporary folder with the user id in front.
    static QString defaultServerName();
    // What names the display for the guard: the same for every way of writing one display
    // (":2", ":02", ":2.0", "localhost:2", "unix:2", "unix/:2"); empty without one.
    static QString displayKey(const QString& x11Display, const QString& waylandDisplay = {});

    static constexpr const char* activateMessage = "activate\n";
    static constexpr const char* insertMessage = "insert\n";

    // What a later launch asks of the running Typolet: activateMessage (the default) or
    // insertMessage (`typolet --insert`). Set before claim().
    void setRequest(const char* message) { m_request = message; }
    // What the running Typolet is asked to do, as the log says it.
    QString requestDescription() const;

signals:
    // A later launch asked this Typolet to bring its windows forward.
    void activationRequested();
    // A later launch asked this Typolet to open the insert window.
    void insertRequested();

private:
    bool notifyPrimary();
    void listen();
    void answer(LocalSocket* socket);

    QString m_serverName;
    QLockFile m_lock;
    std::unique_ptr<LocalServer> m_server;
    bool m_notified = false;
    const char* m_request = activateMessage;
};
