#pragma once

#include "KeyStroke.h"
#include "Snippet.h"

#include <QString>
#include <QStringList>
#include <optional>

// The life of one expansion, from its command to the key after its content, as a phase and the
// one function that moves it on (docs/engine.md draws it). The engine decides what happened (a
// key ended the word, the output is done) and tells it as an event; what each phase knows lives
// here with it and goes when the phase ends, so nothing of an expansion outlives it by accident.
class ExpansionLifecycle {
public:
    enum class Phase {
        Idle,             // no expansion: keys go into the buffer
        AwaitingWordEnd,  // a command that waits for its word to end was typed: the next key decides
        ReadingClipboard, // the content shows the clipboard: its owner is asked for the text
        FillingIn,        // the content has form fields: the command is erased, the form asks
                          // for their values, and keys go to the form, never to the buffer
        Typing,           // the output erases the command and types or pastes the content
        UndoWindow,       // the content went out whole: BackSpace as the next key puts the command back
    };
    enum class Event {
        CommandAwaitsWordEnd, // a command typed whose snippet expands after its word
        WordWentOn,           // the key after it, or the time, says there is no word end here
        ClipboardAsked,       // a matched content needs the clipboard's text first
        ValuesAsked,          // a matched content has form fields: they are asked for first
        ExpansionDropped,     // the command is no longer before the caret (the focus moved,
                              // or did not come back from the form)
        OutputStarted,        // the output was asked to replace the command with the content
        EscapePressed,        // Escape during the output: it stops where it is
        OutputFinished,       // the output is done, or nothing went out; no undo follows
        ContentWentOutWhole,  // the output is done and BackSpace may undo it (see leavesUndo)
        NextKeyTaken,         // a key after the content that is not the one undoing it
        TypingForgotten,      // a click, another window, a pause: nothing typed before counts
    };

    // The transition function: the phase that `event` leads to from `phase`; the phase itself
    // when the event means nothing there.
    static Phase next(Phase phase, Event event);

    // What a command waiting for its word knows.
    struct AwaitedWordEnd {
        Snippet snippet;
        bool keysHeld = false; // the next key is held, so it has not reached the application
        bool decided = false;  // the next key has come (it is decided as it is let go)
    };
    // What BackSpace may put back: the command it replaced and how many characters it typed.
    struct Undo {
        QString command;
        int typed = 0;
        double at = 0;
        // The key that ended the word, still to come back from the keys held meanwhile: it is
        // part of the expansion, not the next key.
        QString passing;
        quint64 window = 0; // where the expansion went
    };
    // What a content with form fields knows while the form is open.
    struct Filling {
        Snippet snippet;
        QString wordEnd;        // the key that ended the command's word, typed after the content
        QString retyped;        // keys that slipped in after the command, erased with it
        std::optional<QString> clipboard; // read before the form opened, if the content shows it
        bool asked = false;     // the command is erased and the form was asked for
    };
    // What an expansion under way (reading the clipboard or typing) knows.
    struct Output {
        std::optional<Undo> pendingUndo; // becomes the undo when the content goes out whole
        bool cancelled = false;
        // While the clipboard is read: the keys that reach the application meanwhile count as
        // keys that slipped in before the hold, unless the focus moved and the expansion is off.
        QList<KeyStroke> typedWhileReading;
        bool focusMovedWhileReading = false;
    };

    Phase phase() const { return m_phase; }
    bool expanding() const { return m_phase == Phase::ReadingClipboard || m_phase == Phase::Typing; }
    // Moves on; what the phase that ended knew is dropped, and a phase entered starts afresh
    // (ContentWentOutWhole turns the pending undo into the undo window's).
    void handle(Event event);

    // The data of the phase in progress; meaningful only in that phase.
    AwaitedWordEnd& awaited() { return m_awaited; }
    Output& output() { return m_output; }
    Filling& filling() { return m_filling; }
    Undo& undo() { return m_undo; }

    // Texts that reached the application during an expansion and enter the buffer after it, in
    // order; when one of them starts the next expansion, the rest wait for that one to end.
    QStringList& keysAfterExpansion() { return m_keysAfterExpansion; }

    // Whether BackSpace may undo once the output is done: only when the whole content went out
    // and no key came in meanwhile (otherwise what to erase is not known).
    bool leavesUndo() const {
        return m_output.pendingUndo && !m_output.cancelled && m_keysAfterExpansion.isEmpty();
    }

private:
    Phase m_phase = Phase::Idle;
    AwaitedWordEnd m_awaited;
    Output m_output;
    Filling m_filling;
    Undo m_undo;
    QStringList m_keysAfterExpansion;
};
