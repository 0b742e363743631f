#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QJsonObject;
class LocalSocket;

// The active layout on sway, from its IPC socket (SWAYSOCK): sway tells the active group only
// to the focused client, but reports every keyboard's `xkb_active_layout_index` to IPC clients,
// at once (GET_INPUTS) and whenever it changes (the "input" event). Keyboards with a single
// layout and Typolet's own virtual keyboard say nothing about the user's layout and are passed
// over.
class SwayLayoutWatch : public QObject {
    Q_OBJECT
public:
    explicit SwayLayoutWatch(QObject* parent = nullptr);

    // Connects to the IPC socket at `path` (SWAYSOCK's value); false when none answers.
    bool connectToSway(const QString& path);

signals:
    void groupChanged(uint group);

private:
    void send(quint32 type, const QByteArray& payload);
    void readMessages();
    void takeInput(const QJsonObject& input);

    LocalSocket* m_socket = nullptr;
    QByteArray m_unread;
};
