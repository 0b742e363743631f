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
    void showsIconNameVersionAndLinkInOrder();
    void versionIsTheBuildsOrOnePointZero();
};

void AboutViewTest::showsIconNameVersionAndLinkInOrder() {
    AboutView view(QStringLiteral("2.3"), nullptr);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCOMPARE(view.size(), QSize(240, 220));

    const QList<QWidget*> rows = {view.iconLabel(), view.nameLabel(), view.versionLabel(),
                                  view.websiteLabel()};
    for (int i = 0; i < rows.size(); ++i) {
        QVERIFY(rows[i]->isVisible());
        // Centred: equal room left and right (within a pixel for odd widths).
        const QRect r = rows[i]->geometry();
        QVERIFY(qAbs(r.left() - (view.width() - 1 - r.right())) <= 1);
        if (i > 0) // 16 between rows
            QCOMPARE(rows[i]->geometry().top() - rows[i - 1]->geometry().bottom() - 1, 16);
    }
    // Centred vertically as a block.
    QVERIFY(qAbs(rows.first()->geometry().top() -
                 (view.height() - 1 - rows.last()->geometry().bottom())) <= 1);

    QCOMPARE(view.iconLabel()->size(), QSize(64, 64));
    // The icon's corners are cut away; the middle is the drawing.
    const QImage icon = view.iconLabel()->pixmap().toImage();
    QCOMPARE(icon.size(), QSize(64, 64) * icon.devicePixelRatio());
    QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(icon.pixel(icon.width() - 1, icon.height() - 1)), 0);
    QCOMPARE(qAlpha(icon.pixel(icon.width() / 2, icon.height() / 2)), 255);
    QCOMPARE(view.nameLabel()->text(), QStringLiteral("Typolet"));
    QCOMPARE(view.nameLabel()->font().pixelSize(), 20);
    QCOMPARE(view.nameLabel()->font().weight(), QFont::DemiBold);
    QCOMPARE(view.versionLabel()->text(), QStringLiteral("Version 2.3"));
    QCOMPARE(view.versionLabel()->font().pixelSize(), 12);
    QCOMPARE(view.versionLabel()->tone(), ToneLabel::Tone::Secondary);
    QLabel* link = view.websiteLabel();
    QCOMPARE(link->font().pixelSize(), 12);
    QCOMPARE(link->contentsMargins().top(), 4);
    QVERIFY(link->text().contains(AboutView::websiteName()));

    // The link names the site and opens it over https in the desktop's browser.
    QCOMPARE(AboutView::websiteUrl().scheme(), QStringLiteral("https"));
    QCOMPARE(AboutView::websiteUrl().host(), AboutView::websiteName());
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "open");
    // The link text is centred in its label, below the 4-pixel top padding.
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
