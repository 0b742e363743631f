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
        const QString oneMissing = PermissionGuidance::message(true, false, false);
        QVERIFY(oneMissing.contains("✅ Seeing keys: the XInput 2 extension\n"));
        QVERIFY(oneMissing.contains("❌ Typing keys: the XTEST extension\n"));
        QVERIFY(oneMissing.contains("Open Help"));
        QVERIFY(!oneMissing.contains("Wayland"));
        QVERIFY(PermissionGuidance::message(false, true, true).contains("Wayland session"));
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
            AlertAnswer answer(button);
            alert.showPermissionAlert("Title", "text", url);
            QCOMPARE(answer.text, "Title");
            QCOMPARE(answer.informativeText, "text");
            QCOMPARE(answer.buttons, "Open Help|Later");
            QCOMPARE(answer.defaultButton, open);
            const bool opens = button == open && url == PermissionGuidance::helpUrl;
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
