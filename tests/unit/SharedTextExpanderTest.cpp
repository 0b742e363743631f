// The process-wide engine, in a process of its own since it lives until the process ends.
#include "CompiledKeymapSource.h"
#include "FakeKeyMonitor.h"
#include "FakePermissionProbe.h"
#include "KeyTranslator.h"
#include "RecordingKeyboardOutput.h"
#include "TextExpander.h"

#include <QTemporaryDir>
#include <QtTest>

class SharedTextExpanderTest : public QObject {
    Q_OBJECT
private slots:
    void sharedIsCreatedOnceOverItsPlatformAndListens() {
        QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8()); // the shared store's file
        CompiledKeymapSource keymaps(QStringLiteral("us"));
        KeyTranslator translator(keymaps, QStringLiteral("en_US.UTF-8"));
        FakePermissionProbe permissions(true, true);
        FakeKeyMonitor monitor;
        RecordingKeyboardOutput output;
        TextExpander::setSharedPlatform({&permissions, &monitor, &translator, &output});

        TextExpander& engine = TextExpander::shared();
        QCOMPARE(&TextExpander::shared(), &engine);
        QVERIFY(engine.isMonitoring());
        QCOMPARE(monitor.startCalls, 1);
        QCOMPARE(permissions.observeQuestions, 1);
        monitor.press(38); // a
        QCOMPARE(engine.buffer(), QStringLiteral("a"));
    }
};

QTEST_GUILESS_MAIN(SharedTextExpanderTest)
#include "SharedTextExpanderTest.moc"
