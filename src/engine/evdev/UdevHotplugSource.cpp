#include "UdevHotplugSource.h"

#include "Logging.h"

#include <QSocketNotifier>
#include <libudev.h>

UdevHotplugSource::UdevHotplugSource(QObject* parent) : QObject(parent) {}

UdevHotplugSource::~UdevHotplugSource() {
    m_notifier.reset();
    if (m_monitor)
        udev_monitor_unref(m_monitor);
    if (m_udev)
        udev_unref(m_udev);
}

bool UdevHotplugSource::start(Handler handler) {
    if (m_monitor)
        return false; // started once already
    m_handler = std::move(handler);
    m_udev = udev_new();
    if (!m_udev)
        return false;
    m_monitor = udev_monitor_new_from_netlink(m_udev, "udev");
    if (!m_monitor || udev_monitor_filter_add_match_subsystem_devtype(m_monitor, "input", nullptr) < 0 ||
        udev_monitor_enable_receiving(m_monitor) < 0) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Keyboards plugged in later will not be seen: udev's monitor is not available");
        return false;
    }
    m_notifier = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(m_monitor),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { readEvents(); });
    return true;
}

void UdevHotplugSource::readEvents() {
    // The socket is non-blocking: null once every waiting announcement is read.
    while (udev_device* device = udev_monitor_receive_device(m_monitor)) {
        const char* node = udev_device_get_devnode(device);
        const char* action = udev_device_get_action(device);
        if (node && action)
            announce(QByteArray(action), QString::fromLocal8Bit(node));
        udev_device_unref(device);
    }
}

void UdevHotplugSource::announce(const QByteArray& action, const QString& node) {
    if (!m_handler)
        return;
    // "change" comes when a node's rules ran again (the access rule applied after the node
    // appeared, as `udevadm trigger` does): a keyboard not read yet may be readable now. The
    // handler passes over nodes it reads already.
    if (action == "add" || action == "change")
        m_handler(node, true);
    else if (action == "remove")
        m_handler(node, false);
}
