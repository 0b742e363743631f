// The Wayland backend takes the user's keyboard layout with the other settings: a keymap is
// compiled only when the choice changed, one that does not compile keeps the layout in use,
// and every change of the layout in use is said.
#include "EngineSettings.h"
#include "EvdevEngineBackend.h"
#include "RecordingAlertPresenter.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class EvdevEngineBackendTest : public QObject {
    Q_OBJECT
private slots:
    void theChosenLayoutIsAppliedWhenItChanges() {
        RecordingAlertPresenter guidance;
        QTemporaryDir devices;
        EvdevEngineBackend backend(guidance, nullptr, devices.path(),
                                   devices.filePath(QStringLiteral("uinput")));
        QSignalSpy said(&backend, &EngineBackend::layoutInUseChanged);
        const auto lastSaid = [&said] { return said.last().constFirst().toString(); };
        EngineSettings settings;
        settings.keyboardLayout = QStringLiteral("de(nodeadkeys)");
        backend.apply(settings);
        QCOMPARE(said.size(), 1);
        QVERIFY2(lastSaid().startsWith(QStringLiteral("German (no dead keys), from your choice")),
                 qPrintable(lastSaid()));

        settings.paused = true; // another setting: the same keymap stays
        backend.apply(settings);
        QCOMPARE(said.size(), 1);

        settings.keyboardLayout = QStringLiteral("nosuchlayout");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("could not be loaded"));
        backend.apply(settings);
        QCOMPARE(said.size(), 1);
        QVERIFY(backend.layoutInUse().startsWith(QStringLiteral("German (no dead keys)")));

        settings.keyboardLayout.clear(); // the desktop's again
        backend.apply(settings);
        QCOMPARE(said.size(), 2);
        QVERIFY2(!lastSaid().contains(QStringLiteral("your choice")), qPrintable(lastSaid()));
    }
};

QTEST_GUILESS_MAIN(EvdevEngineBackendTest)
#include "EvdevEngineBackendTest.moc"
