// How soon the fill-in form is on screen: from the moment the last key of a command whose
// content has form fields has reached the X server to the moment the form's window is mapped
// (and, beside it, to the moment it has the keyboard focus). The command is erased first, so
// this includes the erasing. Target < 100 ms.
//
// Runs a private Xvfb with Typolet and an xterm; the command's keys are posted with XTest from
// here. Each run ends with Escape (the command comes back) and a pause for things to settle.
// The first opening, which creates the form's window, is reported on its own.
#include "XSession.h"

#include <QCoreApplication>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <poll.h>

namespace {
double monotonicMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

void typeKeysym(Display* display, KeySym keysym) {
    const KeyCode code = XKeysymToKeycode(display, keysym);
    XTestFakeKeyEvent(display, code, True, CurrentTime);
    XTestFakeKeyEvent(display, code, False, CurrentTime);
}

// Its title ("Fill In “;fill”") as Qt sets it: UTF-8 in _NET_WM_NAME.
bool isForm(Display* display, Window window) {
    const Atom netWmName = XInternAtom(display, "_NET_WM_NAME", False);
    Atom type = 0;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, window, netWmName, 0, 64, False, AnyPropertyType, &type,
                           &format, &items, &after, &data) != Success ||
        !data)
        return false;
    const bool form = QByteArray(reinterpret_cast<const char*>(data), int(items)).startsWith("Fill In");
    XFree(data);
    return form;
}

// The next event within `timeoutMs`; false when none came.
bool nextEvent(Display* display, XEvent& event, int timeoutMs) {
    const double until = monotonicMs() + timeoutMs;
    while (!XPending(display)) {
        const int left = int(until - monotonicMs());
        if (left <= 0)
            return false;
        pollfd fd{ConnectionNumber(display), POLLIN, 0};
        poll(&fd, 1, left);
    }
    XNextEvent(display, &event);
    return true;
}

struct Opening {
    double mappedMs = -1;
    double focusedMs = -1;
};

Opening openForm(Display* display, Window root) {
    for (const KeySym key : {XK_semicolon, XK_f, XK_i, XK_l, XK_l})
        typeKeysym(display, key);
    XSync(display, False);
    const double start = monotonicMs();
    Opening opening;
    Window form = 0;
    XEvent event;
    while (!form && nextEvent(display, event, 5000)) {
        if (event.type == MapNotify && event.xmap.event == root && isForm(display, event.xmap.window)) {
            opening.mappedMs = monotonicMs() - start;
            form = event.xmap.window;
        }
    }
    if (!form)
        return opening;
    for (int polls = 0; polls < 5000; ++polls) {
        Window focused = 0;
        int revert = 0;
        XGetInputFocus(display, &focused, &revert);
        if (focused == form) {
            opening.focusedMs = monotonicMs() - start;
            break;
        }
        timespec pause{0, 200'000};
        nanosleep(&pause, nullptr);
    }
    return opening;
}

void settle(Display* display, int ms) {
    XEvent event;
    const double until = monotonicMs() + ms;
    while (monotonicMs() < until)
        nextEvent(display, event, int(until - monotonicMs()) + 1);
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(2, atoi(argv[1])) : 20;
    XSession session;
    if (!session.startWith({{";fill", "Dear {{field:Name}}, {{choice:Tone=hi|bye}}\n{{area:Notes}}"}},
                           XSession::Target::Terminal)) {
        std::fprintf(stderr, "%s\n", qPrintable(session.log()));
        return 1;
    }
    Display* display = XOpenDisplay(qPrintable(session.display()));
    if (!display)
        return 1;
    const Window root = DefaultRootWindow(display);
    XSelectInput(display, root, SubstructureNotifyMask);
    QList<double> mapped, focused;
    for (int run = 0; run < runs; ++run) {
        const Opening opening = openForm(display, root);
        if (opening.mappedMs < 0) {
            std::fprintf(stderr, "the form never showed\n%s\n",
                         qPrintable(session.typoletOutput().right(2000)));
            return 1;
        }
        mapped.append(opening.mappedMs);
        focused.append(opening.focusedMs);
        settle(display, 100);
        typeKeysym(display, XK_Escape);
        XSync(display, False);
        settle(display, 600); // the focus goes back and the command is typed again
    }
    XCloseDisplay(display);

    const auto report = [](const char* what, QList<double> ms) {
        const double first = ms.takeFirst();
        std::sort(ms.begin(), ms.end());
        std::printf("%-28s first %6.1f ms   median %6.1f ms   worst %6.1f ms   target < 100 ms  %s\n",
                    what, first, ms[ms.size() / 2], ms.last(),
                    std::max(first, ms.last()) < 100 ? "ok" : "MISSED");
    };
    std::printf("fill-in form, %d openings over an xterm\n", runs);
    report("command's last key -> shown", mapped);
    report("command's last key -> focus", focused);
    return 0;
}
