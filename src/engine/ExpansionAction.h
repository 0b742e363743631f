#pragma once

#include <QList>
#include <QString>

// One step of an expansion as the engine decides it; the platform output carries the steps out
// in order. Erasing and moving the caret count characters (grapheme clusters; a line break is
// one). A pasted text goes through the clipboard; the output types it instead where pasting
// cannot be done.
struct ExpansionAction {
    enum class Kind { Erase, Type, Paste, MoveLeft };
    Kind kind = Kind::Type;
    int count = 0; // Erase, MoveLeft
    QString text;  // Type, Paste

    static ExpansionAction erase(int count) { return {Kind::Erase, count, {}}; }
    static ExpansionAction type(const QString& text) { return {Kind::Type, 0, text}; }
    static ExpansionAction paste(const QString& text) { return {Kind::Paste, 0, text}; }
    // The caret goes back over `count` characters of what was typed (Left key presses).
    static ExpansionAction moveLeft(int count) { return {Kind::MoveLeft, count, {}}; }
    friend bool operator==(const ExpansionAction&, const ExpansionAction&) = default;
};

using Expansion = QList<ExpansionAction>;
