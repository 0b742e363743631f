// Another program that holds a desktop-wide key combination: grabs Ctrl+Alt+Space on the root
// window, prints "held" once the server has granted it, and keeps it until it is ended.
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <cstdio>

int main() {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    const int keyCode = XKeysymToKeycode(display, XK_space);
    XGrabKey(display, keyCode, ControlMask | Mod1Mask, DefaultRootWindow(display), True,
             GrabModeAsync, GrabModeAsync);
    XSync(display, False);
    std::puts("held");
    std::fflush(stdout);
    for (XEvent event;;)
        XNextEvent(display, &event);
}
