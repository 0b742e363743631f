// The expansion's phases: the events that must leave a phase alone (a click while the content
// goes out does not end it) or end it, and what each phase keeps. The engine's tests and the
// key path fuzzer go through the other moves.
#include "ExpansionLifecycle.h"

#include <QtTest>

using Phase = ExpansionLifecycle::Phase;
using Event = ExpansionLifecycle::Event;
Q_DECLARE_METATYPE(Phase)
Q_DECLARE_METATYPE(Event)

class ExpansionLifecycleTest : public QObject {
    Q_OBJECT
private slots:
    void transitions_data() {
        QTest::addColumn<Phase>("from");
        QTest::addColumn<Event>("event");
        QTest::addColumn<Phase>("to");
        const struct {
            const char* name;
            Phase from;
            Event event;
            Phase to;
        } rows[] = {
            {"click while waiting", Phase::AwaitingWordEnd, Event::TypingForgotten, Phase::Idle},
            {"waiting is no undo", Phase::AwaitingWordEnd, Event::NextKeyTaken, Phase::AwaitingWordEnd},
            {"Escape while reading", Phase::ReadingClipboard, Event::EscapePressed, Phase::ReadingClipboard},
            {"click while reading", Phase::ReadingClipboard, Event::TypingForgotten, Phase::ReadingClipboard},
            {"keys into the form", Phase::FillingIn, Event::CommandAwaitsWordEnd, Phase::FillingIn},
            {"click into the form", Phase::FillingIn, Event::TypingForgotten, Phase::FillingIn},
            {"click while typing", Phase::Typing, Event::TypingForgotten, Phase::Typing},
            {"no drop while typing", Phase::Typing, Event::ExpansionDropped, Phase::Typing},
            {"click after the content", Phase::UndoWindow, Event::TypingForgotten, Phase::Idle},
        };
        for (const auto& row : rows)
            QTest::newRow(row.name) << row.from << row.event << row.to;
    }
    void transitions() {
        QFETCH(Phase, from);
        QFETCH(Event, event);
        QFETCH(Phase, to);
        QCOMPARE(ExpansionLifecycle::next(from, event), to);
    }

    // The undo window opens only with what the output was asked to leave, and only when the
    // whole content went out with no key behind it; each phase starts with nothing of the last.
    void eachPhaseKeepsOnlyItsOwnData() {
        ExpansionLifecycle life;
        life.handle(Event::CommandAwaitsWordEnd);
        life.awaited().keysHeld = true;
        life.handle(Event::OutputStarted);
        QCOMPARE(life.phase(), Phase::Typing);
        QVERIFY(!life.awaited().keysHeld);
        QVERIFY(!life.leavesUndo());
        life.output().pendingUndo = ExpansionLifecycle::Undo{";sig", 7, 0, {}, 0};
        QVERIFY(life.leavesUndo());
        life.keysAfterExpansion() << "x"; // a key reached the application meanwhile
        QVERIFY(!life.leavesUndo());
        life.keysAfterExpansion().clear();
        life.handle(Event::EscapePressed);
        QVERIFY(!life.leavesUndo());
        life.handle(Event::OutputFinished);
        QCOMPARE(life.phase(), Phase::Idle);

        life.handle(Event::OutputStarted);
        QVERIFY(!life.output().cancelled);
        life.output().pendingUndo = ExpansionLifecycle::Undo{";sig", 7, 0, {}, 0};
        life.handle(Event::ContentWentOutWhole);
        QCOMPARE(life.phase(), Phase::UndoWindow);
        QCOMPARE(life.undo().command, ";sig");
        QCOMPARE(life.undo().typed, 7);
        QVERIFY(!life.output().pendingUndo);
        life.handle(Event::NextKeyTaken);
        QCOMPARE(life.undo().command, QString());

        // The form's data lives from the question to the answer.
        life.handle(Event::ValuesAsked);
        life.filling().wordEnd = " ";
        life.handle(Event::OutputStarted);
        QCOMPARE(life.filling().wordEnd, QString());
    }
};

QTEST_GUILESS_MAIN(ExpansionLifecycleTest)
#include "ExpansionLifecycleTest.moc"
