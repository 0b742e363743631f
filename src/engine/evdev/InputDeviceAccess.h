#pragma once

#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

// The calls that reach the kernel's input devices: opening a device node, asking what a device
// is, and reading which of its keys are down now. Everything above them (the key monitor,
// keyboard discovery, the permission probe) works on plain file descriptors, so it runs against
// socket pairs and temporary folders where no input device exists.
class InputDeviceAccess {
public:
    struct DeviceInfo {
        QString name;
        bool keyboard = false; // reports keys, letter keys among them
        QList<uint16_t> lightsOn; // the LED codes lit now (Caps Lock, Num Lock...)
        uint16_t vendor = 0;
        uint16_t product = 0;
    };

    // The name and id Typolet's own virtual keyboard announces: its keys are Typolet's typing,
    // never the user's, so the keyboard search passes over it. The id is fixed so that keyboard
    // remappers (keyd, kanata), which take over every new keyboard, can be told to leave it
    // alone; otherwise they re-emit its keys on their own device, where they would be read as
    // the user's typing.
    static constexpr const char* ownKeyboardName = "Typolet virtual keyboard";
    static constexpr uint16_t ownVendor = 0x7479;  // "ty"
    static constexpr uint16_t ownProduct = 0x706c; // "pl"

    virtual ~InputDeviceAccess() = default;

    // Opens a device node for reading, non-blocking and closed on exec. -1 when it cannot be
    // opened (errno tells why).
    virtual int openForReading(const QString& path) = 0;
    // Opens a node for writing (the virtual keyboard's node). -1 when it cannot be opened.
    virtual int openForWriting(const QString& path) = 0;
    // What the device behind `fd` is; nothing when it does not answer as an input device.
    virtual std::optional<DeviceInfo> describe(int fd) = 0;
    // Whether the system's device database calls the node at `path` a keyboard: for a node that
    // cannot be opened, so that a keyboard without access shows as such.
    virtual bool listedAsKeyboard(const QString& path) = 0;
    // The key codes held down on the device now, after events were lost; nothing when the
    // device cannot tell.
    virtual std::optional<QList<uint16_t>> keysDown(int fd) = 0;
};
