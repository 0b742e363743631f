// Loading and saving a library of 10,000 snippets through the settings file.
#include "SnippetStore.h"
#include "TemporarySettings.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <memory>

namespace {
void fill(SnippetStore& store, int count) {
    QList<Snippet> snippets;
    snippets.reserve(count);
    for (int i = 0; i < count; ++i)
        snippets.append(Snippet::create(QStringLiteral(";s%1").arg(i),
                                          QStringLiteral("Snippet number %1, with a line break\n"
                                                         "and some ünïcödé — 日本語")
                                              .arg(i),
                                          Category::defaultCategoryId));
    store.setSnippets(std::move(snippets));
}

// The first save after start: every snippet is encoded.
void saveAllSnippets(benchmark::State& state) {
    TemporarySettings settings;
    for (auto _ : state) {
        state.PauseTiming();
        auto store = std::make_unique<SnippetStore>(settings.path());
        fill(*store, static_cast<int>(state.range(0)));
        state.ResumeTiming();
        store->saveSnippets();
        state.PauseTiming();
        QCoreApplication::processEvents(); // deliver the queued announcement
        store.reset();
        state.ResumeTiming();
    }
}

// The usual save: one snippet edited in the detail pane, then the whole list written.
void editAndSaveSnippet(benchmark::State& state) {
    TemporarySettings settings;
    SnippetStore store(settings.path());
    fill(store, static_cast<int>(state.range(0)));
    store.saveSnippets();
    int edits = 0;
    for (auto _ : state) {
        const Snippet& target = store.snippets().at(edits % store.snippets().size());
        if (store.updateSnippet(target, target.command, QStringLiteral("edited %1").arg(++edits)))
            state.SkipWithError("the edit was not saved");
        state.PauseTiming();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

void loadSnippets(benchmark::State& state) {
    TemporarySettings settings;
    {
        SnippetStore store(settings.path());
        fill(store, static_cast<int>(state.range(0)));
        store.saveSnippets();
    }
    for (auto _ : state) {
        SnippetStore store(settings.path()); // loads both lists
        benchmark::DoNotOptimize(store.snippets().size());
    }
}

BENCHMARK(saveAllSnippets)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(editAndSaveSnippet)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(loadSnippets)->Arg(10000)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
