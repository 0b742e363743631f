// A content with form fields in a real X session: the command typed into a GTK text view is
// erased, the form opens and takes the keyboard, and Return types the content with the values
// into the view; Escape puts the command back as it was typed. Keys typed into the form never
// reach the view.
#include "XSession.h"

#include <QtTest>

namespace {
QString trimmed(const QString& output) {
    return output.trimmed();
}
} // namespace

class FillInE2eTest : public QObject {
    Q_OBJECT

    static bool xdotool(XSession& session, const QStringList& arguments) {
        return session.run(QStringLiteral("xdotool"), arguments);
    }
    // The form once it shows and has the keyboard focus; empty if it never does.
    static QString focusedForm(XSession& session) {
        QString window;
        XSession::waitFor([&] {
            window = trimmed(session.output(QStringLiteral("xdotool"),
                                            {"search", "--onlyvisible", "--name", "^Fill In"}));
            return !window.isEmpty() && !window.contains(u'\n') &&
                   trimmed(session.output(QStringLiteral("xdotool"), {"getwindowfocus"})) == window;
        }, 20000);
        return window;
    }
    static bool targetFocused(XSession& session) {
        return XSession::waitFor([&] {
            return trimmed(session.output(QStringLiteral("xdotool"), {"getwindowfocus"})) ==
                   session.targetWindow();
        }, 5000);
    }
    static void expectShown(XSession& session, const QString& expected) {
        const QString shown =
            session.shownTextOnce([&](const QString& text) { return text == expected; });
        QVERIFY2(shown == expected, qPrintable(XSession::describeDifference(shown, expected) +
                                               "\nTypolet: " +
                                               session.typoletOutput().right(1500)));
    }

    static QByteArray clipboard(XSession& session) {
        QProcess xclip;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), session.display());
        xclip.setProcessEnvironment(env);
        xclip.start(QStringLiteral("xclip"), {"-selection", "clipboard", "-o"});
        // The event loop runs meanwhile: Typolet is the one answering.
        XSession::waitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000);
        return xclip.readAllStandardOutput();
    }

private slots:
    void filledOrPutBack() {
        XSession session;
        QVERIFY(session.isRunning());
        QVERIFY2(session.startWith({{";dear", "Dear {{field:Name}}, {{choice:Tone=hi|bye}} "
                                              "{{field:Name}}!"},
                                    {";sig", "Ada"}},
                                   XSession::Target::GtkTextView, {";sig"}),
                 qPrintable(session.log()));
        QVERIFY(xdotool(session, {"type", "--delay", "15", "To: ;dear"}));
        QVERIFY2(!focusedForm(session).isEmpty(), qPrintable(session.typoletOutput().right(1500)));
        expectShown(session, "To: "); // the command is gone before the form opens
        // A command typed into the form is the form's text, and expands nowhere.
        QVERIFY(xdotool(session, {"type", "--delay", "15", "Ann ;sig "}));
        QVERIFY(xdotool(session, {"key", "BackSpace", "Tab", "Down", "Return"}));
        expectShown(session, "To: Dear Ann ;sig, bye Ann ;sig!");
        QVERIFY(targetFocused(session));

        // Escape: the command comes back as it was typed, and the view keeps the focus.
        QVERIFY(xdotool(session, {"type", "--delay", "15", " ;dear"}));
        QVERIFY(!focusedForm(session).isEmpty());
        QVERIFY(xdotool(session, {"type", "--delay", "15", "Bo"}));
        QVERIFY(xdotool(session, {"key", "Escape"}));
        QVERIFY(targetFocused(session));
        // The command is typed back once the view has the focus again; keys typed before it is
        // back are not held for it yet, so the next key waits for it here.
        expectShown(session, "To: Dear Ann ;sig, bye Ann ;sig! ;dear");
        QVERIFY(xdotool(session, {"type", "--delay", "15", "."}));
        expectShown(session, "To: Dear Ann ;sig, bye Ann ;sig! ;dear.");
        QVERIFY2(!session.typoletOutput().contains("Key pressed: B"),
                 "the form's keys were taken for typing");
    }

    // The window typed in is gone when the form is done: nothing is typed anywhere, the filled
    // content is on the clipboard and the form says so.
    void focusCannotComeBack() {
        XSession session;
        QVERIFY(session.isRunning());
        QVERIFY2(session.startWith({{";dear", "Dear {{field:Name}}!"}},
                                   XSession::Target::GtkTextView),
                 qPrintable(session.log()));
        QVERIFY(xdotool(session, {"type", "--delay", "15", ";dear"}));
        const QString form = focusedForm(session);
        QVERIFY2(!form.isEmpty(), qPrintable(session.typoletOutput().right(1500)));
        session.target()->kill();
        QVERIFY(session.target()->waitForFinished(10000));
        QVERIFY(xdotool(session, {"type", "--delay", "15", "Zoe"}));
        QVERIFY(xdotool(session, {"key", "Return"}));
        QVERIFY2(XSession::waitFor([&] { return clipboard(session) == "Dear Zoe!"; }, 20000),
                 qPrintable(session.typoletOutput().right(1500)));
        QVERIFY(!focusedForm(session).isEmpty()); // open again, with the note
        QVERIFY(session.typoletOutput().contains("the snippet went to the clipboard"));
    }
};

QTEST_GUILESS_MAIN(FillInE2eTest)
#include "FillInE2eTest.moc"
