// The Insert Snippet window over libraries of 10,000 and 100,000 snippets: the time from the
// request to the window shown (its search already prepared, as it is once Typolet runs), the
// time to prepare the search after the library changed, and each keystroke in its search field
// until the list and preview show the new ranking, against their targets. CPU time of this
// thread in brackets. Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
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
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// `target` 0: none (the preparation runs in idle time, a moment after the library changed).
void report(const char* what, int snippets, double wallMs, double cpu, double target) {
    std::printf("%-34s %7d %9.1f ms (%6.1f ms CPU)", what, snippets, wallMs, cpu);
    if (target > 0)
        std::printf("   target < %.0f ms  %s", target, cpu < target ? "ok" : "MISSED");
    std::printf("\n");
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

    QTest::qWait(600); // the preparation runs a moment after the library changed
    std::printf("\n");
    // The preparation after an edit, forced through a search before its moment comes.
    store.setSnippets(snippets + QList<Snippet>{Snippet::create(";new", "x", {})});
    QElapsedTimer wall;
    double cpu = cpuMs();
    wall.start();
    window.searchField()->setText(QStringLiteral("x")); // searches, preparing first
    report("prepare after a change + 1 search", count, wall.elapsed(), cpuMs() - cpu, 0);
    window.searchField()->clear();

    cpu = cpuMs();
    wall.restart();
    window.present();
    QCoreApplication::processEvents();
    report("open the window", count, wall.elapsed(), cpuMs() - cpu, 100);

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
