#include "UinputDevice.h"

#include "InputDeviceAccess.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

UinputDevice::~UinputDevice() {
    if (m_device)
        libevdev_uinput_destroy(m_device);
    if (m_description)
        libevdev_free(m_description);
    if (m_fd >= 0)
        ::close(m_fd); // libevdev leaves a node it did not open to its opener
}

std::unique_ptr<UinputDevice> UinputDevice::create(const QString& uinputPath, QString& error) {
    const int fd = ::open(QFile::encodeName(uinputPath).constData(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        error = QString::fromLocal8Bit(std::strerror(errno));
        return nullptr;
    }
    std::unique_ptr<UinputDevice> device(new UinputDevice);
    device->m_fd = fd;
    device->m_description = description();
    const int result = libevdev_uinput_create_from_device(device->m_description, fd,
                                                          &device->m_device);
    if (result != 0) {
        error = QString::fromLocal8Bit(std::strerror(-result));
        return nullptr;
    }
    return device;
}

libevdev* UinputDevice::description() {
    libevdev* description = libevdev_new();
    libevdev_set_name(description, InputDeviceAccess::ownKeyboardName);
    libevdev_set_id_bustype(description, BUS_VIRTUAL);
    libevdev_set_id_vendor(description, InputDeviceAccess::ownVendor);
    libevdev_set_id_product(description, InputDeviceAccess::ownProduct);
    libevdev_enable_event_type(description, EV_KEY);
    // Every key a keymap can name: which ones a text needs depends on the layout in force
    // when it is typed, and the layout may change while the device lives. Buttons (mouse,
    // joystick, gamepad, the D-pad) are left out: udev would call the device a mouse, and
    // libinput would add a pointer for it.
    for (unsigned int code = 1; code <= KEY_MAX; ++code) {
        const bool button = (code >= BTN_MISC && code < KEY_OK) ||
                            (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT) ||
                            code >= BTN_TRIGGER_HAPPY;
        if (!button)
            libevdev_enable_event_code(description, EV_KEY, code, nullptr);
    }
    return description;
}

int UinputDevice::fd() const { return libevdev_uinput_get_fd(m_device); }
