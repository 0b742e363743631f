// The start-up guidance: its text, when it is shown, and the alert's buttons.
#include "PermissionGuidance.h"
#include "AlertDriver.h"
#include "FakePermissionProbe.h"
#include "MessageBoxPermissionAlert.h"
#include "RecordingAlertPresenter.h"

#include <QAbstractButton>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

class PermissionGuidanceTest : public QObject {
    Q_OBJECT

private slots:
    void messagesSayWhatIsMissingAndWhatToDo() {
        const QString oneMissing = PermissionGuidance::message(true, false, false);
        QVERIFY(oneMissing.contains("✅ Seeing keys: the XInput 2 extension\n"));
        QVERIFY(oneMissing.contains("❌ Typing keys: the XTEST extension\n"));
        QVERIFY(oneMissing.contains("Open Help"));
        QVERIFY(!oneMissing.contains("Wayland"));
        QVERIFY(PermissionGuidance::message(false, true, true).contains("Wayland session"));
    }

    void kernelDeviceMessagesNameTheMissingNodeAndTheOneTimeFix_data() {
        QTest::addColumn<bool>("canSee");
        QTest::addColumn<bool>("canType");
        QTest::addColumn<QString>("rule");
        QTest::addColumn<bool>("copied"); // udev does not read the place it was installed to
        QTest::newRow("typing missing, packaged") << true << false << "/usr/lib/udev/rules.d/70-typolet.rules" << false;
        QTest::newRow("seeing missing, /usr/local") << false << true << "/usr/local/lib/udev/rules.d/70-typolet.rules" << true;
    }
    void kernelDeviceMessagesNameTheMissingNodeAndTheOneTimeFix() {
        QFETCH(bool, canSee);
        QFETCH(bool, canType);
        QFETCH(QString, rule);
        QFETCH(bool, copied);
        const QString text = PermissionGuidance::kernelDevicesMessage(canSee, canType, rule);
        QCOMPARE(text.contains("❌ Seeing keys"), !canSee);
        QCOMPARE(text.contains("❌ Typing keys"), !canType);
        // /dev/uinput exists before its module is loaded: loading it is always part of the fix.
        QVERIFY(text.contains("sudo modprobe uinput"));
        QVERIFY(text.contains("/etc/modules-load.d/"));
        QCOMPARE(text.contains("install -m 644 " + rule), copied);
        QVERIFY(text.contains("udevadm trigger"));
        QVERIFY(!text.contains("X server"));
    }

    void oneAlertOnceStartUpIsDoneWhenAnythingIsMissing() {
        for (const auto& [observe, post] :
             {std::pair(true, true), std::pair(false, true), std::pair(true, false)}) {
            FakePermissionProbe probe(observe, post);
            RecordingAlertPresenter presenter;
            PermissionGuidance guidance(probe, presenter);
            QCOMPARE(guidance.checkAndRequestPermissions(), !(observe && post));
            // Both questions are asked, whatever the first answer.
            QCOMPARE(probe.observeQuestions, 1);
            QCOMPARE(probe.postQuestions, 1);
            QVERIFY(presenter.alerts.isEmpty()); // not before the work in hand is done
            QCoreApplication::processEvents();
            QCOMPARE(presenter.alerts.size(), observe && post ? 0 : 1);
            for (const auto& alert : presenter.alerts) {
                QCOMPARE(alert.title, PermissionGuidance::title());
                QCOMPARE(alert.message, PermissionGuidance::message(observe, post,
                                                                   PermissionGuidance::isWaylandSession()));
                QCOMPARE(alert.helpUrl, PermissionGuidance::helpUrl);
            }
        }
    }

    void onlyTheFirstButtonOpensTheHelpPage() {
        const QString open = "Open Help";
        for (const auto& [button, url] :
             {std::pair(open, PermissionGuidance::helpUrl),
              std::pair(QString("Later"), PermissionGuidance::helpUrl),
              std::pair(open, QString("http://[::1"))}) {
            QList<QUrl> opened;
            MessageBoxPermissionAlert alert([&](const QUrl& target) {
                opened.append(target);
                return true;
            });
            QStringList shown; // the texts, the buttons in order, the default one
            AlertDriver driver([&](QMessageBox* box) {
                QStringList names;
                for (QAbstractButton* b : box->buttons())
                    names.append(b->text());
                shown = {box->text(), box->informativeText(), names.join('|'),
                         box->defaultButton() ? box->defaultButton()->text() : QString()};
                AlertDriver::click(button)(box);
            });
            alert.showPermissionAlert("Title", "text", url);
            QCOMPARE(driver.acted(), 1);
            QCOMPARE(shown, (QStringList{"Title", "text", "Open Help|Later", open}));
            const bool opens = button == open && url == PermissionGuidance::helpUrl;
            QCOMPARE(opened.size(), opens ? 1 : 0);
            if (!opens)
                continue;
            // The bundled page, copied where a browser can read it, explains both pieces for X11.
            QFile page(opened[0].toLocalFile());
            QVERIFY(page.open(QIODevice::ReadOnly));
            const QByteArray html = page.readAll();
            for (const char* word : {"XInput", "XTEST", "Wayland", "DISPLAY", "uaccess", "/dev/uinput",
                                     "sudo modprobe uinput", "/etc/modules-load.d/"})
                QVERIFY2(html.contains(word), word);
            // The node exists before its module is loaded: loading it is never made conditional.
            QVERIFY(!html.contains("only when /dev/uinput does not exist"));
        }
    }
};

QTEST_MAIN(PermissionGuidanceTest)
#include "PermissionGuidanceTest.moc"
