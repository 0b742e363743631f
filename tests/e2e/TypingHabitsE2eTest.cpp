// People's typing habits against real X clients under Xvfb: held keys, lock keys, the keypad,
// other layouts, and typing on straight after a command. The typist presses keys by keycode
// as a keyboard does; with --own-keyboard it types on a keyboard of its own, which Typolet
// holds while an expansion runs, as it holds a person's real keyboard.
#include "XSession.h"

#include <QRegularExpression>
#include <QtTest>

namespace {
using Target = XSession::Target;

const QString thanks = QStringLiteral("Thank you");

QString repeated(const QString& pattern, int times) {
    QString text;
    for (int i = 0; i < times; ++i)
        text += pattern;
    return text;
}

} // namespace

class TypingHabitsE2eTest : public QObject {
    Q_OBJECT

    // What the target shows once `expansions` expansions are done, every key is handled, and
    // `done` accepts the text.
    static QString settled(XSession& session, int expansions,
                           const std::function<bool(const QString&)>& done) {
        session.waitForExpansions(expansions);
        return session.shownTextOnce(done);
    }

    static void expectSettled(XSession& session, int expansions, const QString& expected) {
        const QString actual =
            settled(session, expansions, [&](const QString& shown) { return shown == expected; });
        QVERIFY2(actual == expected,
                 qPrintable(XSession::describeDifference(actual, expected) + QStringLiteral("\nTypolet: ") +
                            session.typoletOutput().right(600)));
    }

private slots:
    // A held key repeats in the application; the buffer must follow every repeat.
    void heldKeysCountEveryRepeat() {
        XSession session;
        QVERIFY2(session.startWith({{";hi", "Hello World"}, {";aaa", "WRONG"}}, Target::GtkEntry),
                 qPrintable(session.log()));
        // BackSpace held until the entry is empty: the old command is gone with it.
        QVERIFY(session.typist({"text:x;hd", "down:BackSpace", "wait:1500", "up:BackSpace",
                                "text:i"}));
        // A held letter: ";" then a run of a's, then two more: not the command ";aaa".
        QVERIFY(session.typist({"text: ;", "down:a", "wait:1200", "up:a", "text:aa"}));
        // The buffer is right afterwards: a command still expands, erasing only itself.
        QVERIFY(session.typist({"text: ;hi"}));
        const QRegularExpression expected(QStringLiteral("^i ;a{6,} Hello World$"));
        const QString shown = settled(session, 1, [&](const QString& text) {
            return expected.match(text).hasMatch();
        });
        QVERIFY2(expected.match(shown).hasMatch(), qPrintable(shown));
    }

    // Content arrives as stored whatever is locked, and the locks stay as the user set them.
    void locksAndKeypad() {
        XSession session;
        const QString mixed = QStringLiteral("Mixed Case Text, 1.5 + 2");
        QVERIFY2(session.startWith({{";12", mixed}}, Target::GtkEntry), qPrintable(session.log()));
        QVERIFY(session.typist({"key:Caps_Lock", "text:;12", "text:x", "key:Caps_Lock"}));
        // Keypad digits with Num Lock on give the command; Num Lock stays on after.
        QVERIFY(session.typist({"key:Num_Lock", "key:semicolon", "key:KP_1", "key:KP_2",
                                "key:KP_3", "key:Num_Lock"}));
        expectSettled(session, 2, mixed + QStringLiteral("X") + mixed + QStringLiteral("3"));
    }

