// Typing commands into real X clients under Xvfb and checking what the clients received.
#include "XSession.h"

#include <QSettings>
#include <QtTest>

namespace {
using Snippets = QList<std::pair<QString, QString>>;

QString repeatedTo(const QString& pattern, int length) {
    QString text;
    while (text.size() < length)
        text += pattern;
    return text.left(length);
}

// Prose in a script the US layout lacks, each letter typed through a spare keycode; few
// enough different letters that the spare keys hold them all at once.
QString otherScripts(int length) {
    return repeatedTo(QStringLiteral("Съешь же ещё этих мягких французских булок, да выпей чаю. "
                                     "Широкая электрификация южных губерний даст мощный толчок "
                                     "подъёму сельского хозяйства. "),
                      length);
}

// Characters of several scripts, cycled so that there are far more different ones than spare
// keycodes: the typing must rebind keycodes batch after batch.
QString manyScripts(int length) {
    QString text;
    for (int i = 0; text.size() < length; ++i) {
        const char32_t ranges[][2] = {{0x0430, 0x044F}, {0x03B1, 0x03C9}, {0x05D0, 0x05EA},
                                      {0x4E00, 0x4E80}, {0x3042, 0x3093}, {0x0905, 0x0939}};
        const auto& range = ranges[i % 6];
        const char32_t c = range[0] + char32_t(i * 7) % (range[1] - range[0] + 1);
        text += QString::fromUcs4(&c, 1);
        if (i % 9 == 8)
            text += QLatin1Char(' ');
    }
    return text.left(length);
}
} // namespace

class ExpansionE2eTest : public QObject {
    Q_OBJECT

    // Starts a server, Typolet with `snippets`, and a focused target.
    static bool prepare(XSession& session, const Snippets& snippets, bool qtClient = false) {
        const bool started = session.startWith(
            snippets, qtClient ? XSession::Target::QtClient : XSession::Target::Terminal);
        if (!started)
            qWarning().noquote() << session.log();
        return started;
    }

    // Waits until the target shows `expected`; on timeout says where it differs.
    static void expectShown(XSession& session, const QString& expected) {
        const QString actual =
            session.shownTextOnce([&](const QString& text) { return text == expected; });
        QVERIFY2(actual == expected, qPrintable(XSession::describeDifference(actual, expected)));
    }

    static bool keys(XSession& session, const QStringList& names) {
        return session.run(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} + names);
    }

    static bool type(XSession& session, const QString& text) {
        return session.run(QStringLiteral("xdotool"),
                           {QStringLiteral("type"), QStringLiteral("--delay"),
                            QStringLiteral("15"), text});
    }

