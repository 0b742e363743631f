// The process-wide engine: created once over the platform it was given, listening from the
// start. (A process of its own, since the shared engine lives until the process ends.)
#include "CompiledKeymapSource.h"
#include "FakeKeyMonitor.h"
#include "FakePermissionProbe.h"
#include "KeyTranslator.h"
#include "RecordingKeyboardOutput.h"
#include "TextExpander.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class SharedTextExpanderTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_config;

private slots:
    void initTestCase() {
        QVERIFY(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8()); // the shared store's file
    }

    void sharedIsCreatedOnceAndListens() {
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
