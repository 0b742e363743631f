// A plain Qt text window used as a second kind of target in the end-to-end tests and the
// latency benchmark. After every change it writes its whole text to the file named on the
// command line. With --report-length N it instead prints, each time its text reaches N
// characters, the CLOCK_MONOTONIC time in nanoseconds on a line, and empties itself.
#include <QApplication>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QTimer>
#include <cstdio>
#include <ctime>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 2)
        return 2;
    const QString outFile = arguments.at(1);
    qsizetype reportLength = -1;
    if (arguments.size() >= 4 && arguments.at(2) == QLatin1String("--report-length"))
        reportLength = arguments.at(3).toLongLong();

    QPlainTextEdit editor;
    editor.setWindowTitle(QStringLiteral("Typolet test target"));
    editor.resize(700, 400);

    const auto save = [&] {
        QSaveFile file(outFile);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(editor.toPlainText().toUtf8());
            file.commit();
        }
    };
    // Written shortly after the last change, as an editor would, so that saving does not slow
    // down reading the keys.
    QTimer saveTimer;
    saveTimer.setSingleShot(true);
    saveTimer.setInterval(50);
    QObject::connect(&saveTimer, &QTimer::timeout, &editor, save);
    QObject::connect(&editor, &QPlainTextEdit::textChanged, &editor, [&] {
        if (reportLength < 0) {
            saveTimer.start();
            return;
        }
        if (editor.document()->characterCount() - 1 >= reportLength) {
            timespec now{};
            clock_gettime(CLOCK_MONOTONIC, &now);
            std::printf("%lld\n", static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec);
            std::fflush(stdout);
            QMetaObject::invokeMethod(&editor, [&] { editor.clear(); }, Qt::QueuedConnection);
        }
    });
    save(); // the file exists once the window is up
    editor.show();
    return app.exec();
}
