// `typolet --version`, `--help` and a mistyped option, run as a user runs them, and the manual
// page that explains the options --help lists.
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

namespace {
struct Answer {
    int exitCode = -1;
    QString out;
    QString err;
};

Answer runTypolet(const QStringList& arguments) {
    QProcess typolet;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // No display: these answers must not need one.
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    typolet.setProcessEnvironment(env);
    typolet.start(QStringLiteral(TYPOLET_BINARY), arguments);
    Answer answer;
    if (!typolet.waitForFinished() || typolet.exitStatus() != QProcess::NormalExit)
        return answer;
    answer.exitCode = typolet.exitCode();
    answer.out = QString::fromUtf8(typolet.readAllStandardOutput());
    answer.err = QString::fromUtf8(typolet.readAllStandardError());
    return answer;
}
} // namespace

class CommandLineTest : public QObject {
    Q_OBJECT

private slots:
    void versionIsTheProjectVersion() {
        const Answer answer = runTypolet({QStringLiteral("--version")});
        QCOMPARE(answer.exitCode, 0);
        QCOMPARE(answer.out, QStringLiteral("Typolet " TYPOLET_VERSION "\n"));
    }

    void helpListsEveryOptionAndTheManualExplainsEach() {
        const Answer answer = runTypolet({QStringLiteral("--help")});
        QCOMPARE(answer.exitCode, 0);
        for (const char* option : {"--check-input", "--insert", "--help", "--version"})
            QVERIFY2(answer.out.contains(QLatin1String(option)), qPrintable(answer.out));

        QFile manual(QStringLiteral(TYPOLET_MANUAL));
        QVERIFY2(manual.open(QIODevice::ReadOnly), qPrintable(manual.fileName()));
        const QString page = QString::fromUtf8(manual.readAll());
        // Every long option of --help, in the manual's roff spelling (\- for each hyphen).
        static const QRegularExpression longOption(QStringLiteral("(?<![\\w-])--[a-z][a-z-]*"));
        QStringList listed;
        for (const auto& match : longOption.globalMatch(answer.out))
            listed.append(match.captured());
        QVERIFY2(listed.size() >= 3, qPrintable(answer.out));
        for (const QString& option : std::as_const(listed)) {
            QString roff = option;
            roff.replace(u'-', QLatin1String("\\-"));
            QVERIFY2(page.contains(roff), qPrintable(option + QStringLiteral(" is not in the manual")));
        }
    }

    void anUnknownOptionIsRefused() {
        const Answer answer = runTypolet({QStringLiteral("--inserts")});
        QCOMPARE(answer.exitCode, 1);
        QVERIFY2(answer.err.contains(QStringLiteral("inserts")), qPrintable(answer.err));
        QVERIFY2(answer.out.isEmpty(), qPrintable(answer.out));
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
