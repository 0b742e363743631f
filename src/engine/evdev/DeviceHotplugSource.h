#pragma once

#include <QString>
#include <functional>

// Tells when an input device node appears or goes away while Typolet runs (a keyboard plugged
// in, paired, or back from suspend). The system's source is udev's monitor; tests drive a fake.
class DeviceHotplugSource {
public:
    // `added` is true for a new node, false for one that went away.
    using Handler = std::function<void(const QString& deviceNode, bool added)>;

    virtual ~DeviceHotplugSource() = default;

    // Starts reporting to `handler` on the main thread; false when no reports will come.
    virtual bool start(Handler handler) = 0;
};
