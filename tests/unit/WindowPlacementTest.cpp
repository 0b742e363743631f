// Where the insert window and the fill-in form open: below the text cursor, above it near the
// screen's bottom, kept on the screen, and centred when the cursor is unknown or stale.
#include "WindowPlacement.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

class WindowPlacementTest : public QObject {
    Q_OBJECT

private slots:
    void besideTheCursor_data() {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("cursor");
        QTest::addColumn<QPoint>("topLeft");
        const QRect screen(0, 0, 1280, 1024);
        const QSize size(500, 400);
        const int gap = WindowPlacement::caretGap;
        QTest::newRow("below") << screen << size << QRect(300, 200, 1, 18)
                               << QPoint(300, 218 + gap);
        QTest::newRow("above, no room below")
            << screen << size << QRect(300, 900, 1, 18) << QPoint(300, 900 - gap - 400);
        QTest::newRow("just fits below")
            << screen << size << QRect(10, 1024 - 400 - gap - 18, 1, 18) << QPoint(10, 1024 - 400);
        QTest::newRow("moved left at the right edge")
            << screen << size << QRect(1200, 100, 1, 18) << QPoint(1280 - 500, 118 + gap);
        QTest::newRow("second screen, right of the first")
            << QRect(1280, 0, 1920, 1080) << size << QRect(1300, 500, 8, 20)
            << QPoint(1300, 520 + gap);
        QTest::newRow("cursor left of the screen's edge")
            << QRect(1280, 0, 1920, 1080) << size << QRect(1270, 500, 8, 20)
            << QPoint(1280, 520 + gap);
        QTest::newRow("too tall for either side: centred vertically")
            << QRect(0, 0, 800, 600) << QSize(300, 500) << QRect(100, 280, 1, 18)
            << QPoint(100, 50);
        QTest::newRow("larger than the screen: top-left in view")
            << QRect(0, 0, 800, 600) << QSize(900, 700) << QRect(400, 300, 1, 18) << QPoint(0, 0);
    }

    void besideTheCursor() {
        QFETCH(QRect, screen);
        QFETCH(QSize, size);
        QFETCH(QRect, cursor);
        QFETCH(QPoint, topLeft);
        QCOMPARE(WindowPlacement::topLeftBeside(size, cursor, screen), topLeft);
    }

    // Without a cursor, or with one reported outside the window typed in (a focus change the
    // window did not tell of), the window is centred on that window's screen as before.
    void unknownOrStaleCursorCentres() {
        QScreen* screen = QGuiApplication::primaryScreen();
        QVERIFY(screen);
        const QRect area = screen->availableGeometry();
        const QSize size(200, 100);
        const QPoint centred = WindowPlacement::topLeftWithin(size, area);
        const QRect typedIn(area.left() + 10, area.top() + 10, 300, 200);
        const QRect inside(typedIn.left() + 40, typedIn.top() + 30, 1, 16);
        const QRect outside(typedIn.right() + 50, typedIn.top() + 30, 1, 16);

        QCOMPARE(WindowPlacement::topLeft(size, typedIn), centred);
        QCOMPARE(WindowPlacement::topLeft(size, typedIn, outside), centred);
        QCOMPARE(WindowPlacement::topLeft(size, typedIn, inside),
                 WindowPlacement::topLeftBeside(size, inside, area));
        QCOMPARE(WindowPlacement::topLeft(size, {}, inside),
                 WindowPlacement::topLeftBeside(size, inside, area));
        QVERIFY(WindowPlacement::topLeftBeside(size, inside, area) != centred);
    }
};

QTEST_MAIN(WindowPlacementTest)
#include "WindowPlacementTest.moc"
