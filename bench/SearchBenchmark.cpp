// The insert window's search, one keystroke at a time, against libraries of 1,000 to 100,000
// snippets: through SnippetSearch (texts folded and summarised once, a longer query narrows the
// last matches, only the shown rows sorted), and through the plain way (fold and score every snippet's texts
// on every keystroke, then sort every match). Prints the ratio.
#include "SnippetSearch.h"

#include <QRandomGenerator>
#include <benchmark/benchmark.h>
#include <algorithm>
#include <cstdio>
#include <map>
#include <string_view>

namespace {
const QStringList kWords = {
    "regards", "meeting", "address", "invoice", "thanks", "tomorrow", "schedule", "signature",
    "café",    "déjà",    "résumé",  "office",  "please", "project",  "Müller",   "straße",
    "привет",  "東京",     "report",  "deadline", "phone", "number",  "kind",     "best"};

struct Library {
    QList<Snippet> snippets;
    QList<Category> categories;
    QHash<QUuid, SnippetUsage> usage;
};

// Commands of 3 to 8 letters, contents of 10 to 60 words, 20 categories, a third used.
Library library(int count) {
    QRandomGenerator random(count);
    Library made;
    for (int c = 0; c < 20; ++c)
        made.categories.append(Category::create(kWords[c] + QStringLiteral(" notes")));
    made.snippets.reserve(count);
    for (int i = 0; i < count; ++i) {
        QString command = QStringLiteral(";");
        for (int l = 3 + random.bounded(6); l > 0; --l)
            command.append(QChar(u'a' + random.bounded(26)));
        QStringList words;
        for (int w = 10 + random.bounded(51); w > 0; --w)
            words.append(kWords[random.bounded(kWords.size())]);
        made.snippets.append(Snippet::create(command, words.join(u' '),
                                             made.categories[random.bounded(20)].id));
        if (random.bounded(3) == 0)
            made.usage.insert(made.snippets.last().id,
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

// Types 20,000 random queries letter by letter (with BackSpaces and pastes between them) into
// one search over 10,000 snippets, and writes each query's match count and best 20 rows, from
// the typed search and from a fresh one, to `path`: two builds whose files are the same rank
// alike, and a line marked "differs" is a typed search that went astray.
int writeRankings(const char* path) {
    const Library made = library(10000);
    SnippetSearch typed;
    typed.rebuild(made.snippets, made.categories);
    typed.setUsage(made.usage);
    SnippetSearch fresh;
    fresh.setUsage(made.usage);
    std::FILE* out = std::fopen(path, "w");
    if (!out)
        return 1;
    QRandomGenerator random(24);
    QString query;
    int differing = 0;
    for (int n = 0; n < 20000; ++n) {
        const int what = random.bounded(10);
        if (what < 6 || query.isEmpty()) { // a letter, a space, or a letter of another script
            const int pick = random.bounded(40);
            query += pick < 26 ? QChar(u'a' + pick)
                     : pick < 30 ? QChar(u' ')
                                 : kWords[random.bounded(kWords.size())][0];
        } else if (what < 8) {
            query.chop(1);
        } else if (what < 9) { // pasted over
            query = kWords[random.bounded(kWords.size())].left(1 + random.bounded(5));
        } else {
            query.clear();
        }
        const SnippetSearch::Result got = typed.rank(query, 20);
        fresh.setIndex(typed.index()); // forgets the earlier queries
        const SnippetSearch::Result expected = fresh.rank(query, 20);
        const bool same = got.rows == expected.rows && got.matches == expected.matches;
        differing += same ? 0 : 1;
        QByteArray line = query.toUtf8() + '\t' + QByteArray::number(got.matches);
        for (const qsizetype row : got.rows)
            line += ' ' + QByteArray::number(row);
        std::fprintf(out, "%s%s\n", line.constData(), same ? "" : "\tdiffers");
    }
    std::fclose(out);
    std::printf("%d of 20000 typed queries rank unlike a fresh search\n", differing);
    return differing == 0 ? 0 : 1;
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, double> millis;
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            millis[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
};
} // namespace

int main(int argc, char** argv) {
    // bench_search --rankings FILE: see writeRankings().
    if (argc == 3 && std::string_view(argv[1]) == "--rankings")
        return writeRankings(argv[2]);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nCPU time\n%10s %12s %12s %12s %12s\n", "snippets", "keystroke ms", "widening ms",
                "plain ms", "plain/search");
    for (const int n : {1000, 10000, 100000}) {
        const auto suffix = "/" + std::to_string(n);
        const auto keystroke = reporter.millis.find("searchKeystroke" + suffix + "/process_time");
        const auto widening = reporter.millis.find("searchWidening" + suffix + "/process_time");
        const auto plain = reporter.millis.find("plainKeystroke" + suffix);
        if (keystroke == reporter.millis.end() || widening == reporter.millis.end() ||
            plain == reporter.millis.end())
            continue;
        std::printf("%10d %12.2f %12.2f %12.2f %11.0fx\n", n, keystroke->second, widening->second,
                    plain->second, plain->second / keystroke->second);
    }
    benchmark::Shutdown();
    return 0;
}
