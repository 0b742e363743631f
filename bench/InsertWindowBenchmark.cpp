// The Insert Snippet window over libraries of 10,000 and 100,000 snippets: the time from the
// request to the window shown the first time (its index is then made on another thread), how
// long that index takes, each keystroke in its search field from the key event until the list
// has been painted with the new ranking, and an edit made while the window is open until it
// shows in the list, against their targets. CPU time of the whole process in brackets (large
// libraries are scored on two threads: on an idle machine the wait is about half of it). Runs
// on the offscreen platform unless QT_QPA_PLATFORM says otherwise; TYPOLET_BENCH_ROUNDS sets
// how many times "kind re" is typed (10 by default; more to profile the keystrokes).
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
#include <QTreeView>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <vector>

namespace {

double cpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

struct Sample {
    double wall;
    double cpu;
};

class PaintCounter : public QObject {
public:
    explicit PaintCounter(int& painted) : m_painted(painted) {}
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            ++m_painted;
        return false;
    }

private:
    int& m_painted;
};

// `target` 0: none.
void report(const char* what, int snippets, double wallMs, double cpu, double target) {
    std::printf("%-38s %7d %9.1f ms (%6.1f ms CPU)", what, snippets, wallMs, cpu);
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

    // Each key goes through the application as a typed one; the keystroke ends when the list's
    // viewport has been painted again.
    int painted = 0;
    PaintCounter counter(painted);
    window.list()->viewport()->installEventFilter(&counter);
    const auto untilPainted = [&](auto press) {
        const int before = painted;
        const double cpuBefore = cpuMs();
        QElapsedTimer elapsed;
        elapsed.start();
        press();
        while (painted == before && elapsed.elapsed() < 5000)
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        return Sample{elapsed.nsecsElapsed() / 1e6, cpuMs() - cpuBefore};
    };

    const int rounds = qEnvironmentVariableIsSet("TYPOLET_BENCH_ROUNDS")
                           ? qEnvironmentVariableIntValue("TYPOLET_BENCH_ROUNDS")
                           : 10;
    std::vector<Sample> keystrokes;
    for (int round = 0; round <= rounds; ++round) {
        window.searchField()->clear();
        QCoreApplication::processEvents();
        for (const char key : std::string_view("kind re")) {
            const Sample sample = untilPainted([&] { QTest::keyClick(window.searchField(), key); });
            if (round > 0) // the first round warms caches up
                keystrokes.push_back(sample);
        }
    }
    const auto byCpu = [](const Sample& a, const Sample& b) { return a.cpu < b.cpu; };
    std::sort(keystrokes.begin(), keystrokes.end(), byCpu);
    const Sample median = keystrokes[keystrokes.size() / 2];
    const Sample worst = keystrokes.back();
    report("a keystroke of \"kind re\", median", count, median.wall, median.cpu, keystrokeTarget);
    report("  the slowest", count, worst.wall, worst.cpu, keystrokeTarget);
    // Back to one letter, then a word over it: every snippet scored again.
    std::vector<Sample> widening;
    for (int round = 0; round < std::max(1, rounds / 2); ++round) {
        window.searchField()->setText(QStringLiteral("k"));
        QCoreApplication::processEvents();
        widening.push_back(
            untilPainted([&] { window.searchField()->setText(QStringLiteral("ri")); }));
    }
    std::sort(widening.begin(), widening.end(), byCpu);
    const Sample wide = widening[widening.size() / 2];
    report("a query that narrows nothing, median", count, wide.wall, wide.cpu, keystrokeTarget);

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
    // TYPOLET_BENCH_SNIPPETS: only the library of that size (10000 or 100000), to profile it.
    const int only = qEnvironmentVariableIntValue("TYPOLET_BENCH_SNIPPETS");
    if (only != 100000)
        measure(10000, 10);
    if (only != 10000)
        measure(100000, 30);
    return 0;
}
