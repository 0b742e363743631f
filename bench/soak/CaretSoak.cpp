// A soak, run by hand: thousands of expansions in a GTK 3 text view, typed through xdotool,
// with caret keys, clicks in another window and focus changes mixed in at random
// between a command's letters. Checks that no character the user typed was erased: the view
// must hold exactly what was typed, with only the commands typed in one go replaced.
//
//   typolet_caret_soak [EXPANSIONS] [SEED]     (defaults: 2000, the time)
//
// Prints the counts and, on a difference, where the view and the typed text part; exits 1
// then. With SOAK_LOG=1 it also prints each round's kind and, on a difference, Typolet's lines.
#include "XSession.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QRandomGenerator>
#include <cstdio>

namespace {
const QString regards = QStringLiteral("Best regards");

// Typist actions ("text:...", "key:...") through xdotool, on the core keyboard. A second
// keyboard (the typist's own master) would keep its own focus where a program moves the core
// one, and the server then tells nobody that the first window lost the focus.
bool typeKeys(XSession& session, const QStringList& actions) {
    for (const QString& action : actions) {
        const QString value = action.section(QLatin1Char(':'), 1);
        const QStringList arguments =
            action.startsWith(QLatin1String("text:"))
                ? QStringList{QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("12"), value}
                : QStringList{QStringLiteral("key"), value};
        if (!session.run(QStringLiteral("xdotool"), arguments))
            return false;
    }
    return true;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int wanted = argc > 1 ? std::atoi(argv[1]) : 2000;
    const quint32 seed = argc > 2 ? quint32(std::atoll(argv[2])) : quint32(QDateTime::currentSecsSinceEpoch());
    QRandomGenerator random(seed);

    XSession session;
    if (!session.startWith({{";sig", regards}}, XSession::Target::GtkTextView)) {
        std::fprintf(stderr, "could not start: %s\n", qPrintable(session.log()));
        return 2;
    }
    const QString first = session.targetWindow();
    QProcess* const firstView = session.target();
    const QString otherFile = session.file(QStringLiteral("other"));
    if (!session.startGtkTextView({QStringLiteral("--out"), otherFile, QStringLiteral("--title"),
                                   QStringLiteral("other")})) {
        std::fprintf(stderr, "no second window: %s\n", qPrintable(session.log()));
        return 2;
    }
    const QString other = session.targetWindow();
    const auto xdotool = [&](const QStringList& arguments) {
        return session.run(QStringLiteral("xdotool"), arguments);
    };
    const auto focus = [&](const QString& window) {
        return xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    };

    QString expected;
    int expansions = 0, interruptions = 0, strayBackspaces = 0;
    focus(first);
    for (int round = 0; expansions < wanted; ++round) {
        const QString word = QStringLiteral("w%1 ").arg(round);
        const int kind = int(random.bounded(6));
        if (qEnvironmentVariableIsSet("SOAK_LOG"))
            std::printf("round %d: kind %d\n", round, kind);
        bool ok = true;
        if (kind == 0) {
            // xdotool types through the same XTEST keyboard as Typolet, whose keys are not
            // held: the next key waits for the content.
            ok = typeKeys(session, {"text:" + word + ";sig"}) &&
                 session.waitForExpansions(expansions + 1, 200) && typeKeys(session, {"text: "});
            expected += word + regards + QLatin1Char(' ');
            ++expansions;
        } else if (kind == 5) {
            // Expanded here, BackSpace in the other window: that one loses a character, and
            // nothing here changes.
            ok = typeKeys(session, {"text:" + word + ";sig"}) &&
                 session.waitForExpansions(expansions + 1, 200) && focus(other) &&
                 typeKeys(session, {QStringLiteral("text:x"), QStringLiteral("key:BackSpace")}) &&
                 focus(first) && typeKeys(session, {QStringLiteral("text: ")});
            expected += word + regards + QLatin1Char(' ');
            ++expansions;
            ++strayBackspaces;
        } else {
            // The command's letters on both sides of a caret round trip, a click elsewhere or
            // a focus change: it must not expand.
            ok = typeKeys(session, {"text:" + word + ";si"});
            if (kind == 1)
                ok = ok && typeKeys(session, {QStringLiteral("key:Left"), QStringLiteral("key:Right")});
            else if (kind == 2)
                ok = ok && typeKeys(session, {QStringLiteral("key:Home"), QStringLiteral("key:End")});
            else if (kind == 3)
                ok = ok && session.waitForExpansions(expansions, 300) &&
                     xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), other,
                              QStringLiteral("20"), QStringLiteral("20"), QStringLiteral("click"),
                              QStringLiteral("1")}) &&
                     focus(first);
            else
                ok = ok && session.waitForExpansions(expansions, 300) && focus(other) && focus(first);
            ok = ok && typeKeys(session, {QStringLiteral("text:g ")});
            expected += word + QStringLiteral(";sig ");
            ++interruptions;
        }
        if (!ok) {
            std::fprintf(stderr, "a tool failed in round %d: %s\n", round, qPrintable(session.log()));
            return 2;
        }
        if (round % 50 == 49 || expansions >= wanted) {
            session.waitForExpansions(expansions, 500);
            const QString shown =
                session.shownTextOnce([&](const QString& text) { return text == expected; });
            if (shown != expected) {
                std::printf("seed %u, round %d: %s\n", seed, round,
                            qPrintable(XSession::describeDifference(shown, expected)));
                // Where the missing keys went: the window holding the focus now, what the
                // other window got, and whether the view is still running.
                std::printf("focus now: %s; the view %s; the other window holds \"%s\"\n",
                            qPrintable(session.output(QStringLiteral("xdotool"),
                                                      {QStringLiteral("getwindowfocus"),
                                                       QStringLiteral("getwindowname")})
                                           .trimmed()),
                            firstView->state() == QProcess::Running
                                ? "runs"
                                : "has ended",
                            qPrintable(XSession::readText(otherFile).right(200)));
                if (qEnvironmentVariableIsSet("SOAK_LOG"))
                    std::printf("%s\n", qPrintable(session.typoletOutput()));
                return 1;
            }
            std::printf("%d expansions, %d interrupted commands: the text is as typed\n", expansions,
                        interruptions);
            std::fflush(stdout);
            // A new paragraph: GTK moves the caret across a paragraph in time that grows with
            // its length, and with thousands of characters on one line the view falls minutes
            // behind the keys (seen as a view that stops short after a Left/Right round).
            if (!typeKeys(session, {QStringLiteral("key:Return")})) {
                std::fprintf(stderr, "a tool failed after round %d: %s\n", round, qPrintable(session.log()));
                return 2;
            }
            expected += QLatin1Char('\n');
        }
    }
    // Each stray BackSpace followed an "x" typed there: nothing else may have reached it.
    const QString otherText = XSession::readText(otherFile);
    if (!otherText.isEmpty()) {
        std::printf("seed %u: the other window holds \"%s\"\n", seed, qPrintable(otherText.left(80)));
        return 1;
    }
    std::printf("seed %u: %d expansions, %d commands interrupted by caret keys, clicks or focus "
                "changes, %d BackSpaces in another window right after an expansion: no character "
                "erased that was not part of a command typed in one go\n",
                seed, expansions, interruptions, strayBackspaces);
    return 0;
}
