// A clipboard manager, for the end-to-end tests: whenever another program owns the clipboard,
// it copies the text (UTF8_STRING) and owns the clipboard itself with that copy, so that the
// text outlives its owner, as clipboard managers do. It honours no hint: every new content is
// taken. Prints "managing" when it watches; runs until it is ended.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace {
Display* display = nullptr;
Window window = None;
Atom clipboard, utf8, targets, property;
std::string kept;

void serve(const XSelectionRequestEvent& request) {
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    reply.xselection.property = None;
    if (request.target == targets) {
        const Atom offered[] = {targets, utf8};
        XChangeProperty(display, request.requestor, request.property, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(offered), 2);
        reply.xselection.property = request.property;
    } else if (request.target == utf8) {
        XChangeProperty(display, request.requestor, request.property, utf8, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(kept.data()), int(kept.size()));
        reply.xselection.property = request.property;
    }
    XSendEvent(display, request.requestor, False, NoEventMask, &reply);
    XFlush(display);
}

// Copies the new owner's text, answering requests meanwhile; false when it gave none.
bool copy() {
    XConvertSelection(display, clipboard, utf8, property, window, CurrentTime);
    XFlush(display);
    for (int waited = 0; waited < 2000; waited += 5) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == SelectionRequest) {
                serve(event.xselectionrequest);
            } else if (event.type == SelectionNotify && event.xselection.selection == clipboard) {
                if (event.xselection.property == None)
                    return false;
                Atom type = None;
                int format = 0;
                unsigned long items = 0, after = 0;
                unsigned char* data = nullptr;
                XGetWindowProperty(display, window, property, 0, 1 << 24, True, AnyPropertyType,
                                   &type, &format, &items, &after, &data);
                kept.assign(reinterpret_cast<const char*>(data), items);
                XFree(data);
                return type == utf8;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}
} // namespace

int main() {
    display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);
    clipboard = XInternAtom(display, "CLIPBOARD", False);
    utf8 = XInternAtom(display, "UTF8_STRING", False);
    targets = XInternAtom(display, "TARGETS", False);
    property = XInternAtom(display, "MANAGER_COPY", False);
    std::puts("managing");
    std::fflush(stdout);
    Window lastOwner = None;
    for (;;) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == SelectionRequest)
                serve(event.xselectionrequest);
        }
        const Window owner = XGetSelectionOwner(display, clipboard);
        if (owner != None && owner != window && owner != lastOwner) {
            lastOwner = owner;
            if (copy())
                XSetSelectionOwner(display, clipboard, window, CurrentTime);
            XFlush(display);
        } else if (owner == window) {
            lastOwner = None; // the next owner is new, whoever it is
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}
