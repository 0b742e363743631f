// Loading and saving a library of 10,000 snippets through the settings file.
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <memory>

namespace {
void fill(ShortcutDataManager& store, int count) {
    QList<Shortcut> shortcuts;
    shortcuts.reserve(count);
    for (int i = 0; i < count; ++i)
        shortcuts.append(Shortcut::create(QStringLiteral(";s%1").arg(i),
                                          QStringLiteral("Snippet number %1, with a line break\n"
                                                         "and some ünïcödé — 日本語")
                                              .arg(i),
                                          Category::defaultCategoryId));
    store.setShortcuts(std::move(shortcuts));
}

// The first save after start: every snippet is encoded.
void saveAllShortcuts(benchmark::State& state) {
    TemporarySettings settings;
    for (auto _ : state) {
        state.PauseTiming();
        auto store = std::make_unique<ShortcutDataManager>(settings.path());
        fill(*store, static_cast<int>(state.range(0)));
        state.ResumeTiming();
        store->saveShortcuts();
        state.PauseTiming();
        QCoreApplication::processEvents(); // deliver the queued announcement
        store.reset();
        state.ResumeTiming();
    }
}

// The usual save: one snippet edited in the detail pane, then the whole list written.
void editAndSaveShortcut(benchmark::State& state) {
    TemporarySettings settings;
    ShortcutDataManager store(settings.path());
    fill(store, static_cast<int>(state.range(0)));
    store.saveShortcuts();
    int edits = 0;
    for (auto _ : state) {
        const Shortcut& target = store.shortcuts().at(edits % store.shortcuts().size());
        if (store.updateShortcut(target, target.command, QStringLiteral("edited %1").arg(++edits)))
            state.SkipWithError("the edit was not saved");
        state.PauseTiming();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

void loadShortcuts(benchmark::State& state) {
    TemporarySettings settings;
    {
        ShortcutDataManager store(settings.path());
        fill(store, static_cast<int>(state.range(0)));
        store.saveShortcuts();
    }
    for (auto _ : state) {
        ShortcutDataManager store(settings.path()); // loads both lists
        benchmark::DoNotOptimize(store.shortcuts().size());
    }
}

BENCHMARK(saveAllShortcuts)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(editAndSaveShortcut)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(loadShortcuts)->Arg(10000)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
