// One keystroke and its match check, against snippet libraries of growing size: through the
// trigger index the engine uses, and through the plain rule (sort a copy of every snippet by
// command length, then test each command) that the index replaces. Prints the ratio.
#include "BenchSupport.h"
#include "KeystrokeBuffer.h"
#include "ReferenceMatcher.h"
#include "Snippet.h"
#include "TriggerIndex.h"

#include <QRandomGenerator>
#include <benchmark/benchmark.h>
#include <cstdio>

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

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    BenchSupport::RunTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\n%10s %14s %14s %10s\n", "snippets", "index ns", "plain ns", "plain/index");
    for (const int n : {10, 1000, 10000, 100000}) {
        const auto suffix = "/" + std::to_string(n);
        const auto index = times.nanos("indexedKeystroke" + suffix);
        const auto plain = times.nanos("plainKeystroke" + suffix);
        if (!index || !plain)
            continue;
        std::printf("%10d %14.0f %14.0f %9.0fx\n", n, *index, *plain, *plain / *index);
    }
    const auto small = times.nanos("indexedKeystroke/10");
    const auto large = times.nanos("indexedKeystroke/100000");
    if (small && large)
        std::printf("index at 100000 snippets / at 10: %.2fx\n", *large / *small);
    benchmark::Shutdown();
    return 0;
}
