// The Insert Snippet window over libraries of 10,000 and 100,000 snippets: the time from the
// request to the window shown the first time (its index is then made on another thread), how
// long that index takes, each keystroke in its search field until the list and preview show
// the new ranking, and an edit made while the window is open until it shows in the list, against
// their targets. CPU time of the whole process in brackets (large libraries are scored on two
// threads: on an idle machine the wait is about half of it). Runs on the offscreen platform
// unless QT_QPA_PLATFORM says otherwise.
#include "BenchSupport.h"
#include "InsertSnippetWindow.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "UsageStore.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <ctime>

namespace {

double cpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// `target` 0: none.
void report(const char* what, int snippets, double wallMs, double cpu, double target) {
    std::printf("%-36s %7d %9.1f ms (%6.1f ms CPU)", what, snippets, wallMs, cpu);
    if (target > 0)
        std::printf("   target < %.0f ms  %s", target, cpu < target ? "ok" : "MISSED");
    std::printf("\n");
}

// Lets the window take up what its other thread did, until `done`.
template <typename Done>
void waitFor(Done done) {
    while (!done())
        QTest::qWait(1);
}

void measure(int count, double keystrokeTarget) {
    QRandomGenerator random(count);
    TemporarySettings settings;
    SnippetStore store(settings.path());
    const QList<Snippet> snippets = BenchSupport::library(count, random);
    store.setSnippets(snippets);
    QTemporaryDir state;
    UsageStore usage(state.filePath(QStringLiteral("usage.json")));
    InsertSnippetWindow window(store, usage);
    const auto preparing = [&window] { return window.statusText().startsWith(u"Preparing"); };
    std::printf("\n");

    QElapsedTimer wall;
    double cpu = cpuMs();
    wall.start();
    window.present();
    QCoreApplication::processEvents();
    report("open the window the first time", count, wall.elapsed(), cpuMs() - cpu, 100);
    waitFor([&] { return !preparing(); });
    report("  its index, on another thread", count, wall.elapsed(), cpuMs() - cpu, 0);

    double worstWall = 0, worstCpu = 0;
    QString typed;
    for (const char* key : {"k", "i", "n", "d", " ", "r", "e"}) {
        typed += QLatin1String(key);
        cpu = cpuMs();
        wall.restart();
        window.searchField()->setText(typed);
        QCoreApplication::processEvents();
        worstWall = std::max<double>(worstWall, wall.elapsed());
        worstCpu = std::max(worstCpu, cpuMs() - cpu);
    }
    report("slowest keystroke of \"kind re\"", count, worstWall, worstCpu, keystrokeTarget);
    // Back to one letter, then a word typed over it: every snippet scored again.
    window.searchField()->setText(QStringLiteral("k"));
    cpu = cpuMs();
    wall.restart();
    window.searchField()->setText(QStringLiteral("ri"));
    QCoreApplication::processEvents();
    report("a query that narrows nothing", count, wall.elapsed(), cpuMs() - cpu, keystrokeTarget);

    // An edit while the window is open, until the list shows it.
    window.searchField()->setText(QStringLiteral("zebra"));
    QList<Snippet> edited = snippets;
    edited.append(Snippet::create(";zebra", "x", {}));
    cpu = cpuMs();
    wall.restart();
    store.setSnippets(std::move(edited));
    QCoreApplication::processEvents();
    report("an edit, on the window's thread", count, wall.elapsed(), cpuMs() - cpu, 0);
    waitFor([&] { return window.statusText().startsWith(u"Snippets found: 1"); });
    report("  until the list shows it", count, wall.elapsed(), cpuMs() - cpu, 0);

    window.hide();
    cpu = cpuMs();
    wall.restart();
    window.present();
    QCoreApplication::processEvents();
    report("open the window again", count, wall.elapsed(), cpuMs() - cpu, 100);
}
} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    measure(10000, 10);
    measure(100000, 30);
    return 0;
}
