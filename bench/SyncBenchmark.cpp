// Merging the synced folder: this computer's library of 10,000 snippets and the files of five
// other computers, each with the same 10,000 snippets of which it changed 1,000 and deleted 100.
// Measured twice: the merge of libraries already read, and the whole step as the folder watch
// runs it (five files read from their JSON, merged, and turned into the store's lists).
#include "SyncFile.h"
#include "SyncMerge.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

namespace {
constexpr int snippetCount = 10000;
constexpr int computers = 5;

struct Folder {
    SyncMerge::Library ours;
    QList<Category> categories;
    QList<Snippet> snippets;
    QList<SyncMerge::Library> theirs;
    QList<QByteArray> files;
};

const Folder& folder() {
    static const Folder built = [] {
        Folder folder;
        folder.categories = {Category::defaultCategory()};
        for (int i = 0; i < snippetCount; ++i)
            folder.snippets.append(Snippet::create(
                QStringLiteral(";s%1").arg(i),
                QStringLiteral("Snippet number %1, with a line break\nand some ünïcödé — 日本語").arg(i),
                Category::defaultCategoryId));
        SyncMerge::stampLocalChanges(folder.ours, folder.categories, folder.snippets,
                                     QStringLiteral("00000000"), 1000);
        for (int c = 0; c < computers; ++c) {
            const QString id = QStringLiteral("%1").arg(c + 1, 8, 10, QLatin1Char('0'));
            SyncMerge::Library library;
            QSet<QString> handled;
            SyncMerge::merge(library, folder.ours, id, handled);
            QList<Snippet> changed = folder.snippets;
            for (int i = 0; i < 1000; ++i)
                changed[(c * 1000 + i * 7) % snippetCount].content += QStringLiteral(" (changed on %1)").arg(id);
            changed.remove(c * 100, 100);
            SyncMerge::stampLocalChanges(library, folder.categories, changed, id, 2000 + c);
            folder.files.append(SyncFile::encode(id, QStringLiteral("computer%1").arg(c), library));
            folder.theirs.append(std::move(library));
        }
        return folder;
    }();
    return built;
}

void mergeFiveLibraries(benchmark::State& state) {
    const Folder& f = folder();
    for (auto _ : state) {
        state.PauseTiming();
        SyncMerge::Library ours = f.ours;
        QList<Category> categories = f.categories;
        QList<Snippet> snippets = f.snippets;
        QSet<QString> handled;
        state.ResumeTiming();
        for (const SyncMerge::Library& theirs : f.theirs)
            SyncMerge::merge(ours, theirs, QStringLiteral("00000000"), handled);
        SyncMerge::toLists(ours, categories, snippets);
        benchmark::DoNotOptimize(snippets);
    }
}

void readAndMergeFiveFiles(benchmark::State& state) {
    const Folder& f = folder();
    for (auto _ : state) {
        state.PauseTiming();
        SyncMerge::Library ours = f.ours;
        QList<Category> categories = f.categories;
        QList<Snippet> snippets = f.snippets;
        QSet<QString> handled;
        state.ResumeTiming();
        for (const QByteArray& file : f.files) {
            QString error;
            const auto contents = SyncFile::decode(file, &error);
            SyncMerge::merge(ours, contents->library, QStringLiteral("00000000"), handled);
        }
        SyncMerge::toLists(ours, categories, snippets);
        benchmark::DoNotOptimize(snippets);
    }
}

BENCHMARK(mergeFiveLibraries)->Unit(benchmark::kMillisecond);
BENCHMARK(readAndMergeFiveFiles)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