private slots:
    // BackSpace straight after an expansion gives the command back, in the Qt client and in
    // a terminal; the next BackSpace is an ordinary one.
    void backspaceUndoesAnExpansion_data() {
        QTest::addColumn<bool>("qtClient");
        QTest::newRow("terminal") << false;
        QTest::newRow("Qt client") << true;
    }
    void backspaceUndoesAnExpansion() {
        QFETCH(bool, qtClient);
        XSession session;
        QVERIFY(prepare(session, {{";sig", "Best regards,\nAda"}}, qtClient));
        QVERIFY(type(session, QStringLiteral("x ;sig")));
        // BackSpace undoes only within three seconds: no long wait for quiet on a busy machine.
        QVERIFY(session.waitForExpansions(1, 50));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "BackSpace"}));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "BackSpace"}));
        expectShown(session, QStringLiteral("x ;si"));
    }

    // A click may move the caret: what was typed before it never completes a command.
    void aClickBetweenKeysStopsTheCommand() {
        XSession session;
        QVERIFY(prepare(session, {{";sig", "Regards"}}, true));
        QVERIFY(type(session, QStringLiteral(";si")));
        // In the text, past its end: the caret stays at the end.
        QVERIFY(session.run(QStringLiteral("xdotool"), {"mousemove", "200", "150", "click", "1"}));
        QVERIFY(type(session, QStringLiteral("g ;sig")));
        expectShown(session, QStringLiteral(";sig Regards"));
    }

    void plainSnippetReplacesItsCommand() {
        XSession session;
        QVERIFY(prepare(session, {{";addr", "12 Main Street, Springfield"}}));
        QVERIFY(type(session, QStringLiteral("to ;addr")));
        expectShown(session, QStringLiteral("to 12 Main Street, Springfield"));
        QVERIFY2(session.typoletOutput().contains(QStringLiteral("Match found: ';addr' -> '")),
                 qPrintable(session.typoletOutput()));
        // No D-Bus session, so no accessibility bus: said once, and nothing else changes.
        QCOMPARE(session.typoletOutput().count(QStringLiteral("Password fields cannot be recognised")),
                 1);
    }

    void commandWithCombiningMarkTypedThroughDeadKey() {
        XSession session;
        // Stored decomposed (e + COMBINING ACUTE); the dead key gives the precomposed é, which
        // is the same character.
        QVERIFY(prepare(session, {{QStringLiteral(";cafe\u0301"), QStringLiteral("Crème brûlée")}}));
        // The layout changes while Typolet runs; the next keys must be read with it.
        QVERIFY(session.run(QStringLiteral("setxkbmap"),
                            {QStringLiteral("-layout"), QStringLiteral("us"),
                             QStringLiteral("-variant"), QStringLiteral("intl")}));
        QVERIFY(keys(session, {"semicolon", "c", "a", "f", "dead_acute", "e"}));
        expectShown(session, QStringLiteral("Crème brûlée"));
    }

    void heldShiftDoesNotChangeTheContent() {
        XSession session;
        QVERIFY(prepare(session, {{";X", "Hello World, 12 main street"}}));
        // The command's capital is typed with Shift, which is still held while the content
        // goes out: the content arrives as stored.
        QVERIFY(keys(session, {"semicolon"}));
        QVERIFY(session.run(QStringLiteral("xdotool"),
                            {QStringLiteral("keydown"), QStringLiteral("Shift_L")}));
        QVERIFY(keys(session, {"x"}));
        expectShown(session, QStringLiteral("Hello World, 12 main street"));
        // Still held, the user's next key is shifted; let go, the one after is plain.
        QVERIFY(keys(session, {"y"}));
        QVERIFY(session.run(QStringLiteral("xdotool"),
                            {QStringLiteral("keyup"), QStringLiteral("Shift_L")}));
        QVERIFY(keys(session, {"z"}));
        expectShown(session, QStringLiteral("Hello World, 12 main streetYz"));
    }

    void contentEndingWithAnotherCommandDoesNotExpandAgain() {
        XSession session;
        QVERIFY(prepare(session, {{";a1", "see ;b2"}, {";b2", "WRONG"}}));
        QVERIFY(type(session, QStringLiteral(";a1")));
        expectShown(session, QStringLiteral("see ;b2"));
        // A key typed afterwards arrives after anything a second expansion would have posted.
        QVERIFY(keys(session, {"period"}));
        expectShown(session, QStringLiteral("see ;b2."));
        QCOMPARE(session.typoletOutput().count(QStringLiteral("Match found:")), 1);
    }

    // The content arrives exactly, in a terminal and in a Qt client, typed key by key: line
    // breaks and tabs, other scripts through spare keycodes, more different characters than
    // there are spare keys, and long texts whose keys must stay in order.
    void contentArrivesExactly_data() {
        QTest::addColumn<bool>("qtClient");
        QTest::addColumn<QString>("content");
        QTest::newRow("lines and tabs")
            << false << QStringLiteral("Best regards,\nAda Lovelace\n\tAnalytical Engines Ltd");
        QTest::newRow("unicode") << false << QStringLiteral("café — 日本語 🙂");
        QTest::newRow("long latin")
            << false
            << repeatedTo(QStringLiteral("The quick brown fox jumps over the lazy dog; 0123456789! "),
                          1000);
        QTest::newRow("long latin, Qt")
            << true
            << repeatedTo(QStringLiteral("Pack my box with five dozen liquor jugs, said Zoë. "), 1000);
        QTest::newRow("other scripts") << false << otherScripts(1000);
        QTest::newRow("other scripts, Qt") << true << otherScripts(1000);
        QTest::newRow("more characters than spare keys") << false << manyScripts(200);
    }
    void contentArrivesExactly() {
        QFETCH(bool, qtClient);
        QFETCH(QString, content);
        XSession session;
        session.writeSetting(QStringLiteral("pasteLongSnippets"), false); // typed, key by key
        QVERIFY(prepare(session, {{";c", content}}, qtClient));
        QVERIFY(type(session, QStringLiteral(";c")));
        expectShown(session, content);
    }

    // A command typed into Typolet's own window is text for its field, while the same command
    // typed in another application expands.
    void nothingExpandsInTypoletsOwnWindow() {
        XSession session;
        QVERIFY(prepare(session, {{";sig", "Best regards"}}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "30", ";sig"}));
        expectShown(session, QStringLiteral("Best regards"));

        QVERIFY(session.run(QStringLiteral("xdotool"),
                            {"search", "--onlyvisible", "--name", "^Typolet$", "windowfocus"}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "30", ";sig"}));
        QVERIFY2(XSession::waitFor([&] {
                     return session.typoletOutput().count(QLatin1String("ignored")) >= 4;
                 }),
                 qPrintable(session.typoletOutput().right(1500)));
        QCOMPARE(session.typoletOutput().count(QLatin1String("Match found")), 1);
    }

    // An application the user excluded (an xterm with a class of its own) gets no expansion,
    // while a GTK field still does.
    void anExcludedApplicationGetsNoExpansion() {
        XSession session;
        session.writeSnippets({{";sig", "Best regards"}});
        QSettings(session.file(QStringLiteral("Typolet/Typolet.conf")), QSettings::NativeFormat)
            .setValue(QStringLiteral("excludedApplications"), QStringList{"NoSnippets"});
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        QVERIFY(session.startTerminal(session.file(QStringLiteral("excluded")),
                                      QStringLiteral("NoSnippets")));
        QVERIFY(session.focusTarget());
        QVERIFY(type(session, QStringLiteral(";sig")));
        QVERIFY2(XSession::waitFor([&] {
                     return session.typoletOutput().count("in an excluded application") >= 4;
                 }),
                 qPrintable(session.typoletOutput().right(1500)));
        QVERIFY(!session.typoletOutput().contains(QLatin1String("Match found")));

        QVERIFY(session.startGtkEntry());
        QVERIFY(session.focusTarget());
        QVERIFY(type(session, QStringLiteral(";sig")));
        QVERIFY(session.waitForExpansions(1));
        QCOMPARE(session.gtkEntryText(), QStringLiteral("Best regards"));
    }

    // Ctrl+Alt+Space pauses and resumes from any application, which never sees the keys.
    void ctrlAltSpacePausesFromAnywhere() {
        XSession session;
        QVERIFY(prepare(session, {{";sig", "Best regards"}}));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "ctrl+alt+space"}));
        QVERIFY(XSession::waitFor([&] { return session.typoletOutput().contains("Expansion paused"); }));
        QVERIFY(type(session, QStringLiteral(";sig")));
        QVERIFY(XSession::waitFor([&] { return session.typoletOutput().count("(paused: ignored)") >= 4; }));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"key", "ctrl+alt+space"}));
        QVERIFY(XSession::waitFor([&] { return session.typoletOutput().contains("Expansion resumed"); }));
        QVERIFY(type(session, QStringLiteral(" ;sig")));
        expectShown(session, QStringLiteral(";sig Best regards"));
    }

    // When another program holds the pause keys, Typolet says so and still expands.
    void pauseKeysHeldElsewhereAreReported() {
        XSession session;
        QVERIFY(session.isRunning());
        QProcess* holder = session.start(QStringLiteral(TYPOLET_KEY_HOLDER), {});
        QVERIFY(XSession::waitFor([&] { return holder->readAllStandardOutput().contains("held"); }));
        QVERIFY(prepare(session, {{";sig", "Best regards"}}));
        QVERIFY(XSession::waitFor([&] {
            return session.typoletOutput().contains("is taken by another program");
        }));
        QVERIFY(type(session, QStringLiteral(";sig")));
        expectShown(session, QStringLiteral("Best regards"));
    }
};

QTEST_GUILESS_MAIN(ExpansionE2eTest)
#include "ExpansionE2eTest.moc"
