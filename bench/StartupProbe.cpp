// Starts a program and waits, on X events rather than by polling, for its window named NAME to
// be mapped and then painted; prints the times from exec and the program's CPU time and
// resident memory at each, then again after it settled, and ends it with SIGTERM.
// bench/startup_time.sh runs it.
//
//   startup_probe NAME SETTLE_MS PROGRAM [ARGS...]
//
// Output, one line: "mapped MS painted MS cpu MS rss MB settled-cpu MS settled-rss MB peak-rss MB"
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xdamage.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <poll.h>
#include <set>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {
double nowMs() {
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// utime + stime of `pid` (all its threads), in ms.
double cpuMs(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    const auto close = text.rfind(')');
    if (close == std::string::npos)
        return -1;
    std::istringstream fields(text.substr(close + 2));
    std::string field;
    long utime = 0, stime = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i) {
        if (i == 14)
            utime = std::stol(field);
        if (i == 15)
            stime = std::stol(field);
    }
    return double(utime + stime) * 1000.0 / double(sysconf(_SC_CLK_TCK));
}

// A /proc/PID/status field in kB ("VmRSS", "VmHWM"), as MB.
double memoryMb(pid_t pid, const char* name) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(name, 0) == 0 && line[std::strlen(name)] == ':')
            return std::atof(line.c_str() + std::strlen(name) + 1) / 1024.0;
    }
    return -1;
}

bool named(Display* display, Window window, const char* name) {
    char* title = nullptr;
    const bool same = XFetchName(display, window, &title) && title && std::strcmp(title, name) == 0;
    if (title)
        XFree(title);
    return same;
}

int ignoreErrors(Display*, XErrorEvent*) { return 0; } // windows come and go meanwhile
} // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: startup_probe NAME SETTLE_MS PROGRAM [ARGS...]\n");
        return 2;
    }
    const char* name = argv[1];
    const int settleMs = std::atoi(argv[2]);
    Display* display = XOpenDisplay(nullptr);
    int damageEvent = 0, damageError = 0;
    if (!display || !XDamageQueryExtension(display, &damageEvent, &damageError)) {
        std::fprintf(stderr, "startup_probe: no X display with the DAMAGE extension\n");
        return 2;
    }
    XSetErrorHandler(ignoreErrors);
    const Window root = DefaultRootWindow(display);
    XSelectInput(display, root, SubstructureNotifyMask);
    XSync(display, False);

    const double start = nowMs();
    // On the monotonic clock that typolet.startup's lines also use.
    std::fprintf(stderr, "startup_probe: exec at %.1f ms\n", start);
    const pid_t child = fork();
    if (child == 0) {
        execvp(argv[3], argv + 3);
        _exit(127);
    }

    double mapped = -1, painted = -1, cpu = -1, rss = -1;
    Window target = 0;
    std::set<Window> watched;
    const double deadline = start + 30000;
    pollfd connection{ConnectionNumber(display), POLLIN, 0};
    while (painted < 0 && nowMs() < deadline) {
        if (!XPending(display)) {
            if (waitpid(child, nullptr, WNOHANG) == child) {
                std::fprintf(stderr, "startup_probe: the program ended\n");
                return 1;
            }
            poll(&connection, 1, 50);
            continue;
        }
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == CreateNotify && event.xcreatewindow.parent == root) {
            // Watched from its creation, so that no paint can come before the watch.
            XDamageCreate(display, event.xcreatewindow.window, XDamageReportNonEmpty);
            watched.insert(event.xcreatewindow.window);
        } else if (event.type == MapNotify && event.xmap.event == root && target == 0 &&
                   named(display, event.xmap.window, name)) {
            mapped = nowMs() - start;
            target = event.xmap.window;
        } else if (event.type == damageEvent + XDamageNotify) {
            const auto& damage = reinterpret_cast<XDamageNotifyEvent&>(event);
            XDamageSubtract(display, damage.damage, None, None);
            if (damage.drawable == target && target != 0) {
                painted = nowMs() - start;
                cpu = cpuMs(child);
                rss = memoryMb(child, "VmRSS");
            }
        }
    }
    if (painted < 0) {
        std::fprintf(stderr, "startup_probe: no painted window named %s within 30 s\n", name);
        kill(child, SIGKILL);
        return 1;
    }
    usleep(useconds_t(settleMs) * 1000);
    const double settledCpu = cpuMs(child);
    const double settledRss = memoryMb(child, "VmRSS");
    const double peakRss = memoryMb(child, "VmHWM");
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
    std::printf("mapped %.0f painted %.0f cpu %.0f rss %.0f settled-cpu %.0f settled-rss %.0f "
                "peak-rss %.0f\n",
                mapped, painted, cpu, rss, settledCpu, settledRss, peakRss);
    return 0;
}
