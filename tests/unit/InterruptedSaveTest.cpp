// A save killed at any moment leaves the library as it was before or after that save, never a
// broken file or a mix of the two.
#include "RecordCodec.h"
#include "SnippetStore.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>
#include <cstring>

namespace {
constexpr int snippetCount = 2000;

QList<Snippet> library(int round) {
    QList<Snippet> snippets;
    const QString padding(1000, QLatin1Char('x'));
    for (int i = 0; i < snippetCount; ++i)
        snippets.append(Snippet(QUuid::createUuidV5(QUuid(), QString::number(i)),
                                  QStringLiteral(";s%1").arg(i),
                                  QStringLiteral("round %1 ").arg(round) + padding, 0,
                                  Category::defaultCategoryId));
    return snippets;
}

// Saves a new version of the whole library, again and again, until it is killed.
[[noreturn]] void saveForever(const QString& path) {
    SnippetStore store(path);
    for (int round = 1;; ++round) {
        store.setSnippets(library(round));
        store.saveSnippets();
        if (round == 1) {
            std::puts("saved");
            std::fflush(stdout);
        }
    }
}
} // namespace

class InterruptedSaveTest : public QObject {
    Q_OBJECT
private slots:
    void killedSavesLeaveAWholeLibrary() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Typolet.conf"));
        auto* random = QRandomGenerator::global();
        for (int kill = 0; kill < 15; ++kill) {
            QProcess saver;
            saver.start(QCoreApplication::applicationFilePath(), {"--save-forever", path});
            QVERIFY(saver.waitForReadyRead(60000));
            QTest::qWait(random->bounded(20, 700));
            saver.kill();
            QVERIFY(saver.waitForFinished(10000));

            QSettings settings(path, QSettings::NativeFormat);
            QCOMPARE(settings.status(), QSettings::NoError);
            int unreadable = 0;
            const auto stored = RecordCodec::decodeSnippets(
                settings.value(QStringLiteral("Shortcuts")).toByteArray(), &unreadable);
            QVERIFY(stored);
            QCOMPARE(unreadable, 0);
            QCOMPARE(stored->size(), snippetCount);
            // One save's version throughout.
            const QString round = stored->first().content.section(QLatin1Char(' '), 0, 1);
            for (const Snippet& snippet : *stored)
                QVERIFY(snippet.content.startsWith(round + QLatin1Char(' ')));
        }
    }
};

int main(int argc, char* argv[]) {
    if (argc == 3 && std::strcmp(argv[1], "--save-forever") == 0) {
        QCoreApplication app(argc, argv);
        saveForever(QString::fromLocal8Bit(argv[2]));
    }
    QCoreApplication app(argc, argv);
    InterruptedSaveTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "InterruptedSaveTest.moc"
