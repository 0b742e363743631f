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
    void versionIsTheBuildsVersion();
    void missingVersionShowsOnePointZero_data();
    void missingVersionShowsOnePointZero();
    void iconHasRoundedCorners();
    void linkOpensTheWebsite();
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
    const int above = view.iconLabel()->geometry().top();
    const int below = view.height() - 1 - view.websiteLabel()->geometry().bottom();
    QVERIFY(qAbs(above - below) <= 1);

    QCOMPARE(view.iconLabel()->size(), QSize(64, 64));
    QCOMPARE(view.nameLabel()->text(), QStringLiteral("Typolet"));
    QCOMPARE(view.nameLabel()->font().pixelSize(), 20);
    QCOMPARE(view.nameLabel()->font().weight(), QFont::DemiBold);
    QCOMPARE(view.versionLabel()->text(), QStringLiteral("Version 2.3"));
    QCOMPARE(view.versionLabel()->font().pixelSize(), 12);
    QCOMPARE(view.versionLabel()->tone(), ToneLabel::Tone::Secondary);
    QCOMPARE(view.websiteLabel()->font().pixelSize(), 12);
    QCOMPARE(view.websiteLabel()->contentsMargins().top(), 4);
    QVERIFY(view.websiteLabel()->text().contains(AboutView::websiteName()));
}

void AboutViewTest::versionIsTheBuildsVersion() {
    QCOMPARE(AboutView::compiledVersion(), QStringLiteral(TYPOLET_EXPECTED_VERSION));
    AboutView view;
    QCOMPARE(view.versionLabel()->text(),
             QStringLiteral("Version ") + QStringLiteral(TYPOLET_EXPECTED_VERSION));
}

void AboutViewTest::missingVersionShowsOnePointZero_data() {
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("shown");
    QTest::newRow("empty") << QString() << QStringLiteral("Version 1.0");
    QTest::newRow("blank") << QStringLiteral("  ") << QStringLiteral("Version 1.0");
    QTest::newRow("present") << QStringLiteral("1.4.2") << QStringLiteral("Version 1.4.2");
}

void AboutViewTest::missingVersionShowsOnePointZero() {
    QFETCH(QString, version);
    QFETCH(QString, shown);
    AboutView view(version, nullptr);
    QCOMPARE(view.versionLabel()->text(), shown);
}

void AboutViewTest::iconHasRoundedCorners() {
    AboutView view;
    const QImage icon = view.iconLabel()->pixmap().toImage();
    QVERIFY(!icon.isNull());
    const qreal dpr = icon.devicePixelRatio();
    QCOMPARE(icon.size(), QSize(64, 64) * dpr);
    // The corners are cut away; the middle is the drawing.
    QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(icon.pixel(icon.width() - 1, icon.height() - 1)), 0);
    QCOMPARE(qAlpha(icon.pixel(icon.width() / 2, icon.height() / 2)), 255);
}

void AboutViewTest::linkOpensTheWebsite() {
    QCOMPARE(AboutView::websiteUrl().scheme(), QStringLiteral("https"));
    QCOMPARE(AboutView::websiteUrl().host(), AboutView::websiteName());

    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "open");
    AboutView view;
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QLabel* link = view.websiteLabel();
    // The link text is centred in its label, below the 4-pixel top padding.
    const QPoint onText(link->width() / 2, 4 + (link->height() - 4) / 2);
    QTest::mouseClick(link, Qt::LeftButton, {}, onText);
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QCOMPARE(recorder.opened, QList<QUrl>{AboutView::websiteUrl()});
}

TYPOLET_ISOLATED_TEST_MAIN(AboutViewTest)
#include "AboutViewTest.moc"
