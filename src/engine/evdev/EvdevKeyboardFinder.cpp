#include "EvdevKeyboardFinder.h"

#include "InputDeviceAccess.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <unistd.h>

EvdevKeyboardFinder::EvdevKeyboardFinder(InputDeviceAccess& access, QString folder)
    : m_access(access), m_folder(std::move(folder)) {}

QList<EvdevKeyboardFinder::Node> EvdevKeyboardFinder::scan() const {
    QStringList names = QDir(m_folder).entryList({QStringLiteral("event*")},
                                                 QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    // event2 before event10, as the kernel numbered them.
    const auto number = [](const QString& name) { return QStringView(name).mid(5).toInt(); };
    std::sort(names.begin(), names.end(), [&number](const QString& a, const QString& b) {
        return number(a) != number(b) ? number(a) < number(b) : a < b;
    });
    QList<Node> nodes;
    for (const QString& name : names)
        nodes.append(inspect(QDir(m_folder).filePath(name), nullptr));
    return nodes;
}

bool EvdevKeyboardFinder::isDeviceNode(const QString& path) const {
    const QFileInfo info(path);
    return info.fileName().startsWith(QLatin1String("event")) &&
           QDir(info.absolutePath()) == QDir(m_folder);
}

int EvdevKeyboardFinder::openKeyboard(const QString& path, QString* name) const {
    int fd = -1;
    const Node node = inspect(path, &fd);
    if (name)
        *name = node.name;
    return fd;
}

EvdevKeyboardFinder::Node EvdevKeyboardFinder::inspect(const QString& path, int* keptFd) const {
    Node node;
    node.path = path;
    const int fd = m_access.openForReading(path);
    if (fd < 0) {
        node.keyboard = m_access.listedAsKeyboard(path);
        return node;
    }
    node.readable = true;
    if (const auto info = m_access.describe(fd)) {
        node.name = info->name;
        const bool own = info->name == QLatin1String(InputDeviceAccess::ownKeyboardName) ||
                         (info->vendor == InputDeviceAccess::ownVendor &&
                          info->product == InputDeviceAccess::ownProduct);
        node.keyboard = info->keyboard && !own;
    }
    if (keptFd && node.keyboard)
        *keptFd = fd;
    else
        ::close(fd);
    return node;
}
