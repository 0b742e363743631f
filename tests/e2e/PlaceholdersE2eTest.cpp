// Placeholders typed into real X clients: the date, the caret put back at {{cursor}} before
// the user's next key, and the clipboard as another program holds it.
#include "XSession.h"

#include <QDate>
#include <QFile>
#include <QtTest>

class PlaceholdersE2eTest : public QObject {
    Q_OBJECT

    static bool type(XSession& session, const QString& text) {
        return session.run(QStringLiteral("xdotool"),
                           {QStringLiteral("type"), QStringLiteral("--delay"),
                            QStringLiteral("15"), text});
    }
    static void expectShown(XSession& session, const QString& expected) {
        const QString actual =
            session.shownTextOnce([&](const QString& text) { return text == expected; });
        QVERIFY2(actual == expected, qPrintable(XSession::describeDifference(actual, expected)));
    }
    // Makes xclip the clipboard's owner with `bytes` as `target`, and waits until it answers.
    static bool offerClipboard(XSession& session, const QByteArray& bytes, const QString& target) {
        QFile file(session.file(QStringLiteral("clip")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return false;
        file.close();
        // -quiet keeps it in the foreground, so the session ends it.
        session.start(QStringLiteral("xclip"), {"-quiet", "-selection", "clipboard", "-t", target,
                                                "-i", file.fileName()});
        return XSession::waitFor([&] {
            return session.output(QStringLiteral("xclip"),
                                  {"-o", "-selection", "clipboard", "-t", "TARGETS"})
                .contains(target);
        });
    }

private slots:
    // The date in a format, then a content whose caret goes back over a line break: the key
    // typed next lands where {{cursor}} was.
    void dateAndCursorInAQtClient() {
        XSession session;
        QVERIFY2(session.startWith({{";day", "{{date:yyyy-MM-dd}}"},
                                    {";p", "<p>\n{{cursor}}\n</p>"}},
                                   XSession::Target::QtClient),
                 qPrintable(session.log()));
        QVERIFY(type(session, QStringLiteral(";day ;p")));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(type(session, QStringLiteral("X")));
        expectShown(session, QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd ")) +
                                 QStringLiteral("<p>\nX\n</p>"));
    }

    // {{clipboard}} with nobody owning the clipboard, with text in it, and with only an image:
    // without text it types nothing, and Typolet says so.
    void clipboardTextOrNothing() {
        XSession session;
        QVERIFY2(session.startWith({{";cb", "[{{clipboard}}]"}}, XSession::Target::Terminal),
                 qPrintable(session.log()));
        QVERIFY(type(session, QStringLiteral(";cb")));
        QVERIFY(session.waitForExpansions(1));

        QVERIFY(offerClipboard(session, "from the clipboard", QStringLiteral("UTF8_STRING")));
        QVERIFY(session.focusTarget());
        QVERIFY(type(session, QStringLiteral(" ;cb")));
        QVERIFY(session.waitForExpansions(2));

        // Some bytes that claim to be a picture: the clipboard then offers no text at all.
        QVERIFY(offerClipboard(session, QByteArray("\x89PNG\r\n\x1a\n", 8),
                               QStringLiteral("image/png")));
        QVERIFY(session.focusTarget());
        QVERIFY(type(session, QStringLiteral(" ;cb")));
        expectShown(session, QStringLiteral("[] [from the clipboard] []"));
        QCOMPARE(session.typoletOutput().count(QLatin1String("The clipboard holds no text")), 2);
    }
};

QTEST_GUILESS_MAIN(PlaceholdersE2eTest)
#include "PlaceholdersE2eTest.moc"
