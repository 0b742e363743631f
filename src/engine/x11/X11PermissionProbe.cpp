#include "X11PermissionProbe.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <memory>

namespace {
struct DisplayCloser {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
using DisplayHandle = std::unique_ptr<Display, DisplayCloser>;
} // namespace

std::shared_ptr<void> X11PermissionProbe::openDisplay() {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return nullptr;
    return std::shared_ptr<void>(display,
                                 [](void* held) { XCloseDisplay(static_cast<Display*>(held)); });
}

bool X11PermissionProbe::canObserveKeys() {
    DisplayHandle display(XOpenDisplay(nullptr));
    if (!display)
        return false;
    int opcode = 0, event = 0, error = 0;
    if (!XQueryExtension(display.get(), "XInputExtension", &opcode, &event, &error))
        return false;
    int major = 2, minor = 0;
    return XIQueryVersion(display.get(), &major, &minor) == Success && major >= 2;
}

bool X11PermissionProbe::canPostKeys() {
    DisplayHandle display(XOpenDisplay(nullptr));
    if (!display)
        return false;
    int event = 0, error = 0, major = 0, minor = 0;
    return XTestQueryExtension(display.get(), &event, &error, &major, &minor);
}
