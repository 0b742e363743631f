#include "ExpansionLifecycle.h"

namespace {
using Phase = ExpansionLifecycle::Phase;
using Event = ExpansionLifecycle::Event;

// Every move there is; docs/engine.md has the same table. Anything else leaves the phase alone.
std::optional<Phase> transition(Phase phase, Event event) {
    switch (phase) {
    case Phase::Idle:
        switch (event) {
        case Event::CommandAwaitsWordEnd: return Phase::AwaitingWordEnd;
        case Event::ClipboardAsked: return Phase::ReadingClipboard;
        case Event::ValuesAsked: return Phase::FillingIn;
        case Event::OutputStarted: return Phase::Typing;
        default: return std::nullopt;
        }
    case Phase::AwaitingWordEnd:
        switch (event) {
        case Event::CommandAwaitsWordEnd: return Phase::AwaitingWordEnd; // a newer command waits
        case Event::WordWentOn:
        case Event::TypingForgotten: return Phase::Idle;
        case Event::ClipboardAsked: return Phase::ReadingClipboard;
        case Event::ValuesAsked: return Phase::FillingIn;
        case Event::OutputStarted: return Phase::Typing;
        default: return std::nullopt;
        }
    case Phase::ReadingClipboard:
        switch (event) {
        case Event::EscapePressed: return Phase::ReadingClipboard;
        case Event::ExpansionDropped: return Phase::Idle;
        case Event::ValuesAsked: return Phase::FillingIn;
        case Event::OutputStarted: return Phase::Typing;
        default: return std::nullopt;
        }
    case Phase::FillingIn:
        switch (event) {
        // The values (or Escape's command) go out where the command was.
        case Event::OutputStarted: return Phase::Typing;
        case Event::ExpansionDropped: return Phase::Idle;
        default: return std::nullopt;
        }
    case Phase::Typing:
        switch (event) {
        case Event::EscapePressed: return Phase::Typing;
        case Event::OutputFinished: return Phase::Idle;
        case Event::ContentWentOutWhole: return Phase::UndoWindow;
        default: return std::nullopt;
        }
    case Phase::UndoWindow:
        switch (event) {
        case Event::NextKeyTaken:
        case Event::TypingForgotten: return Phase::Idle;
        default: return std::nullopt;
        }
    }
    return std::nullopt;
}
} // namespace

ExpansionLifecycle::Phase ExpansionLifecycle::next(Phase phase, Event event) {
    return transition(phase, event).value_or(phase);
}

void ExpansionLifecycle::handle(Event event) {
    const std::optional<Phase> to = transition(m_phase, event);
    if (!to)
        return;
    switch (event) {
    case Event::CommandAwaitsWordEnd: m_awaited = {}; break;
    case Event::ClipboardAsked:
    case Event::OutputStarted: m_output = {}; break;
    case Event::ValuesAsked: m_filling = {}; break;
    case Event::EscapePressed: m_output.cancelled = true; break;
    case Event::ContentWentOutWhole: m_undo = m_output.pendingUndo.value_or(Undo{}); break;
    default: break;
    }
    if (*to != Phase::AwaitingWordEnd)
        m_awaited = {};
    if (*to != Phase::ReadingClipboard && *to != Phase::Typing)
        m_output = {};
    if (*to != Phase::FillingIn)
        m_filling = {};
    if (*to != Phase::UndoWindow)
        m_undo = {};
    m_phase = *to;
}
