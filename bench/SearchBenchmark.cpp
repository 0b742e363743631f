// The insert window's search, one keystroke at a time, against libraries of 1,000 to 100,000
// snippets: through SnippetSearch (texts folded and summarised once, a longer query narrows the
// last matches, only the shown rows sorted), and through the plain way (fold and score every snippet's texts
// on every keystroke, then sort every match). Prints the ratio.
#include "BenchSupport.h"
#include "SnippetSearch.h"

#include <benchmark/benchmark.h>
#include <algorithm>
#include <cstdio>

namespace {
const QStringList kCategoryWords = {"regards", "meeting", "address",  "invoice", "thanks",
                                    "tomorrow", "schedule", "signature", "café", "déjà",
                                    "résumé", "office", "please", "project", "Müller",
                                    "straße", "привет", "東京", "report", "deadline"};

struct Library {
    QList<Snippet> snippets;
    QList<Category> categories;
    QHash<QUuid, SnippetUsage> usage;
};

// Commands of 3 to 8 letters, contents of 10 to 60 words, 20 categories, a third used.
Library library(int count) {
    QRandomGenerator random(count);
    Library made;
    QList<QUuid> ids;
    for (const QString& word : kCategoryWords) {
        made.categories.append(Category::create(word + QStringLiteral(" notes")));
        ids.append(made.categories.last().id);
    }
    made.snippets = BenchSupport::library(count, random, ids);
    for (const Snippet& snippet : std::as_const(made.snippets)) {
        if (random.bounded(3) == 0)
            made.usage.insert(snippet.id,
                              {random.bounded(50), 1'700'000'000'000 + random.bounded(1'000'000)});
    }
    return made;
}

// What a user types to find "kind regards": each keystroke narrows the last.
const QStringList kKeystrokes = {"k", "ki", "kin", "kind", "kind ", "kind r", "kind re"};

void searchKeystroke(benchmark::State& state) {
    const Library made = library(static_cast<int>(state.range(0)));
    SnippetSearch search;
    search.rebuild(made.snippets, made.categories);
    search.setUsage(made.usage);
    qsizetype next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(search.rank(kKeystrokes[next]));
        next = (next + 1) % kKeystrokes.size();
    }
}

// The worst keystroke: a query that does not go on from the last (a BackSpace, a paste), so
// every snippet is looked at again.
void searchWidening(benchmark::State& state) {
    const Library made = library(static_cast<int>(state.range(0)));
    SnippetSearch search;
    search.rebuild(made.snippets, made.categories);
    search.setUsage(made.usage);
    bool flip = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(search.rank(flip ? QStringLiteral("re") : QStringLiteral("ri")));
        flip = !flip;
    }
}

void plainKeystroke(benchmark::State& state) {
    const Library made = library(static_cast<int>(state.range(0)));
    QHash<QUuid, QString> categoryNames;
    for (const Category& category : made.categories)
        categoryNames.insert(category.id, category.name);
    qsizetype next = 0;
    for (auto _ : state) {
        const QString query = SnippetSearch::fold(kKeystrokes[next]).simplified();
        struct Scored {
            qsizetype row;
            int score;
            SnippetUsage usage;
        };
        std::vector<Scored> scored;
        for (qsizetype row = 0; row < made.snippets.size(); ++row) {
            const Snippet& snippet = made.snippets[row];
            const int score = std::max(
                {SnippetSearch::fieldScore(SnippetSearch::fold(snippet.command), query),
                 SnippetSearch::fieldScore(SnippetSearch::fold(snippet.content), query),
                 SnippetSearch::fieldScore(SnippetSearch::fold(categoryNames[snippet.categoryId]),
                                           query)});
            if (score > 0)
                scored.push_back({row, score, made.usage.value(snippet.id)});
        }
        std::sort(scored.begin(), scored.end(), [](const Scored& a, const Scored& b) {
            if (a.score != b.score)
                return a.score > b.score;
            if (a.usage.count != b.usage.count)
                return a.usage.count > b.usage.count;
            return a.usage.lastUsedMs > b.usage.lastUsedMs;
        });
        benchmark::DoNotOptimize(scored.data());
        next = (next + 1) % kKeystrokes.size();
    }
}

// Paid on another thread when the window first opens.
void rebuildSearch(benchmark::State& state) {
    const Library made = library(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        SnippetSearch search;
        search.rebuild(made.snippets, made.categories);
        search.setUsage(made.usage);
    }
}

// Paid on another thread after an edit: one snippet changed, every other one taken over.
void reindexAfterEdit(benchmark::State& state) {
    Library made = library(static_cast<int>(state.range(0)));
    SnippetSearch search;
    search.rebuild(made.snippets, made.categories);
    search.setUsage(made.usage);
    int edits = 0;
    for (auto _ : state) {
        made.snippets[made.snippets.size() / 2].content = QStringLiteral("edit %1").arg(++edits);
        search.rebuild(made.snippets, made.categories);
        search.setUsage(made.usage);
    }
}

BENCHMARK(rebuildSearch)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(reindexAfterEdit)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
// CPU time of the process: above SnippetSearch::sharedScoringAbove two threads share the work.
BENCHMARK(searchKeystroke)->Arg(1000)->Arg(10000)->Arg(100000)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(searchWidening)->Arg(1000)->Arg(10000)->Arg(100000)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(plainKeystroke)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    BenchSupport::RunTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\nCPU time\n%10s %12s %12s %12s %12s\n", "snippets", "keystroke ms",
                "widening ms", "plain ms", "plain/search");
    for (const int n : {1000, 10000, 100000}) {
        const auto suffix = "/" + std::to_string(n);
        const auto keystroke = times.cpuNanos("searchKeystroke" + suffix + "/process_time");
        const auto widening = times.cpuNanos("searchWidening" + suffix + "/process_time");
        const auto plain = times.cpuNanos("plainKeystroke" + suffix);
        if (!keystroke || !widening || !plain)
            continue;
        std::printf("%10d %12.2f %12.2f %12.2f %11.0fx\n", n, *keystroke / 1e6, *widening / 1e6,
                    *plain / 1e6, *plain / *keystroke);
    }
    benchmark::Shutdown();
    return 0;
}
