// Placeholders typed into real X clients: the date, the caret put back at {{cursor}} before
// the user's next key, and the clipboard as another program (xclip) holds it.
#include "XSession.h"

#include <QDate>
#include <QFile>
#include <QtTest>

class PlaceholdersE2eTest : public QObject {
    Q_OBJECT

    static bool type(XSession& session, const QString& text) {
        return session.run("xdotool", {"type", "--delay", "15", text});
    }
    static void expectShown(XSession& session, const QString& expected) {
        const QString actual =
            session.shownTextOnce([&](const QString& t) { return t == expected; });
        QVERIFY2(actual == expected, qPrintable(XSession::describeDifference(actual, expected) +
                                                "\nTypolet: " + session.typoletOutput().right(1500)));
    }
    // xclip owns the clipboard with `bytes` as `target` (kept in the foreground: the session
    // ends it); true once it answers.
    static bool offerClipboard(XSession& session, const QByteArray& bytes, const QString& target) {
        QFile file(session.file("clip"));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return false;
        file.close();
        session.start("xclip",
                      {"-quiet", "-selection", "clipboard", "-t", target, "-i", file.fileName()});
        return XSession::waitFor([&] {
            return session.output("xclip", {"-o", "-selection", "clipboard", "-t", "TARGETS"})
                .contains(target);
        });
    }

private slots:
    // The key typed after a content with {{cursor}} lands there, also across line breaks.
    void dateAndCursorInAQtClient() {
        XSession session;
        QVERIFY2(
            session.startWith({{";day", "{{date:yyyy-MM-dd}}"}, {";p", "<p>\n{{cursor}}\n</p>"}},
                              XSession::Target::QtClient),
            qPrintable(session.log()));
        // One command at a time: xdotool types through Typolet's own XTEST keyboard, whose keys
        // cannot be held while an expansion runs.
        QVERIFY(type(session, ";day"));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(type(session, " ;p"));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(type(session, "X"));
        expectShown(session, QDate::currentDate().toString("yyyy-MM-dd ") + "<p>\nX\n</p>");
    }

    // With no owner, with text, with only an image: without text it types nothing and says so.
    void clipboardTextOrNothing() {
        XSession session;
        QVERIFY2(session.startWith({{";cb", "[{{clipboard}}]"}}, XSession::Target::Terminal),
                 qPrintable(session.log()));
        QVERIFY(type(session, ";cb"));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(offerClipboard(session, "from the clipboard", "UTF8_STRING"));
        QVERIFY(session.focusTarget() && type(session, " ;cb"));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(offerClipboard(session, QByteArray("\x89PNG\r\n\x1a\n", 8), "image/png"));
        QVERIFY(session.focusTarget() && type(session, " ;cb"));
        expectShown(session, "[] [from the clipboard] []");
        QCOMPARE(session.typoletOutput().count("The clipboard holds no text"), 2);
    }

    // An owner that never answers holds nothing up for long: the placeholder is empty, and
    // one line says why.
    void clipboardOwnerThatNeverAnswers() {
        XSession session;
        QVERIFY2(session.startWith({{";cb", "[{{clipboard}}]"}}, XSession::Target::Terminal),
                 qPrintable(session.log()));
        QProcess* owner = session.start(TYPOLET_SILENT_CLIPBOARD_OWNER, {});
        QVERIFY(XSession::waitFor([&] { return owner->canReadLine(); }));
        QVERIFY(session.focusTarget() && type(session, ";cb"));
        expectShown(session, "[]");
        QCOMPARE(session.typoletOutput().count(
                     "The clipboard's owner did not answer within 1500 ms: a clipboard placeholder typed nothing"),
                 1);
    }
};

QTEST_GUILESS_MAIN(PlaceholdersE2eTest)
#include "PlaceholdersE2eTest.moc"
