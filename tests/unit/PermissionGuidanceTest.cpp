// The start-up guidance: its text, when it is shown, and the alert's buttons.
#include "PermissionGuidance.h"
#include "FakePermissionProbe.h"
#include "MessageBoxPermissionAlert.h"
#include "RecordingAlertPresenter.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {
const QString header = "Typolet needs the following permissions to function properly:\n\n";
const QString accessibilityMissing = "❌ Accessibility: To expand your text shortcuts\n\n";

// Records the next modal message box, then clicks its button titled `button`.
struct AlertAnswer {
    QString text, informativeText, buttons, defaultButton;
    explicit AlertAnswer(const QString& button) { answer(button); }
    void answer(const QString& button) {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return QTimer::singleShot(10, [this, button] { answer(button); });
        text = box->text();
        informativeText = box->informativeText();
        defaultButton = box->defaultButton() ? box->defaultButton()->text() : QString();
        QStringList names;
        for (QAbstractButton* b : box->buttons())
            names.append(b->text());
        buttons = names.join('|');
        if (QAbstractButton* chosen = box->buttons().value(names.indexOf(button)))
            chosen->click();
    }
};
} // namespace

class PermissionGuidanceTest : public QObject {
    Q_OBJECT

private slots:
    void messagesSayWhatIsMissingAndWhatToDo() {
        QCOMPARE(PermissionGuidance::message(true, false, false),
                 header + "✅ Input Monitoring: To detect your text shortcuts\n" +
                     accessibilityMissing +
                     "1. Click 'Open System Settings'\n"
                     "2. Click the lock icon 🔒 to make changes\n"
                     "3. Find and enable Typolet in both sections");
        QCOMPARE(PermissionGuidance::message(false, false, true),
                 header + "❌ Input Monitoring: To detect your text shortcuts\n" +
                     accessibilityMissing +
                     "Since you're running from Xcode, follow these steps:\n"
                     "1. Open System Settings > Privacy & Security\n"
                     "2. Click the lock icon 🔒 to make changes\n"
                     "3. Find Xcode in both sections\n"
                     "4. Enable Xcode\n"
                     "\nAfter enabling, you may need to rebuild the app.");
        QVERIFY(PermissionGuidance::isDeveloperBuild("/home/ada/typolet/build/typolet"));
        for (const char* path : {"/usr/bin/typolet", "/opt/builder/typolet", "/home/ada/Build/t"})
            QVERIFY2(!PermissionGuidance::isDeveloperBuild(path), path);
    }

    void oneAlertOnceStartUpIsDoneWhenAnythingIsMissing() {
        for (const auto& [observe, post] :
             {std::pair(true, true), std::pair(false, true), std::pair(true, false)}) {
            FakePermissionProbe probe(observe, post);
            RecordingAlertPresenter presenter;
            PermissionGuidance guidance(probe, presenter, "/home/ada/typolet/build/typolet");
            QCOMPARE(guidance.checkAndRequestPermissions(), !(observe && post));
            // Both questions are asked, whatever the first answer.
            QCOMPARE(probe.observeQuestions, 1);
            QCOMPARE(probe.postQuestions, 1);
            QVERIFY(presenter.alerts.isEmpty()); // not before the work in hand is done
            QCoreApplication::processEvents();
            QCOMPARE(presenter.alerts.size(), observe && post ? 0 : 1);
            for (const auto& alert : presenter.alerts) {
                QCOMPARE(alert.title, "Permissions Required");
                QCOMPARE(alert.message, PermissionGuidance::message(observe, post, true));
                QCOMPARE(alert.settingsUrl, PermissionGuidance::settingsUrl);
            }
        }
    }

    void onlyTheFirstButtonOpensTheHelpPage() {
        const QString open = "Open System Settings";
        for (const auto& [button, url] :
             {std::pair(open, PermissionGuidance::settingsUrl),
              std::pair(QString("Later"), PermissionGuidance::settingsUrl),
              std::pair(open, QString("http://[::1"))}) {
            QList<QUrl> opened;
            MessageBoxPermissionAlert alert([&](const QUrl& target) {
                opened.append(target);
                return true;
            });
            AlertAnswer answer(button);
            alert.showPermissionAlert("Permissions Required", "text", url);
            QCOMPARE(answer.text, "Permissions Required");
            QCOMPARE(answer.informativeText, "text");
            QCOMPARE(answer.buttons, "Open System Settings|Later");
            QCOMPARE(answer.defaultButton, open);
            const bool opens = button == open && url == PermissionGuidance::settingsUrl;
            QCOMPARE(opened.size(), opens ? 1 : 0);
            if (!opens)
                continue;
            // The bundled page, copied where a browser can read it, explains both pieces for X11.
            QFile page(opened[0].toLocalFile());
            QVERIFY(page.open(QIODevice::ReadOnly));
            const QByteArray html = page.readAll();
            for (const char* word : {"XInput", "XTEST", "Wayland", "DISPLAY"})
                QVERIFY2(html.contains(word), word);
        }
    }
};

QTEST_MAIN(PermissionGuidanceTest)
#include "PermissionGuidanceTest.moc"
