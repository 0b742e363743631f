#pragma once

#include "DeviceHotplugSource.h"

#include <QByteArray>
#include <QObject>
#include <memory>

class QSocketNotifier;
struct udev;
struct udev_monitor;

// Input device nodes that udev adds or removes, from its monitor socket, read on the main
// thread. udev announces a node once its rules have run, so the access that Typolet's rule
// grants is already in place when the node is opened; a node whose rules run again later
// ("change") is announced as added, since it may be readable only now.
class UdevHotplugSource : public QObject, public DeviceHotplugSource {
    Q_OBJECT
public:
    explicit UdevHotplugSource(QObject* parent = nullptr);
    ~UdevHotplugSource() override;

    bool start(Handler handler) override;

    // Passes udev's announcement `action` ("add", "change", "remove") for `node` on to the
    // handler given to start().
    void announce(const QByteArray& action, const QString& node);

private:
    void readEvents();

    udev* m_udev = nullptr;
    udev_monitor* m_monitor = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
    Handler m_handler;
};