    // Commands with shifted characters and capitals, read with the layout's own levels.
    void otherLayouts_data() {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("command");
        QTest::newRow("de") << "de" << ";Sig";
        QTest::newRow("fr") << "fr" << ";Q1";
    }
    void otherLayouts() {
        QFETCH(QString, layout);
        QFETCH(QString, command);
        XSession session;
        const QString content = QStringLiteral("Grüße, Ça va? ß @ 100 %");
        QVERIFY2(session.startWith({{command, content}}, Target::GtkEntry),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral("setxkbmap"), {layout}));
        QVERIFY(session.typist({"text:" + command, "text:!"}));
        expectSettled(session, 1, content + QStringLiteral("!"));
    }

    // Keys typed straight after a command come after the content, in order, none lost.
    void fastTypists_data() {
        QTest::addColumn<Target>("target");
        QTest::addColumn<int>("interval");
        QTest::newRow("gtk 25/s") << Target::GtkEntry << 40;
        QTest::newRow("gtk 60/s") << Target::GtkEntry << 16;
        QTest::newRow("qt 60/s") << Target::QtClient << 16;
    }
    void fastTypists() {
        QFETCH(Target, target);
        QFETCH(int, interval);
        XSession session;
        QVERIFY2(session.startWith({{";ty", thanks}}, target), qPrintable(session.log()));
        QVERIFY(session.typist({"--own-keyboard", "--interval", QString::number(interval),
                                "text:;ty and ;ty$%^&*"}));
        expectSettled(session, 2, thanks + QStringLiteral(" and ") + thanks + QStringLiteral("$%^&*"));
    }

    void hundredExpansionsWithTypingBetween() {
        XSession session;
        const QString content = QStringLiteral("Best regards, Ada");
        QVERIFY2(session.startWith({{";sig", content}}, Target::QtClient),
                 qPrintable(session.log()));
        QVERIFY(session.typist({"--own-keyboard", "--interval", "10",
                                "text:" + repeated(QStringLiteral("w000 ;sig "), 100)}));
        expectSettled(session, 100, repeated(QStringLiteral("w000 ") + content + QLatin1Char(' '), 100));
    }

    // A command that waits for its word: ";sig" inside ";signature" stays out of its way, and
    // each character that ends a word, typed at once or after a moment, expands it and stays
    // after the content; BackSpace then gives back what was typed.
    void aCommandWaitsForItsWordToEnd_data() {
        QTest::addColumn<int>("interval");
        QTest::newRow("fast") << 15;
        QTest::newRow("steady") << 120;
    }
    void aCommandWaitsForItsWordToEnd() {
        QFETCH(int, interval);
        XSession session;
        QVERIFY2(session.startWith({{";sig", "Regards"}, {";signature", "Best regards, Ada"}},
                                   Target::Terminal, {";sig"}),
                 qPrintable(session.log()));
        QVERIFY(session.typist({"--own-keyboard", "--interval", QString::number(interval),
                                "text:;signature ;sig ;sig.;sig", "key:Tab", "text:;sig",
                                "key:Return", "text:;sign ;sig ", "key:BackSpace"}));
        expectSettled(session, 7,
                      QStringLiteral("Best regards, Ada Regards Regards.Regards\tRegards\n;sign ;sig "));
    }

    // Escape stops a long content; what was typed meanwhile still follows, once.
    void escapeCancelsALongContent() {
        XSession session;
        session.writeSetting(QStringLiteral("pasteLongSnippets"), false); // typed, key by key
        // Long enough that the X server is still taking its keys when Escape comes.
        const QString content = repeated(QStringLiteral("All work and no play. "), 2000);
        QVERIFY2(session.startWith({{";long", content}}, Target::QtClient),
                 qPrintable(session.log()));
        QVERIFY(session.typist({"--own-keyboard", "--interval", "20", "text:;long", "wait:150",
                                "key:Escape", "text:end"}));
        const QString shown = settled(session, 1, [](const QString& text) {
            return text.endsWith(QStringLiteral("end"));
        });
        QVERIFY2(shown.endsWith(QStringLiteral("end")) && shown.size() < content.size(),
                 qPrintable(shown.right(100)));
        QVERIFY(content.startsWith(shown.chopped(3)));
    }

    // A layout change while a long content is typed does not garble the rest of it.
    void layoutChangeDuringAnExpansion() {
        XSession session;
        session.writeSetting(QStringLiteral("pasteLongSnippets"), false); // typed, key by key
        const QString content = repeated(QStringLiteral("Zany yaks quiz; "), 200);
        QVERIFY2(session.startWith({{";zy", content}}, Target::QtClient),
                 qPrintable(session.log()));
        QVERIFY(session.typist({"text:;zy"}));
        QVERIFY(session.run(QStringLiteral("setxkbmap"), {QStringLiteral("de")}));
        expectSettled(session, 1, content);
    }
};

QTEST_GUILESS_MAIN(TypingHabitsE2eTest)
#include "TypingHabitsE2eTest.moc"
