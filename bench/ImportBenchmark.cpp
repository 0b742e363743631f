// Importing large files: reading a match file just under the size limit, how long the window's
// thread is kept from its events while an ImportJob reads that file, and opening the import
// dialog over 100,000 commands that are all in the library already. The straightforward
// dialog, a table with a combo box widget in every row, is measured beside the model at 10,000
// rows. Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
#include "ImportDialog.h"
#include "ImportJob.h"
#include "LibraryImport.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QSet>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <memory>

namespace {
// A match file of `megabytes` MB: matches of about 190 bytes, each with its own command.
QString writeMatchFile(const QTemporaryDir& dir, int megabytes) {
    const QByteArray content = "Regards from the import benchmark, a content of a realistic "
                               "length: long enough to be a sentence or two, with words in it.";
    QByteArray yaml = "matches:\n";
    for (int i = 0; yaml.size() < (qsizetype(megabytes) << 20) - 200; ++i)
        yaml += "  - trigger: \":m" + QByteArray::number(i) + "\"\n    replace: \"" + content +
                "\"\n    word: true\n";
    const QString path = dir.filePath(QStringLiteral("large.yml"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(yaml) != yaml.size())
        return {};
    return path;
}

// The peak resident memory of this process so far, in MB ("VmHWM").
double peakMemoryMb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    }
    return -1;
}

ImportPlan planOf(int count, const QString& content) {
    ImportPlan plan;
    for (int i = 0; i < count; ++i)
        plan.addSnippet(
            Snippet::create(QStringLiteral(";c%1").arg(i), content, Category::defaultCategoryId));
    return plan;
}

// A store holding `count` snippets whose commands the plan of the same count repeats.
struct Clashes {
    explicit Clashes(int count) : store(settings.path()) {
        (void)store.importSnippets(planOf(count, QStringLiteral("old")));
    }
    TemporarySettings settings;
    SnippetStore store;
};

void readMatchFile(benchmark::State& state) {
    QTemporaryDir dir;
    const QString path = writeMatchFile(dir, int(state.range(0)));
    qsizetype snippets = 0;
    for (auto _ : state) {
        const ImportPlan plan = LibraryImport::read(path);
        if (plan.failed())
            state.SkipWithError(qPrintable(plan.error));
        snippets = plan.snippets.size();
    }
    state.counters["snippets"] = double(snippets);
    // Run first (or alone, with --benchmark_filter) for this to be the reading's own peak.
    state.counters["peak_rss_mb"] = peakMemoryMb();
}

// The longest the window's thread goes without turning to its events while the file is read:
// the longest interval between the ticks of a 1 ms timer, as a key from the keyboard monitor
// would wait for its turn.
void windowDuringImport(benchmark::State& state) {
    QTemporaryDir dir;
    const QString path = writeMatchFile(dir, int(state.range(0)));
    double longest = 0;
    for (auto _ : state) {
        ImportJob job(path);
        QEventLoop loop;
        QObject::connect(&job, &ImportJob::stopped, &loop, &QEventLoop::quit);
        QTimer tick;
        tick.setTimerType(Qt::PreciseTimer);
        QElapsedTimer since;
        QObject::connect(&tick, &QTimer::timeout, [&] {
            longest = qMax(longest, since.nsecsElapsed() / 1e6);
            since.start();
        });
        job.start();
        since.start();
        tick.start(1);
        loop.exec();
    }
    state.counters["longest_gap_ms"] = longest;
}

void openDialog(benchmark::State& state) {
    const int count = int(state.range(0));
    Clashes clashes(count);
    const ImportPlan plan = planOf(count, QStringLiteral("new"));
    for (auto _ : state) {
        ImportDialog dialog(clashes.store, plan);
        dialog.show();
        QApplication::processEvents();
        (void)dialog.grab();
    }
}

// The straightforward alternative: every row's cells and its choice as widgets of their own.
void openWidgetTable(benchmark::State& state) {
    const int count = int(state.range(0));
    Clashes clashes(count);
    const ImportPlan plan = planOf(count, QStringLiteral("new"));
    for (auto _ : state) {
        QSet<QString> commands;
        for (const Snippet& snippet : clashes.store.snippets())
            commands.insert(snippet.command);
        QTableWidget table(count, 4);
        for (int row = 0; row < count; ++row) {
            const Snippet& candidate = plan.snippets[row];
            table.setItem(row, 0, new QTableWidgetItem(candidate.command));
            table.setItem(row, 1, new QTableWidgetItem(candidate.content));
            table.setItem(row, 2, new QTableWidgetItem(QString()));
            if (!commands.contains(candidate.command))
                continue;
            auto* choice = new QComboBox;
            choice->addItems(
                {QStringLiteral("Skip"), QStringLiteral("Keep Both"), QStringLiteral("Replace")});
            table.setCellWidget(row, 3, choice);
        }
        table.show();
        QApplication::processEvents();
        (void)table.grab();
    }
}

BENCHMARK(readMatchFile)->Arg(19)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(windowDuringImport)->Arg(19)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(openDialog)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(openWidgetTable)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(3);
} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
