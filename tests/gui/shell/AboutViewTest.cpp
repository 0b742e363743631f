// The About view: its four rows, the version shown and its fallback, the website link.

#include "AboutView.h"
#include "IsolatedTestMain.h"
#include "ToneLabel.h"

#include <QDesktopServices>
#include <QLabel>
#include <QtTest>

// Receives the addresses that would go to the desktop's browser.
class UrlRecorder : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened.append(url); }
};

class AboutViewTest : public QObject {
    Q_OBJECT
private slots:
    void versionAndLinkWork();
    void versionIsTheBuildsOrOnePointZero();
};

void AboutViewTest::versionAndLinkWork() {
    AboutView view(QStringLiteral("2.3"), nullptr);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCOMPARE(view.versionLabel()->text(), QStringLiteral("Version 2.3"));
    // The link opens the site over https in the desktop's browser.
    QCOMPARE(AboutView::websiteUrl().scheme(), QStringLiteral("https"));
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "open");
    QLabel* link = view.websiteLabel();
    QTest::mouseClick(link, Qt::LeftButton, {}, QPoint(link->width() / 2, 2 + link->height() / 2));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(recorder.opened, QList<QUrl>{AboutView::websiteUrl()});
}

void AboutViewTest::versionIsTheBuildsOrOnePointZero() {
    QCOMPARE(AboutView().versionLabel()->text(),
             QStringLiteral("Version " TYPOLET_EXPECTED_VERSION));
    for (const QString& missing : {QString(), QStringLiteral("  ")})
        QCOMPARE(AboutView(missing, nullptr).versionLabel()->text(), QStringLiteral("Version 1.0"));
}

TYPOLET_ISOLATED_TEST_MAIN(AboutViewTest)
#include "AboutViewTest.moc"
