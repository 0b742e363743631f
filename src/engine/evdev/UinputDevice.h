#pragma once

#include <QString>
#include <memory>

struct libevdev;
struct libevdev_uinput;

// Typolet's virtual keyboard: a kernel input device made through /dev/uinput with libevdev's
// uinput helpers. It is made once at start and kept, so the compositor sees one extra keyboard
// for the whole session rather than a new one per expansion. The only place that talks to
// /dev/uinput. It announces InputDeviceAccess::ownKeyboardName, which keyboard discovery
// passes over, so our own keys are never read back as the user's.
class UinputDevice {
public:
    ~UinputDevice();
    UinputDevice(const UinputDevice&) = delete;
    UinputDevice& operator=(const UinputDevice&) = delete;

    // Makes the device through `uinputPath`; null with `error` set when that is not possible
    // (no write access to the node, no uinput in the kernel).
    static std::unique_ptr<UinputDevice> create(const QString& uinputPath, QString& error);
    // What the device announces (the caller frees it with libevdev_free): its name, its id
    // (InputDeviceAccess::ownVendor:ownProduct, which keyboard remappers can be told to leave
    // alone) and every key code, but no button, so that udev and libinput see a keyboard and
    // never a pointer.
    static libevdev* description();

    // Where key events are written.
    int fd() const;

private:
    UinputDevice() = default;
    libevdev* m_description = nullptr;
    libevdev_uinput* m_device = nullptr;
    int m_fd = -1;
};
