// Latency of one expansion as a user sees it: from the moment the last key of a command has
// reached the X server to the moment the target client has received the whole content.
//
// Runs a private Xvfb with Typolet and a target that prints the CLOCK_MONOTONIC time at which
// its text reaches the expected length: our Qt text client, or a GTK 3 text view. The
// command's keys are posted with XTest from here, so the start time is taken right after the
// server has them. Each content is measured typed (pasting switched off) and pasted (the
// default threshold), and the ratio of the two is printed at the end.
#include "XSession.h"

#include <QCoreApplication>
#include <QMap>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <ctime>
#include <functional>
#include <tuple>

namespace {
qint64 monotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

QString contentOf(int length) {
    const QString pattern = QStringLiteral("Typolet types this text, line after line. 0123456789 ");
    QString text;
    while (text.size() < length)
        text += pattern;
    return text.left(length);
}

void typeKeysym(Display* display, KeySym keysym) {
    const KeyCode code = XKeysymToKeycode(display, keysym);
    XTestFakeKeyEvent(display, code, True, CurrentTime);
    XTestFakeKeyEvent(display, code, False, CurrentTime);
}

enum class Target { Qt, Gtk };

struct Case {
    int length = 0;
    Target target = Target::Qt;
    bool pasted = false;
    friend bool operator<(const Case& a, const Case& b) {
        return std::tie(a.length, a.target, a.pasted) < std::tie(b.length, b.target, b.pasted);
    }
};

// Mean milliseconds of each case measured.
using Results = QMap<Case, double>;

void expansionLatency(benchmark::State& state, Case measured, Results& results) {
    XSession session;
    const QString command = QStringLiteral(";bench");
    session.writeSnippets({{command, contentOf(measured.length)}});
    session.writeSetting(QStringLiteral("pasteLongSnippets"), measured.pasted);
    const QStringList report{QStringLiteral("--report-length"), QString::number(measured.length)};
    const bool targetStarted =
        measured.target == Target::Qt
            ? session.startQtClient(session.file(QStringLiteral("unused")), report)
            : session.startGtkTextView(report);
    if (!session.isRunning() || !session.startTypolet() || !targetStarted ||
        !session.focusTarget()) {
        state.SkipWithError(qPrintable(session.log()));
        return;
    }
    Display* display = XOpenDisplay(qPrintable(session.display()));
    QProcess* client = session.target();
    const KeySym keys[] = {XK_semicolon, XK_b, XK_e, XK_n, XK_c, XK_h};
    double total = 0;
    int count = 0;
    for (auto _ : state) {
        for (const KeySym key : keys)
            typeKeysym(display, key);
        XSync(display, False);
        const qint64 start = monotonicNanoseconds();
        QByteArray line;
        const bool arrived = XSession::waitFor([&] {
            client->waitForReadyRead(5);
            line += client->readAllStandardOutput();
            return line.contains('\n');
        }, 120000);
        if (!arrived) {
            state.SkipWithError("the content never arrived");
            break;
        }
        const qint64 end = line.left(line.indexOf('\n')).toLongLong();
        const double seconds = double(end - start) / 1e9;
        state.SetIterationTime(seconds);
        total += seconds * 1000;
        ++count;
        // The client empties itself, and Typolet waits for the keys to be let go; let both
        // settle before the next command.
        XSession::waitFor([] { return false; }, 300);
    }
    if (count > 0)
        results.insert(measured, total / count);
    XCloseDisplay(display);
}

void printRatios(const Results& results) {
    std::printf("\n%-10s %-8s %12s %12s %14s\n", "content", "target", "typed ms", "pasted ms",
                "typed/pasted");
    for (auto it = results.cbegin(); it != results.cend(); ++it) {
        if (it.key().pasted)
            continue;
        Case pasted = it.key();
        pasted.pasted = true;
        const auto other = results.constFind(pasted);
        if (other == results.cend())
            continue;
        std::printf("%-10d %-8s %12.1f %12.1f %13.1fx\n", it.key().length,
                    it.key().target == Target::Qt ? "Qt" : "GTK 3", it.value(), other.value(),
                    it.value() / other.value());
    }
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Results results;
    for (const int length : {20, 1000, 10000}) {
        for (const Target target : {Target::Qt, Target::Gtk}) {
            for (const bool pasted : {false, true}) {
                const std::string name =
                    std::string("expansionLatency/") + std::to_string(length) +
                    (target == Target::Qt ? "/Qt" : "/GTK") + (pasted ? "/pasted" : "/typed");
                // Typing 10,000 characters takes seconds: fewer runs of those.
                benchmark::RegisterBenchmark(name.c_str(), expansionLatency,
                                             Case{length, target, pasted}, std::ref(results))
                    ->UseManualTime()
                    ->Iterations(length >= 10000 ? 5 : 15)
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    printRatios(results);
    return 0;
}
