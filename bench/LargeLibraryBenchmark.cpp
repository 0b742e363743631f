// A very large library in the editor: 100,000 snippets, then one more with a 10 MB content.
// Prints the time from loading the settings file to the editor window painted, the peak
// resident memory then, and the time to show the large snippet and an ordinary one in the
// editor, each against its target. Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
//
//   bench_large_library                          the measurement
//   bench_large_library --write FILE [LENGTH]    only writes such a library (N snippets, each
//                                                content LENGTH characters) for bench/startup_time.sh
#include "ContentView.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPixmap>
#include <QProcess>
#include <cstdio>
#include <cstdlib>

namespace {
const int snippetCount = qEnvironmentVariableIntValue("N") ? qEnvironmentVariableIntValue("N") : 100000;
constexpr qsizetype hugeContentSize = 10 * 1024 * 1024;

// "VmRSS" or "VmHWM" of this process, in MB.
double memoryMb(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field) + 1).trimmed().split(' ').first().toDouble() / 1024;
    }
    return -1;
}

void report(const char* what, double value, const char* unit, double target) {
    std::printf("%-36s %9.1f %s   target < %.0f %s  %s\n", what, value, unit, target, unit,
                value < target ? "ok" : "MISSED");
}

// Milliseconds to select the snippet and have the window painted with it.
double selectAndPaint(ContentView& view, const Snippet& snippet) {
    QElapsedTimer timer;
    timer.start();
    view.setSelectedSnippet(snippet);
    QApplication::processEvents();
    (void)view.grab();
    return timer.nsecsElapsed() / 1e6;
}

// Loads the library at `path` and shows it, in a process of its own so that its memory is
// what a user's Typolet would hold with this library.
int measure(const QString& path) {
    QElapsedTimer timer;
    timer.start();
    SnippetStore store(path);
    const double loaded = timer.nsecsElapsed() / 1e6;
    ContentView view(store);
    view.resize(1200, 700);
    view.show();
    QApplication::processEvents();
    (void)view.grab();
    const double shown = timer.nsecsElapsed() / 1e6;

    std::printf("%d snippets\n", int(store.snippets().size()));
    std::printf("%-36s %9.1f ms\n", "load the settings file", loaded);
    report("load to editor window painted", shown, "ms", 500);
    report("resident memory then", memoryMb("VmRSS"), "MB", 120);
    std::printf("%-36s %9.1f MB\n", "  at most, while loading", memoryMb("VmHWM"));
    // Added after the start so that the figures above are those of an ordinary library.
    const Snippet huge = Snippet::create(QStringLiteral(";huge"),
                                           QString(hugeContentSize, QLatin1Char('x')),
                                           Category::defaultCategoryId);
    store.appendSnippet(huge);
    report("select the 10 MB snippet", selectAndPaint(view, huge), "ms", 100);
    report("select an ordinary snippet", selectAndPaint(view, store.snippets().at(7)), "ms", 100);
    report("select the 10 MB snippet again", selectAndPaint(view, huge), "ms", 100);
    return 0;
}
} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc == 2)
        return measure(QString::fromLocal8Bit(argv[1]));

    const bool writeOnly = argc >= 3 && qstrcmp(argv[1], "--write") == 0;
    const int contentLength = writeOnly && argc >= 4 ? std::atoi(argv[3]) : 0;
    TemporarySettings settings;
    const QString path = writeOnly ? QString::fromLocal8Bit(argv[2]) : settings.path();
    {
        SnippetStore writer(path);
        QList<Snippet> snippets;
        snippets.reserve(snippetCount);
        for (int i = 0; i < snippetCount; ++i) {
            QString content = QStringLiteral("Snippet number %1 — a line of text\nand a second one").arg(i);
            if (contentLength > 0)
                content = content.repeated(contentLength / int(content.size()) + 1).left(contentLength);
            snippets.append(Snippet::create(QStringLiteral(";s%1").arg(i), content,
                                            Category::defaultCategoryId));
        }
        writer.setSnippets(std::move(snippets));
        if (writer.saveSnippets()) {
            std::fprintf(stderr, "could not write the library\n");
            return 1;
        }
    }
    if (writeOnly)
        return 0;
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(), {settings.path()});
    child.waitForFinished(-1);
    return child.exitCode();
}
