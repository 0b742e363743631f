// A content with form fields in a real X session: the command typed into a GTK text view is
// erased, the form opens and takes the keyboard, and Return types the content with the values
// into the view; Escape puts the command back as it was typed. Keys typed into the form never
// reach the view; keys typed for the view before the form has the keyboard, or right after it
// is done, come after what the form's answer types.
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

private slots:
    void filledOrPutBack() {
        XSession session;
        QVERIFY(session.isRunning());
        QVERIFY2(session.startWith({{";dear", "Dear {{field:Name}}, {{choice:Tone=hi|bye}} "
                                              "{{field:Name}}!"},
                                    {";sig", "Ada"}},
                                   XSession::Target::GtkTextView, {";sig"}),
                 qPrintable(session.log()));
        // A key typed on at once, before the form can have the focus: held, and typed after
        // the content. On a keyboard of its own, as a person types: xdotool's keys come through
        // Typolet's own XTEST keyboard, which is never held. (That keyboard keeps its focus on
        // the view when the form takes the core keyboard's, so only a key typed before then
        // tells anything here.)
        QVERIFY(session.typist({"--own-keyboard", "--interval", "1", "text:To: ;dear,"}));
        QVERIFY2(!focusedForm(session).isEmpty(), qPrintable(session.typoletOutput().right(1500)));
        expectShown(session, "To: "); // the command is gone before the form opens
        // A command typed into the form is the form's text, and expands nowhere.
        QVERIFY(xdotool(session, {"type", "--delay", "15", "Ann ;sig "}));
        QVERIFY(xdotool(session, {"key", "BackSpace", "Tab", "Down", "Return"}));
        expectShown(session, "To: Dear Ann ;sig, bye Ann ;sig!,");
        QVERIFY(targetFocused(session));

        // Escape: the command comes back as it was typed, and the view keeps the focus.
        QVERIFY(xdotool(session, {"type", "--delay", "15", " ;dear"}));
        QVERIFY(!focusedForm(session).isEmpty());
        QVERIFY(xdotool(session, {"type", "--delay", "15", "Bo"}));
        // Typed on at once: the key waits for the command to be typed back.
        QVERIFY(session.typist({"--own-keyboard", "key:Escape", "key:period"}));
        expectShown(session, "To: Dear Ann ;sig, bye Ann ;sig!, ;dear.");
        QVERIFY(targetFocused(session));
        QVERIFY2(!session.typoletOutput().contains("Key pressed: B"),
                 "the form's keys were taken for typing");
    }

    // The window typed in is gone when the form is done: nothing is typed anywhere; the filled
    // content, or the command of a dismissed form, is on the clipboard and the form says so.
    void focusCannotComeBack_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("onClipboard");
        QTest::addColumn<QString>("logged");
        QTest::newRow("filled") << "Return" << QByteArray("Dear Zoe!")
                                << "the snippet went to the clipboard";
        QTest::newRow("dismissed")
            << "Escape" << QByteArray(";dear") << "the erased command went to the clipboard";
    }
    void focusCannotComeBack() {
        QFETCH(QString, key);
        QFETCH(QByteArray, onClipboard);
        QFETCH(QString, logged);
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
        QVERIFY(xdotool(session, {"key", key}));
        QVERIFY2(XSession::waitFor([&] { return session.clipboardText() == onClipboard; }, 20000),
                 qPrintable(session.typoletOutput().right(1500)));
        QVERIFY(!focusedForm(session).isEmpty()); // open again, with the note
        QVERIFY(session.typoletOutput().contains(logged));
    }
};

QTEST_GUILESS_MAIN(FillInE2eTest)
#include "FillInE2eTest.moc"
