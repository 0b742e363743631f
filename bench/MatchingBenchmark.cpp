// One keystroke and its match check, against snippet libraries of growing size: through the
// trigger index the engine uses, and through the plain rule (sort a copy of every snippet by
// command length, then test each command) that the index replaces. Prints the ratio.
#include "KeystrokeBuffer.h"
#include "ReferenceMatcher.h"
#include "Snippet.h"
#include "TriggerIndex.h"

#include <QRandomGenerator>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>

namespace {
QList<Snippet> library(int count) {
    QRandomGenerator random(count);
    QList<Snippet> snippets;
    snippets.reserve(count);
    for (int i = 0; i < count; ++i) {
        QString command = QStringLiteral(";");
        const int letters = 3 + random.bounded(6);
        for (int l = 0; l < letters; ++l)
            command.append(QChar(u'a' + random.bounded(26)));
        snippets.append(Snippet::create(command, QStringLiteral("content ") + command, QUuid()));
    }
    return snippets;
}

// What the user has typed so far: ordinary prose that ends in a near miss.
const QString kTyped = QStringLiteral("Thanks for the note, see you on;mon");

void indexedKeystroke(benchmark::State& state) {
    const QList<Snippet> snippets = library(static_cast<int>(state.range(0)));
    TriggerIndex index;
    index.rebuild(snippets);
    KeystrokeBuffer buffer;
    buffer.append(kTyped);
    for (auto _ : state) {
        buffer.append(QStringLiteral("d"));
        benchmark::DoNotOptimize(index.match(buffer));
        buffer.removeLast();
    }
}

void plainKeystroke(benchmark::State& state) {
    const QList<Snippet> snippets = library(static_cast<int>(state.range(0)));
    QString buffer = kTyped;
    for (auto _ : state) {
        buffer.append(u'd');
        benchmark::DoNotOptimize(ReferenceMatcher::match(snippets, buffer));
        buffer.chop(1);
    }
}

// Paid once, at the first keystroke after the snippet list changed.
void rebuildIndex(benchmark::State& state) {
    const QList<Snippet> snippets = library(static_cast<int>(state.range(0)));
    TriggerIndex index;
    for (auto _ : state)
        index.rebuild(snippets);
}

BENCHMARK(rebuildIndex)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(indexedKeystroke)->Arg(10)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(plainKeystroke)->Arg(10)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

// Keeps each run's time per iteration so the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, double> nanos;
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            nanos[run.benchmark_name()] =
                run.GetAdjustedRealTime() *
                (run.time_unit == benchmark::kMicrosecond ? 1e3
                 : run.time_unit == benchmark::kMillisecond ? 1e6 : 1.0);
        ConsoleReporter::ReportRuns(runs);
    }
};
} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n%10s %14s %14s %10s\n", "snippets", "index ns", "plain ns", "plain/index");
    for (const int n : {10, 1000, 10000, 100000}) {
        const auto suffix = "/" + std::to_string(n);
        const auto index = reporter.nanos.find("indexedKeystroke" + suffix);
        const auto plain = reporter.nanos.find("plainKeystroke" + suffix);
        if (index == reporter.nanos.end() || plain == reporter.nanos.end())
            continue;
        std::printf("%10d %14.0f %14.0f %9.0fx\n", n, index->second, plain->second,
                    plain->second / index->second);
    }
    const auto small = reporter.nanos.find("indexedKeystroke/10");
    const auto large = reporter.nanos.find("indexedKeystroke/100000");
    if (small != reporter.nanos.end() && large != reporter.nanos.end())
        std::printf("index at 100000 snippets / at 10: %.2fx\n", large->second / small->second);
    benchmark::Shutdown();
    return 0;
}
