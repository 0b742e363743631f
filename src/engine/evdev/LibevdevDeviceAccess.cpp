#include "LibevdevDeviceAccess.h"

#include <QFile>
#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <libudev.h>
#include <sys/stat.h>
#include <memory>

namespace {
struct EvdevFree {
    void operator()(libevdev* device) const { libevdev_free(device); }
};
using EvdevHandle = std::unique_ptr<libevdev, EvdevFree>;

// libevdev reads the device's bits, name and state once through ioctls; the fd stays the
// caller's (libevdev_free does not close it).
EvdevHandle inspect(int fd) {
    libevdev* device = nullptr;
    if (libevdev_new_from_fd(fd, &device) < 0)
        return nullptr;
    return EvdevHandle(device);
}

// A keyboard types letters: mice, power buttons, lid switches and headset buttons report keys
// too, but never the letter row.
bool hasLetterKeys(const libevdev* device) {
    for (unsigned int code : {KEY_Q, KEY_A, KEY_Z, KEY_SPACE}) {
        if (!libevdev_has_event_code(device, EV_KEY, code))
            return false;
    }
    return true;
}
} // namespace

int LibevdevDeviceAccess::openForReading(const QString& path) {
    return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

int LibevdevDeviceAccess::openForWriting(const QString& path) {
    return ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
}

std::optional<InputDeviceAccess::DeviceInfo> LibevdevDeviceAccess::describe(int fd) {
    EvdevHandle device = inspect(fd);
    if (!device)
        return std::nullopt;
    DeviceInfo info;
    info.name = QString::fromUtf8(libevdev_get_name(device.get()));
    info.keyboard = libevdev_has_event_type(device.get(), EV_KEY) && hasLetterKeys(device.get());
    info.vendor = uint16_t(libevdev_get_id_vendor(device.get()));
    info.product = uint16_t(libevdev_get_id_product(device.get()));
    for (unsigned int code = 0; code <= LED_MAX; ++code) {
        if (libevdev_has_event_code(device.get(), EV_LED, code) &&
            libevdev_get_event_value(device.get(), EV_LED, code) != 0)
            info.lightsOn.append(static_cast<uint16_t>(code));
    }
    return info;
}

std::optional<QList<uint16_t>> LibevdevDeviceAccess::keysDown(int fd) {
    EvdevHandle device = inspect(fd);
    if (!device)
        return std::nullopt;
    QList<uint16_t> down;
    for (unsigned int code = 0; code <= KEY_MAX; ++code) {
        if (libevdev_has_event_code(device.get(), EV_KEY, code) &&
            libevdev_get_event_value(device.get(), EV_KEY, code) != 0)
            down.append(static_cast<uint16_t>(code));
    }
    return down;
}

bool LibevdevDeviceAccess::listedAsKeyboard(const QString& path) {
    struct stat node {};
    if (::stat(QFile::encodeName(path).constData(), &node) != 0 || !S_ISCHR(node.st_mode))
        return false;
    udev* context = udev_new();
    if (!context)
        return false;
    bool keyboard = false;
    if (udev_device* device = udev_device_new_from_devnum(context, 'c', node.st_rdev)) {
        const char* value = udev_device_get_property_value(device, "ID_INPUT_KEYBOARD");
        keyboard = value && qstrcmp(value, "1") == 0;
        udev_device_unref(device);
    }
    udev_unref(context);
    return keyboard;
}
