// The start-up guidance: its text, when it is shown, and the alert's buttons.
#include "FakePermissionProbe.h"
#include "MessageBoxPermissionAlert.h"
#include "PermissionGuidance.h"
#include "RecordingAlertPresenter.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {
const QString header = QStringLiteral("Typolet needs the following permissions to function properly:\n\n");
const QString normalSteps = QStringLiteral("1. Click 'Open System Settings'\n"
                                           "2. Click the lock icon 🔒 to make changes\n"
                                           "3. Find and enable Typolet in both sections");
const QString developerSteps = QStringLiteral("Since you're running from Xcode, follow these steps:\n"
                                              "1. Open System Settings > Privacy & Security\n"
                                              "2. Click the lock icon 🔒 to make changes\n"
                                              "3. Find Xcode in both sections\n"
                                              "4. Enable Xcode\n"
                                              "\nAfter enabling, you may need to rebuild the app.");

// Answers the next modal message box with the button whose text is `buttonText`, after
// recording what it showed.
struct AlertAnswer {
    QString text, informativeText, buttons, defaultButton, windowTitle;
    bool seen = false;
    void answerWith(const QString& buttonText) {
        QTimer::singleShot(0, [this, buttonText] { answer(buttonText); });
    }
    void answer(const QString& buttonText) {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) {
            QTimer::singleShot(10, [this, buttonText] { answer(buttonText); });
            return;
        }
        seen = true;
        text = box->text();
        informativeText = box->informativeText();
        windowTitle = box->windowTitle();
        QStringList names;
        QAbstractButton* chosen = nullptr;
        for (QAbstractButton* button : box->buttons()) {
            names.append(button->text());
            if (button->text() == buttonText)
                chosen = button;
        }
        buttons = names.join(QLatin1Char('|'));
        defaultButton = box->defaultButton() ? box->defaultButton()->text() : QString();
        if (chosen)
            chosen->click();
    }
};
} // namespace

class PermissionGuidanceTest : public QObject {
    Q_OBJECT

private slots:
    void messageForMissingAccessibility() {
        QCOMPARE(PermissionGuidance::message(true, false, false),
                 header + QStringLiteral("✅ Input Monitoring: To detect your text shortcuts\n") +
                     QStringLiteral("❌ Accessibility: To expand your text shortcuts\n\n") + normalSteps);
    }

    void messageForDeveloperBuildWithBothMissing() {
        QCOMPARE(PermissionGuidance::message(false, false, true),
                 header + QStringLiteral("❌ Input Monitoring: To detect your text shortcuts\n") +
                     QStringLiteral("❌ Accessibility: To expand your text shortcuts\n\n") +
                     developerSteps);
    }

    void developerBuildIsOneRunFromABuildFolder() {
        QVERIFY(PermissionGuidance::isDeveloperBuild(QStringLiteral("/home/ada/typolet/build/typolet")));
        QVERIFY(!PermissionGuidance::isDeveloperBuild(QStringLiteral("/usr/bin/typolet")));
        QVERIFY(!PermissionGuidance::isDeveloperBuild(QStringLiteral("/opt/builder/typolet")));
        QVERIFY(!PermissionGuidance::isDeveloperBuild(QStringLiteral("/home/ada/Build/typolet")));
    }

    void bothGrantedShowsNothing() {
        FakePermissionProbe probe(true, true);
        RecordingAlertPresenter presenter;
        PermissionGuidance guidance(probe, presenter, QStringLiteral("/usr/bin/typolet"));
        QVERIFY(!guidance.checkAndRequestPermissions());
        QCoreApplication::processEvents();
        QVERIFY(presenter.alerts.isEmpty());
    }

    void missingPermissionShowsOneAlertOnceStartUpIsDone() {
        FakePermissionProbe probe(false, true);
        RecordingAlertPresenter presenter;
        PermissionGuidance guidance(probe, presenter, QStringLiteral("/usr/bin/typolet"));
        QVERIFY(guidance.checkAndRequestPermissions());
        // Both questions are asked even though the first answer was already no.
        QCOMPARE(probe.observeQuestions, 1);
        QCOMPARE(probe.postQuestions, 1);
        QVERIFY(presenter.alerts.isEmpty()); // not before the work in hand is done
        QCoreApplication::processEvents();
        QCOMPARE(presenter.alerts.size(), 1);
        QCOMPARE(presenter.alerts[0].title, QStringLiteral("Permissions Required"));
        QCOMPARE(presenter.alerts[0].message, PermissionGuidance::message(false, true, false));
        QCOMPARE(presenter.alerts[0].settingsUrl, PermissionGuidance::settingsUrl);
    }

    void helpPageExplainsBothPiecesForLinux() {
        QFile page(QLatin1Char(':') + QUrl(PermissionGuidance::settingsUrl).path());
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(page.readAll());
        QVERIFY(html.contains(QStringLiteral("XInput")));
        QVERIFY(html.contains(QStringLiteral("XTEST")));
        QVERIFY(html.contains(QStringLiteral("Wayland")));
        QVERIFY(html.contains(QStringLiteral("DISPLAY")));
    }

    void alertOpensTheHelpPageFromItsFirstButton() {
        QList<QUrl> opened;
        MessageBoxPermissionAlert alert([&](const QUrl& url) {
            opened.append(url);
            return true;
        });
        AlertAnswer answer;
        answer.answerWith(QStringLiteral("Open System Settings"));
        alert.showPermissionAlert(QStringLiteral("Permissions Required"),
                                  PermissionGuidance::message(true, false, false),
                                  PermissionGuidance::settingsUrl);
        QVERIFY(answer.seen);
        QCOMPARE(answer.text, QStringLiteral("Permissions Required"));
        QCOMPARE(answer.informativeText, PermissionGuidance::message(true, false, false));
        QCOMPARE(answer.buttons, QStringLiteral("Open System Settings|Later"));
        QCOMPARE(answer.defaultButton, QStringLiteral("Open System Settings"));
        QCOMPARE(opened.size(), 1);
        QVERIFY(opened[0].isLocalFile());
        QFile page(opened[0].toLocalFile());
        QVERIFY(page.open(QIODevice::ReadOnly));
        QVERIFY(page.readAll().contains("XTEST"));
    }

    void laterOpensNothing() {
        int opened = 0;
        MessageBoxPermissionAlert alert([&](const QUrl&) {
            ++opened;
            return true;
        });
        AlertAnswer answer;
        answer.answerWith(QStringLiteral("Later"));
        alert.showPermissionAlert(QStringLiteral("Permissions Required"), QStringLiteral("text"),
                                  PermissionGuidance::settingsUrl);
        QVERIFY(answer.seen);
        QCOMPARE(opened, 0);
    }

    void unparsableAddressOpensNothing() {
        int opened = 0;
        MessageBoxPermissionAlert alert([&](const QUrl&) {
            ++opened;
            return true;
        });
        AlertAnswer answer;
        answer.answerWith(QStringLiteral("Open System Settings"));
        alert.showPermissionAlert(QStringLiteral("Permissions Required"), QStringLiteral("text"),
                                  QStringLiteral("http://[::1"));
        QVERIFY(answer.seen);
        QCOMPARE(opened, 0);
    }
};

QTEST_MAIN(PermissionGuidanceTest)
#include "PermissionGuidanceTest.moc"
