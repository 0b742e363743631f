#include "PortalKeyboardOutput.h"

#include "ExpansionKeysyms.h"
#include "Logging.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <xkbcommon/xkbcommon.h>

namespace {
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString remoteDesktop = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
constexpr uint keyboardDevice = 1;
constexpr uint persistUntilRevoked = 2;
} // namespace

PortalKeyboardOutput::PortalKeyboardOutput(const QDBusConnection& bus, KeyboardOutput& fallback,
                                           QObject* parent)
    : QObject(parent), m_bus(bus), m_fallback(fallback) {
    m_stepTimer.setSingleShot(true);
    connect(&m_stepTimer, &QTimer::timeout, this, [this] { step(); });
}

void PortalKeyboardOutput::setTokenStore(std::function<QString()> load,
                                         std::function<void(const QString&)> save) {
    m_loadToken = std::move(load);
    m_saveToken = std::move(save);
}

bool PortalKeyboardOutput::start() {
    if (m_stage != Stage::None || !m_bus.isConnected())
        return false;
    m_stage = Stage::CreatingSession;
    request(QStringLiteral("CreateSession"), {},
            {{QStringLiteral("session_handle_token"), QStringLiteral("typolet")}});
    return true;
}

void PortalKeyboardOutput::request(const QString& method, const QList<QVariant>& arguments,
                                   QVariantMap options) {
    // The portal answers on a Request object whose path follows from our name and the token;
    // it is listened to before the call, so that no answer can come first.
    const QString token = QStringLiteral("typolet%1").arg(++m_requests);
    options.insert(QStringLiteral("handle_token"), token);
    QString sender = m_bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    if (!m_requestPath.isEmpty())
        m_bus.disconnect(portalService, m_requestPath, requestInterface, QStringLiteral("Response"),
                         this, SLOT(response(uint, QVariantMap)));
    m_requestPath =
        QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
    m_bus.connect(portalService, m_requestPath, requestInterface, QStringLiteral("Response"), this,
                  SLOT(response(uint, QVariantMap)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(portalService, portalPath, remoteDesktop, method);
    QList<QVariant> all = arguments;
    all.append(options);
    call.setArguments(all);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, method] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (reply.isError())
            fail(QStringLiteral("%1 failed: %2").arg(method, reply.error().message()));
    });
}

void PortalKeyboardOutput::response(uint code, const QVariantMap& results) {
    if (code != 0) {
        fail(code == 1 ? QStringLiteral("the desktop was not allowed to give a keyboard")
                       : QStringLiteral("the desktop ended the request"));
        return;
    }
    switch (m_stage) {
    case Stage::CreatingSession: {
        m_session = results.value(QStringLiteral("session_handle")).toString();
        if (m_session.isEmpty()) {
            fail(QStringLiteral("no session was made"));
            return;
        }
        m_bus.connect(portalService, m_session, sessionInterface, QStringLiteral("Closed"), this,
                      SLOT(sessionClosed()));
        m_stage = Stage::SelectingDevices;
        QVariantMap options{{QStringLiteral("types"), keyboardDevice},
                            {QStringLiteral("persist_mode"), persistUntilRevoked}};
        if (const QString token = m_loadToken ? m_loadToken() : QString(); !token.isEmpty())
            options.insert(QStringLiteral("restore_token"), token);
        request(QStringLiteral("SelectDevices"), {QVariant::fromValue(QDBusObjectPath(m_session))},
                options);
        return;
    }
    case Stage::SelectingDevices:
        m_stage = Stage::Starting;
        request(QStringLiteral("Start"),
                {QVariant::fromValue(QDBusObjectPath(m_session)), QString()}, {});
        return;
    case Stage::Starting: {
        if (!(results.value(QStringLiteral("devices")).toUInt() & keyboardDevice)) {
            fail(QStringLiteral("the desktop gave no keyboard"));
            return;
        }
        const QString token = results.value(QStringLiteral("restore_token")).toString();
        if (!token.isEmpty() && m_saveToken)
            m_saveToken(token);
        m_stage = Stage::Ready;
        m_ready = true;
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Typing through the desktop's remote desktop portal");
        emit readyChanged(true);
        return;
    }
    case Stage::None:
    case Stage::Ready:
        return;
    }
}

void PortalKeyboardOutput::fail(const QString& why) {
    if (m_stage == Stage::None)
        return;
    qCInfo(lcEngine).noquote()
        << QStringLiteral("The remote desktop portal does not type for Typolet (%1); typing "
                          "through the uinput virtual keyboard")
               .arg(why);
    m_stage = Stage::None;
    if (std::exchange(m_ready, false))
        emit readyChanged(false);
}

void PortalKeyboardOutput::sessionClosed() {
    fail(QStringLiteral("the desktop closed the session"));
}

void PortalKeyboardOutput::perform(const Expansion& actions, std::function<void()> finished) {
    if (m_job)
        finish(); // one expansion at a time; the engine never asks for two
    if (!m_ready) {
        m_fallback.perform(actions, std::move(finished));
        return;
    }
    m_job.emplace();
    m_job->finished = std::move(finished);
    if (!m_sessionActive) {
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Not typing: the session is not the active one");
        finish();
        return;
    }
    m_job->keysyms = expansionKeysyms(actions);
    step();
}

void PortalKeyboardOutput::cancel() {
    if (m_job)
        m_job->keysyms.resize(m_job->next);
    else
        m_fallback.cancel();
}

void PortalKeyboardOutput::step() {
    if (!m_job)
        return;
    Job& job = *m_job;
    std::optional<QDBusPendingCall> last;
    for (int keys = 0; keys < keysPerBatch && job.next < job.keysyms.size() && m_ready; ++keys) {
        notifyKeysym(job.keysyms[job.next], true);
        last = notifyKeysym(job.keysyms[job.next], false);
        ++job.next;
    }
    if (m_ready && job.next < job.keysyms.size()) {
        m_stepTimer.start(batchIntervalMs);
        return;
    }
    if (!last) {
        finish();
        return;
    }
    // Done once the portal has answered the last key: it answers in order.
    auto* watcher = new QDBusPendingCallWatcher(*last, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (m_job && m_job->next == m_job->keysyms.size())
            finish();
    });
}

QDBusPendingCall PortalKeyboardOutput::notifyKeysym(uint32_t keysym, bool pressed) {
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, remoteDesktop,
                                                       QStringLiteral("NotifyKeyboardKeysym"));
    call << QVariant::fromValue(QDBusObjectPath(m_session)) << QVariantMap() << int(keysym)
         << uint(pressed ? 1 : 0);
    return m_bus.asyncCall(call);
}

void PortalKeyboardOutput::finish() {
    m_stepTimer.stop();
    std::function<void()> finished = std::move(m_job->finished);
    m_job.reset();
    if (finished)
        QMetaObject::invokeMethod(this, finished, Qt::QueuedConnection);
}
