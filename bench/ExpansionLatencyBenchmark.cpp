// Latency of one expansion as a user sees it: from the moment the last key of a command has
// reached the X server to the moment the target client has received the whole content.
//
// Runs a private Xvfb with Typolet and our Qt text client, which prints the CLOCK_MONOTONIC
// time at which its text reaches the expected length. The command's keys are posted with XTest
// from here, so the start time is taken right after the server has them.
#include "XSession.h"

#include <QCoreApplication>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <benchmark/benchmark.h>
#include <ctime>

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

void expansionLatency(benchmark::State& state) {
    const int length = int(state.range(0));
    XSession session;
    const QString command = QStringLiteral(";bench");
    session.writeSnippets({{command, contentOf(length)}});
    if (!session.isRunning() || !session.startTypolet() ||
        !session.startQtClient(session.file(QStringLiteral("unused")),
                               {QStringLiteral("--report-length"), QString::number(length)}) ||
        !session.focusTarget()) {
        state.SkipWithError(qPrintable(session.log()));
        return;
    }
    Display* display = XOpenDisplay(qPrintable(session.display()));
    QProcess* client = session.target();
    const KeySym keys[] = {XK_semicolon, XK_b, XK_e, XK_n, XK_c, XK_h};
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
        }, 30000);
        if (!arrived) {
            state.SkipWithError("the content never arrived");
            break;
        }
        const qint64 end = line.left(line.indexOf('\n')).toLongLong();
        state.SetIterationTime(double(end - start) / 1e9);
        // The client empties itself; let it settle before the next command.
        XSession::waitFor([] { return false; }, 200);
    }
    XCloseDisplay(display);
}
} // namespace

BENCHMARK(expansionLatency)->Arg(20)->Arg(1000)->UseManualTime()->Iterations(15)->Unit(
    benchmark::kMillisecond);

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
