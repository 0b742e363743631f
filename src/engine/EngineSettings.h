#pragma once

#include <QString>
#include <QStringList>

// What the user chose for the engine, handed over whole whenever any of it changes, so that a
// change reaches the engine at once and no part of it can be forgotten on the way.
struct EngineSettings {
    // Nothing expands until this is switched off again.
    bool paused = false;
    // Applications (by the focused window's class, letter case ignored) where nothing expands.
    QStringList excludedApplications;
    // BackSpace right after an expansion puts the command back.
    bool undoWithBackspace = true;
    // Contents of at least this many characters are pasted; 0 types every content.
    int pasteThreshold = 0;
    // Where the backend reads the layout itself: the one keys are read and typed with, as
    // xkb-data names it ("de", "de(nodeadkeys)"); empty: the desktop's.
    QString keyboardLayout;

    bool operator==(const EngineSettings&) const = default;
};
