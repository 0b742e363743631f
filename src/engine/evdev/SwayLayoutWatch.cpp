#include "SwayLayoutWatch.h"

#include "InputDeviceAccess.h"
#include "LocalSocket.h"
#include "Logging.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstring>

namespace {
// i3's IPC framing, which sway keeps: the magic, the payload's length and the message type,
// both in the machine's byte order, then the JSON payload.
constexpr char magic[] = "i3-ipc";
constexpr qsizetype magicSize = sizeof magic - 1;
constexpr qsizetype headerSize = magicSize + 8;
constexpr quint32 subscribe = 2;
constexpr quint32 getInputs = 100;
constexpr quint32 inputEvent = 0x80000015;
} // namespace

SwayLayoutWatch::SwayLayoutWatch(QObject* parent) : QObject(parent) {}

bool SwayLayoutWatch::connectToSway(const QString& path) {
    if (path.isEmpty() || m_socket)
        return false;
    m_socket = LocalSocket::connectTo(path, this);
    if (!m_socket)
        return false;
    connect(m_socket, &LocalSocket::readyRead, this, &SwayLayoutWatch::readMessages);
    send(subscribe, QByteArrayLiteral("[\"input\"]"));
    send(getInputs, {});
    return true;
}

void SwayLayoutWatch::send(quint32 type, const QByteArray& payload) {
    QByteArray message(magic, magicSize);
    const quint32 header[2] = {quint32(payload.size()), type};
    message.append(reinterpret_cast<const char*>(header), sizeof header);
    message.append(payload);
    m_socket->write(message);
}

void SwayLayoutWatch::readMessages() {
    m_unread.append(m_socket->readAll());
    while (m_unread.size() >= headerSize) {
        if (!m_unread.startsWith(QByteArray(magic, magicSize))) {
            qCWarning(lcEngine).noquote()
                << QStringLiteral("sway's IPC socket sent something unexpected; its layout "
                                  "switches are no longer followed");
            m_socket->close();
            m_unread.clear();
            return;
        }
        quint32 header[2];
        std::memcpy(header, m_unread.constData() + magicSize, sizeof header);
        const qsizetype size = headerSize + qsizetype(header[0]);
        if (m_unread.size() < size)
            return;
        const QJsonDocument json = QJsonDocument::fromJson(m_unread.mid(headerSize, header[0]));
        m_unread.remove(0, size);
        if (header[1] == getInputs)
            for (const QJsonValue input : json.array())
                takeInput(input.toObject());
        else if (header[1] == inputEvent)
            takeInput(json.object().value(QStringLiteral("input")).toObject());
    }
}

void SwayLayoutWatch::takeInput(const QJsonObject& input) {
    if (input.value(QStringLiteral("type")).toString() != QLatin1String("keyboard") ||
        input.value(QStringLiteral("name")).toString() ==
            QLatin1String(InputDeviceAccess::ownKeyboardName) ||
        input.value(QStringLiteral("xkb_layout_names")).toArray().size() < 2)
        return;
    const QJsonValue index = input.value(QStringLiteral("xkb_active_layout_index"));
    if (index.isDouble() && index.toInt() >= 0)
        emit groupChanged(uint(index.toInt()));
}
