// The Insert Snippet window in a real X session: opened over a GTK text view by the global key
// and by `typolet --insert`, it sends the chosen snippet into the view (a short one typed, a
// long one pasted with the user's clipboard given back), and Escape leaves the view as it was.
#include "XSession.h"

#include <QFile>
#include <QtTest>

namespace {
const QString kShort = QStringLiteral("12 Main Street, Springfield");

QString longText() {
    QString text;
    for (int i = 0; text.size() < 400; ++i)
        text += QStringLiteral("Line %1 of a long letter, with ümlauts — and more.\n").arg(i);
    return text;
}

QString trimmed(const QString& output) { return output.trimmed(); }
} // namespace

class InsertE2eTest : public QObject {
    Q_OBJECT

    // The insert window once it shows and has the keyboard focus; empty if it never does.
    static QString focusedInsertWindow(XSession& session) {
        QString window;
        XSession::waitFor([&] {
            window = trimmed(session.output(
                QStringLiteral("xdotool"), {"search", "--onlyvisible", "--name", "^Insert Snippet$"}));
            return !window.isEmpty() && !window.contains(u'\n') &&
                   trimmed(session.output(QStringLiteral("xdotool"), {"getwindowfocus"})) == window;
        }, 20000);
        return window;
    }
    static bool insertWindowGone(XSession& session) {
        return XSession::waitFor([&] {
            return trimmed(session.output(QStringLiteral("xdotool"),
                                          {"search", "--onlyvisible", "--name",
                                           "^Insert Snippet$"}))
                .isEmpty();
        }, 20000);
    }
    static bool targetFocused(XSession& session) {
        return XSession::waitFor([&] {
            return trimmed(session.output(QStringLiteral("xdotool"), {"getwindowfocus"})) ==
                   session.targetWindow();
        }, 5000);
    }

private slots:
    void insertsIntoTheWindowThatHadTheFocus() {
        XSession session;
        QVERIFY(session.isRunning());
        session.addEnvironment("XDG_STATE_HOME=" + session.file("state"));
        // What the user copied earlier, served by xclip, must be there after the paste.
        const QByteArray before = QStringLiteral("copied earlier: naïve").toUtf8();
        QFile copied(session.file("copied"));
        QVERIFY(copied.open(QIODevice::WriteOnly) && copied.write(before) == before.size());
        copied.close();
        session.start(QStringLiteral("xclip"), {"-quiet", "-selection", "clipboard", "-i",
                                                session.file("copied")});
        QVERIFY(XSession::waitFor([&] { return session.clipboardText() == before; }));
        const QString letter = longText();
        QVERIFY2(session.startWith({{";addr", kShort}, {";letter", letter}},
                                   XSession::Target::GtkTextView),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", "To: "}));
        QVERIFY(XSession::waitFor([&] { return session.shownText() == "To: "; }));

        // The global key, a query and Return: the short content is typed, nothing erased.
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "ctrl+alt+period"}));
        QVERIFY2(!focusedInsertWindow(session).isEmpty(), qPrintable(session.typoletOutput()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", "main str"}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "Return"}));
        QString expected = "To: " + kShort;
        QString shown = session.shownTextOnce([&](const QString& t) { return t == expected; });
        QVERIFY2(shown == expected, qPrintable(XSession::describeDifference(shown, expected) +
                                               session.typoletOutput().right(1500)));
        QVERIFY(targetFocused(session));

        // A long one is pasted, and the clipboard holds what it held before.
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "ctrl+alt+period"}));
        QVERIFY(!focusedInsertWindow(session).isEmpty());
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", ";letter"}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "Return"}));
        expected += letter;
        shown = session.shownTextOnce([&](const QString& t) { return t == expected; });
        QVERIFY2(shown == expected, qPrintable(XSession::describeDifference(shown, expected)));
        QVERIFY2(session.typoletOutput().contains("Pasting with Ctrl+V"),
                 qPrintable(session.typoletOutput().right(1500)));
        QVERIFY(XSession::waitFor([&] { return session.clipboardText() == before; }));

        // Escape: the view keeps its text and the focus.
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "ctrl+alt+period"}));
        QVERIFY(!focusedInsertWindow(session).isEmpty());
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", "addr"}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "Escape"}));
        QVERIFY(insertWindowGone(session));
        QVERIFY(targetFocused(session));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", "!"}));
        expected += "!";
        shown = session.shownTextOnce([&](const QString& t) { return t == expected; });
        QVERIFY2(shown == expected, qPrintable(XSession::describeDifference(shown, expected)));

        // Both insertions were counted, on this computer only.
        QVERIFY(XSession::waitFor([&] {
            return XSession::readText(session.file("state/Typolet/usage.json"))
                       .count(QStringLiteral("\"count\":1")) == 2;
        }, 10000));
    }

    // A second launch with --insert opens the running Typolet's window and ends.
    void insertOptionOpensTheRunningWindow() {
        XSession session;
        QVERIFY(session.isRunning());
        session.addEnvironment("XDG_STATE_HOME=" + session.file("state"));
        QVERIFY2(session.startWith({{";addr", kShort}}, XSession::Target::GtkTextView),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral(TYPOLET_EXECUTABLE), {"--insert"}));
        QVERIFY2(!focusedInsertWindow(session).isEmpty(), qPrintable(session.typoletOutput()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "Return"}));
        const QString shown = session.shownTextOnce([&](const QString& t) { return t == kShort; });
        QVERIFY2(shown == kShort, qPrintable(XSession::describeDifference(shown, kShort)));
        QCOMPARE(session.typolet()->state(), QProcess::Running);
    }
};

QTEST_GUILESS_MAIN(InsertE2eTest)
#include "InsertE2eTest.moc"
