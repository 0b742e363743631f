#pragma once

#include "ExpansionAction.h"

#include <functional>

// Where an expansion's keystrokes go. The X11 implementation posts real key events; tests use
// a recording fake.
class KeyboardOutput {
public:
    virtual ~KeyboardOutput() = default;

    // Carries out `actions` in order without blocking the caller's event loop, and calls
    // `finished` once the last key has been handled by the system (also after cancel()). The
    // content arrives exactly as given, whatever modifiers or locks the user has on.
    virtual void perform(const Expansion& actions, std::function<void()> finished) = 0;

    // Stops the running expansion as soon as possible: nothing more is typed.
    virtual void cancel() = 0;

protected:
    // An expansion under way: its actions, whom to tell when it is done, and how far it got.
    struct Job {
        Expansion actions;
        std::function<void()> finished;
        qsizetype action = 0; // the one being carried out
        bool cancelled = false;
        int skipped = 0; // characters no key of the layout gives
    };
};
