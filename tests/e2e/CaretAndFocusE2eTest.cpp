// What the user typed before the caret moved is never erased: a command is completed only by
// keys typed right before the caret, against real clients (a GTK 3 text view and xterm), typed
// by a second keyboard and by xdotool.
#include "XSession.h"

#include <QtTest>

#include <csignal>

namespace {
using Target = XSession::Target;

const QString regards = QStringLiteral("Best regards");

// Runs typist actions ("text:abc", "key:Home", "down:Control_L", "up:Control_L") on a
// keyboard of the typist's own, or as the same presses through xdotool (the core XTEST
// keyboard, as on-screen keyboards and VNC servers type).
bool perform(XSession& session, bool ownKeyboard, const QStringList& actions) {
    if (ownKeyboard)
        return session.typist(QStringList{QStringLiteral("--own-keyboard"), QStringLiteral("--interval"),
                                          QStringLiteral("30")} + actions);
    for (const QString& action : actions) {
        const QString verb = action.section(QLatin1Char(':'), 0, 0);
        const QString value = action.section(QLatin1Char(':'), 1);
        const QStringList arguments =
            verb == QLatin1String("text")
                ? QStringList{QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), value}
                : QStringList{verb == QLatin1String("key")    ? QStringLiteral("key")
                              : verb == QLatin1String("down") ? QStringLiteral("keydown")
                                                              : QStringLiteral("keyup"),
                              value};
        if (!session.run(QStringLiteral("xdotool"), arguments))
            return false;
    }
    return true;
}

struct CaretCase {
    const char* name;
    QStringList actions;
    QString shown; // what the text view holds afterwards
};

// The rows of the report that found it: each key moved the caret or changed text elsewhere,
// and the command's last letters typed after it completed nothing.
const QList<CaretCase> caretCases = {
    {"Return", {"text:keep this line ;s", "key:Return", "text:ig"}, "keep this line ;s\nig"},
    {"Home", {"text:first line", "key:Return", "text:;si", "key:Home", "text:g"}, "first line\ng;si"},
    {"Left", {"text:abc ;s", "key:Left", "text:ig"}, "abc ;igs"},
    {"Delete", {"text:ab;si", "key:Delete", "text:ig"}, "ab;siig"},
    {"Up", {"text:first line", "key:Return", "text:line two ;s", "key:Up", "text:ig"},
     "first lineig\nline two ;s"},
};
} // namespace

class CaretAndFocusE2eTest : public QObject {
    Q_OBJECT

private slots:
    void noCommandIsCompletedAcrossACaretKey_data() {
        QTest::addColumn<Target>("target");
        QTest::addColumn<bool>("ownKeyboard");
        QTest::newRow("gtk, second keyboard") << Target::GtkTextView << true;
        QTest::newRow("gtk, xdotool") << Target::GtkTextView << false;
        QTest::newRow("xterm, second keyboard") << Target::Terminal << true;
        QTest::newRow("xterm, xdotool") << Target::Terminal << false;
    }
    void noCommandIsCompletedAcrossACaretKey() {
        QFETCH(Target, target);
        QFETCH(bool, ownKeyboard);
        XSession session;
        QVERIFY2(session.startWith({{";sig", regards}}, target), qPrintable(session.log()));
        if (target == Target::GtkTextView) {
            for (const CaretCase& c : caretCases) {
                // Select all and delete: a fresh text for each case.
                QVERIFY(perform(session, ownKeyboard,
                                {"down:Control_L", "key:a", "up:Control_L", "key:Delete"}));
                QVERIFY(perform(session, ownKeyboard, c.actions));
                const QString mismatch = session.mismatch(c.shown);
                QVERIFY2(mismatch.isEmpty(), qPrintable(QStringLiteral("%1: ").arg(c.name) + mismatch));
            }
            return;
        }
        // A terminal sends what each key gives on: every case in a row, then a command that
        // does expand, to know that every key before it has been handled.
        for (const CaretCase& c : caretCases)
            QVERIFY(perform(session, ownKeyboard, c.actions));
        QVERIFY(perform(session, ownKeyboard, {"text: ;sig"}));
        const QString shown = session.shownTextOnce(
            [](const QString& text) { return text.endsWith(QStringLiteral(" ") + regards); });
        QVERIFY2(shown.endsWith(QStringLiteral(" ") + regards), qPrintable(shown));
        const QByteArray bytes = XSession::readText(session.file(QStringLiteral("received"))).toUtf8();
        // Only the last command was erased: its four characters, nothing of the cases before.
        QCOMPARE(bytes.count(regards.toUtf8()), 1);
        QCOMPARE(bytes.count('\x7f') + bytes.count('\b'), 4);
    }

