// Which keys paste in an application, by its window class.
#include "PasteKeys.h"

#include <QtTest>

class PasteKeysTest : public QObject {
    Q_OBJECT
private slots:
    void keysFollowTheWindowClass_data() {
        QTest::addColumn<QString>("windowClass");
        QTest::addColumn<PasteKeys::Keys>("keys");
        QTest::newRow("xterm") << "XTerm" << PasteKeys::Keys::NoKeys;
        QTest::newRow("uxterm, other case") << "uxterm" << PasteKeys::Keys::NoKeys;
        QTest::newRow("GNOME Terminal") << "Gnome-terminal" << PasteKeys::Keys::ControlShiftV;
        QTest::newRow("Alacritty, other case") << "alacritty" << PasteKeys::Keys::ControlShiftV;
        QTest::newRow("LXTerminal") << "Lxterminal" << PasteKeys::Keys::ControlShiftV;
        QTest::newRow("a browser") << "firefox" << PasteKeys::Keys::ControlV;
        QTest::newRow("a name with a terminal in it") << "xterm-notes" << PasteKeys::Keys::ControlV;
        QTest::newRow("unknown") << "" << PasteKeys::Keys::ControlV;
    }
    void keysFollowTheWindowClass() {
        QFETCH(QString, windowClass);
        QFETCH(PasteKeys::Keys, keys);
        QCOMPARE(PasteKeys::forApplication(windowClass), keys);
    }
};

QTEST_GUILESS_MAIN(PasteKeysTest)
#include "PasteKeysTest.moc"
