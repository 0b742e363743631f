#pragma once

#include "KeyboardOutput.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantMap>
#include <functional>
#include <optional>

// Types through the desktop's RemoteDesktop portal (org.freedesktop.portal.RemoteDesktop, which
// GNOME and KDE Plasma offer): a session with a keyboard, then each character as its keysym
// (NotifyKeyboardKeysym), which the desktop types with its own keymap. The desktop asks the user
// once; the restore token it hands back is kept (through the token store) so that later sessions
// start without asking again.
//
// Setting the session up takes the user's answer, so it runs in the background from start();
// until the desktop has said yes (and after it said no, or closed the session) every expansion
// goes to the fallback output.
class PortalKeyboardOutput : public QObject, public KeyboardOutput {
    Q_OBJECT
public:
    PortalKeyboardOutput(const QDBusConnection& bus, KeyboardOutput& fallback,
                         QObject* parent = nullptr);

    // Where the restore token is kept between runs.
    void setTokenStore(std::function<QString()> load, std::function<void(const QString&)> save);
    // Asks the portal for a keyboard session. False when the session bus has no portal.
    bool start();
    // The portal session is there and types.
    bool isReady() const { return m_ready; }
    void setSessionActive(bool active) { m_sessionActive = active; }

    void perform(const Expansion& actions, std::function<void()> finished) override;
    void cancel() override;

    static constexpr int keysPerBatch = 32;
    static constexpr int batchIntervalMs = 4;

signals:
    // The session is ready, or no longer is.
    void readyChanged(bool ready);

private slots:
    void response(uint code, const QVariantMap& results);
    void sessionClosed();

private:
    enum class Stage { None, CreatingSession, SelectingDevices, Starting, Ready };
    void request(const QString& method, const QList<QVariant>& arguments, QVariantMap options);
    void fail(const QString& why);
    void step();
    QDBusPendingCall notifyKeysym(uint32_t keysym, bool pressed);
    void finish();

    QDBusConnection m_bus;
    KeyboardOutput& m_fallback;
    std::function<QString()> m_loadToken;
    std::function<void(const QString&)> m_saveToken;
    Stage m_stage = Stage::None;
    QString m_requestPath;
    QString m_session;
    int m_requests = 0;
    bool m_ready = false;
    bool m_sessionActive = true;

    struct Job {
        QList<uint32_t> keysyms;
        qsizetype next = 0;
        std::function<void()> finished;
    };
    std::optional<Job> m_job;
    QTimer m_stepTimer;
};
