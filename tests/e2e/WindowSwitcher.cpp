// A window manager's window switcher, for the end-to-end tests: grabs Alt+Tab on the root
// window and, at each press, gives the keyboard focus to the next of the windows it was given
// (decimal ids, as xdotool writes them) and names it in _NET_ACTIVE_WINDOW on the root, as a
// window manager does. Prints "ready" once the grab is granted; runs until it is ended.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char* argv[]) {
    Display* display = XOpenDisplay(nullptr);
    if (!display || argc < 3)
        return 1;
    std::vector<Window> windows;
    for (int i = 1; i < argc; ++i)
        windows.push_back(static_cast<Window>(std::strtoul(argv[i], nullptr, 10)));
    const Window root = DefaultRootWindow(display);
    const Atom active = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    const int tab = XKeysymToKeycode(display, XK_Tab);
    // With and without Num Lock (Mod2) and Caps Lock, as window managers grab.
    for (const unsigned int locks : {0u, unsigned(Mod2Mask), unsigned(LockMask), unsigned(Mod2Mask | LockMask)})
        XGrabKey(display, tab, Mod1Mask | locks, root, True, GrabModeAsync, GrabModeAsync);
    XSync(display, False);
    std::puts("ready");
    std::fflush(stdout);
    std::size_t next = 1;
    for (XEvent event;;) {
        XNextEvent(display, &event);
        if (event.type != KeyPress)
            continue;
        const Window window = windows[next];
        next = (next + 1) % windows.size();
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
        XChangeProperty(display, root, active, XA_WINDOW, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&window), 1);
        XSync(display, False);
    }
}
