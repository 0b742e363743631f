// A program that owns the clipboard and never answers a request for it (hung, or stopped in
// a debugger). Prints "owning" once the server has made it the owner; runs until it is ended.
#include <X11/Xlib.h>

#include <cstdio>

int main() {
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
    const Atom clipboard = XInternAtom(display, "CLIPBOARD", False);
    XSetSelectionOwner(display, clipboard, window, CurrentTime);
    XSync(display, False);
    if (XGetSelectionOwner(display, clipboard) != window)
        return 1;
    std::puts("owning");
    std::fflush(stdout);
    for (XEvent event;;)
        XNextEvent(display, &event); // requests are read and never answered
}
