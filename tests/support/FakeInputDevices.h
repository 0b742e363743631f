#pragma once

#include "InputDeviceAccess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/socket.h>
#include <unistd.h>

// Input device nodes in a temporary folder. Opening one gives a socket whose other end the
// test writes `input_event` records to (peer()), so whatever reads the node sees the records
// as it would from the kernel; closing that end is the device unplugged.
class FakeInputDevices : public InputDeviceAccess {
public:
    explicit FakeInputDevices(QString folder) : m_folder(std::move(folder)) {}
    ~FakeInputDevices() override {
        for (const int fd : std::as_const(m_peers))
            ::close(fd);
    }

    // Creates the node `file` in the folder.
    void addNode(const QString& file, const QString& name, bool keyboard, bool readable = true) {
        QFile(QDir(m_folder).filePath(file)).open(QIODevice::WriteOnly);
        m_nodes.insert(file, Node{{name, keyboard, {}}, readable, {}});
    }
    void removeNode(const QString& file) { QFile::remove(QDir(m_folder).filePath(file)); }
    // The test's end of the last opening of `file`; -1 when it was never opened.
    int peer(const QString& file) const { return m_lastPeer.value(file, -1); }
    void setKeysDown(const QString& file, QList<uint16_t> codes) { m_nodes[file].keysDown = codes; }
    void setLightsOn(const QString& file, QList<uint16_t> leds) { m_nodes[file].info.lightsOn = leds; }
    void setId(const QString& file, uint16_t vendor, uint16_t product) {
        m_nodes[file].info.vendor = vendor;
        m_nodes[file].info.product = product;
    }
    void setReadable(const QString& file, bool readable) { m_nodes[file].readable = readable; }
    bool uinputWritable = false;

    // Writes one record to the open end `peer`.
    static void send(int peer, uint16_t type, uint16_t code, int32_t value) {
        input_event event{};
        event.type = type;
        event.code = code;
        event.value = value;
        [[maybe_unused]] const auto written = ::write(peer, &event, sizeof event);
    }

    int openForReading(const QString& path) override {
        const QString file = QFileInfo(path).fileName();
        const auto node = m_nodes.constFind(file);
        if (node == m_nodes.cend() || !node->readable || !QFileInfo::exists(path)) {
            errno = node == m_nodes.cend() ? ENOENT : EACCES;
            return -1;
        }
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            return -1;
        ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
        m_fileOf.insert(ends[0], file);
        m_lastPeer.insert(file, ends[1]);
        m_peers.append(ends[1]);
        return ends[0];
    }
    int openForWriting(const QString&) override {
        return uinputWritable ? ::open("/dev/null", O_WRONLY | O_CLOEXEC) : (errno = EACCES, -1);
    }
    std::optional<DeviceInfo> describe(int fd) override {
        const auto file = m_fileOf.constFind(fd);
        if (file == m_fileOf.cend())
            return std::nullopt;
        return m_nodes.value(*file).info;
    }
    bool listedAsKeyboard(const QString& path) override {
        return m_nodes.value(QFileInfo(path).fileName()).info.keyboard;
    }
    // As the kernel's EVIOCGKEY does, this also takes the key events not yet read out of the
    // reader's queue (their effect is in the answer); the other events stay, in order.
    std::optional<QList<uint16_t>> keysDown(int fd) override {
        const auto file = m_fileOf.constFind(fd);
        if (file == m_fileOf.cend())
            return std::nullopt;
        QByteArray queued;
        char chunk[4096];
        for (ssize_t got; (got = ::read(fd, chunk, sizeof chunk)) > 0;)
            queued.append(chunk, got);
        QByteArray kept;
        for (qsizetype at = 0; at + qsizetype(sizeof(input_event)) <= queued.size();
             at += sizeof(input_event)) {
            input_event event;
            std::memcpy(&event, queued.constData() + at, sizeof event);
            if (event.type != EV_KEY)
                kept.append(queued.constData() + at, sizeof event);
        }
        if (!kept.isEmpty()) {
            [[maybe_unused]] const auto written =
                ::write(peer(*file), kept.constData(), size_t(kept.size()));
        }
        return m_nodes.value(*file).keysDown;
    }

private:
    struct Node {
        DeviceInfo info;
        bool readable = true;
        QList<uint16_t> keysDown;
    };
    QString m_folder;
    QHash<QString, Node> m_nodes;
    QHash<int, QString> m_fileOf;
    QHash<QString, int> m_lastPeer;
    QList<int> m_peers;
};