    // Expanded in one text view, the focus then moves to another (by a program, or by a
    // window manager's Alt+Tab): BackSpace there takes one character, and nothing of the first
    // view changes.
    void anUndoStaysWhereTheExpansionWent_data() {
        QTest::addColumn<bool>("altTab");
        QTest::addColumn<bool>("ownKeyboard");
        QTest::newRow("program, second keyboard") << false << true;
        QTest::newRow("program, xdotool") << false << false;
        QTest::newRow("Alt+Tab, second keyboard") << true << true;
        QTest::newRow("Alt+Tab, xdotool") << true << false;
    }
    void anUndoStaysWhereTheExpansionWent() {
        QFETCH(bool, altTab);
        QFETCH(bool, ownKeyboard);
        XSession session;
        QVERIFY2(session.startWith({{";sig", regards}}, Target::GtkTextView), qPrintable(session.log()));
        const QString first = session.targetWindow();
        const QString secondFile = session.file(QStringLiteral("second"));
        QVERIFY(session.startGtkTextView({QStringLiteral("--out"), secondFile, QStringLiteral("--title"),
                                          QStringLiteral("second")}));
        const QString second = session.targetWindow();
        const auto secondShows = [&](const QString& expected) {
            return XSession::waitFor([&] { return XSession::readText(secondFile) == expected; });
        };
        const QString notes = QStringLiteral("important notes here");
        QVERIFY(session.focus(second));
        QVERIFY(perform(session, ownKeyboard, {"text:" + notes}));
        QVERIFY(secondShows(notes));

        QVERIFY(session.focus(first));
        QVERIFY(perform(session, ownKeyboard, {QStringLiteral("text:;sig")}));
        QVERIFY(session.waitForExpansions(1));
        QCOMPARE(session.shownTextOnce([](const QString& text) { return text == regards; }), regards);
        if (altTab) {
            QProcess* switcher = session.start(QStringLiteral(TYPOLET_WINDOW_SWITCHER), {first, second});
            QVERIFY(XSession::waitFor([&] { return switcher->canReadLine(); }));
            QVERIFY(session.run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("alt+Tab")}));
            QVERIFY(XSession::waitFor([&] {
                return session.output(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus")}).trimmed() == second;
            }));
        } else {
            QVERIFY(session.focus(second));
        }
        QVERIFY(perform(session, ownKeyboard, {QStringLiteral("key:BackSpace")}));
        const QString expected = notes.chopped(1);
        QVERIFY2(secondShows(expected), qPrintable(XSession::readText(secondFile) + QStringLiteral("\nTypolet: ") +
                                                   session.typoletOutput().right(800)));
        QCOMPARE(session.shownText(), regards);
    }

    // Another program typing through the core XTEST keyboard (xdotool here, as on-screen
    // keyboards and VNC servers do) is the user: a command that waits for its word to end
    // expands for its keys too, in a text view and in a terminal.
    void aWaitingCommandExpandsForAnotherProgramsKeys_data() {
        QTest::addColumn<Target>("target");
        QTest::newRow("gtk") << Target::GtkTextView;
        QTest::newRow("xterm") << Target::Terminal;
    }
    void aWaitingCommandExpandsForAnotherProgramsKeys() {
        QFETCH(Target, target);
        XSession session;
        QVERIFY2(session.startWith({{";addr", QStringLiteral("1 Main St")}}, target, {";addr"}),
                 qPrintable(session.log()));
        QVERIFY(perform(session, false, {QStringLiteral("text:;addr next")}));
        const QString mismatch = session.mismatch(QStringLiteral("1 Main St next"));
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
    }

    // A key held back while a command waits for its word to end belongs to the view it was
    // typed in: when a program moves the focus before Typolet lets the key go, the other view
    // never gets it. Typolet is stopped for a moment so that the key is surely held when the
    // focus moves.
    void aHeldKeyNeverReachesAnotherWindow() {
        XSession session;
        QVERIFY2(session.startWith({{";addr", QStringLiteral("1 Main St")}}, Target::GtkTextView,
                                   {";addr"}),
                 qPrintable(session.log()));
        const QString first = session.targetWindow();
        const QString secondFile = session.file(QStringLiteral("second"));
        QVERIFY(session.startGtkTextView({QStringLiteral("--out"), secondFile, QStringLiteral("--title"),
                                          QStringLiteral("second")}));
        const QString second = session.targetWindow();
        const QString notes = QStringLiteral("notes");
        QVERIFY(session.focus(second));
        QVERIFY(perform(session, true, {"text:" + notes}));
        QVERIFY(XSession::waitFor([&] { return XSession::readText(secondFile) == notes; }));

        QVERIFY(session.focus(first));
        QVERIFY(perform(session, true, {QStringLiteral("text:;addr")}));
        QVERIFY(XSession::waitFor(
            [&] { return session.typoletOutput().contains(QLatin1String("Waiting for a word to end")); }));
        const qint64 pid = session.typolet()->processId();
        QCOMPARE(::kill(static_cast<pid_t>(pid), SIGSTOP), 0);
        auto resume = qScopeGuard([pid] { ::kill(static_cast<pid_t>(pid), SIGCONT); });
        QVERIFY(perform(session, true, {QStringLiteral("text:x")}));
        QVERIFY(session.focus(second));
        QCOMPARE(::kill(static_cast<pid_t>(pid), SIGCONT), 0);
        resume.dismiss();
        QVERIFY(XSession::waitFor(
            [&] { return session.typoletOutput().contains(QLatin1String("Focus changed")); }));
        // Anything let go would reach the second view now: give it the time to arrive.
        QVERIFY(perform(session, true, {QStringLiteral("text:!")}));
        const QString expected = notes + QStringLiteral("!");
        QVERIFY2(XSession::waitFor([&] { return XSession::readText(secondFile) == expected; }),
                 qPrintable(XSession::readText(secondFile) + QStringLiteral("\nTypolet: ") +
                            session.typoletOutput().right(800)));
        QCOMPARE(session.shownText(), QStringLiteral(";addr"));
    }

    // Keys typed while Typolet cannot run (stopped, as under memory pressure) are read late,
    // all at once: the command among them is text the user typed on from, not a fresh one.
    void keysTypedWhileTypoletWasStoppedEraseNothing() {
        XSession session;
        QVERIFY2(session.startWith({{";sig", regards}}, Target::GtkTextView), qPrintable(session.log()));
        QVERIFY(perform(session, true, {QStringLiteral("text:keep ")}));
        const qint64 pid = session.typolet()->processId();
        QCOMPARE(::kill(static_cast<pid_t>(pid), SIGSTOP), 0);
        const auto resume = qScopeGuard([pid] { ::kill(static_cast<pid_t>(pid), SIGCONT); });
        QVERIFY(perform(session, true, {QStringLiteral("text:;sig and more")}));
        const QString typed = QStringLiteral("keep ;sig and more");
        QCOMPARE(session.shownTextOnce([&](const QString& text) { return text == typed; }), typed);
        // Stopped for well over a second, as the user typed on.
        QThread::msleep(1500);
        QCOMPARE(::kill(static_cast<pid_t>(pid), SIGCONT), 0);
        QVERIFY(perform(session, true, {QStringLiteral("text: ;sig")}));
        const QString mismatch = session.mismatch(typed + QStringLiteral(" ") + regards);
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
    }
};

QTEST_GUILESS_MAIN(CaretAndFocusE2eTest)
#include "CaretAndFocusE2eTest.moc"
