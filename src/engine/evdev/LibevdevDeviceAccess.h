#pragma once

#include "InputDeviceAccess.h"

// The kernel's own input devices through libevdev: the only place that opens device nodes and
// issues the evdev ioctls (bits, name, key state). What udev's input_id recorded of a node comes
// from libudev.
class LibevdevDeviceAccess : public InputDeviceAccess {
public:
    int openForReading(const QString& path) override;
    int openForWriting(const QString& path) override;
    std::optional<DeviceInfo> describe(int fd) override;
    bool listedAsKeyboard(const QString& path) override;
    std::optional<QList<uint16_t>> keysDown(int fd) override;
};
