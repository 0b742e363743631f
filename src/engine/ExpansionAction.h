#pragma once

#include <QList>
#include <QString>

// One step of an expansion as the engine decides it; the platform output carries the steps out
// in order. Erasing counts characters (grapheme clusters) before the caret. A pasted text goes
// through the clipboard; the output types it instead where pasting cannot be done.
struct ExpansionAction {
    enum class Kind { Erase, Type, Paste };
    Kind kind = Kind::Type;
    int count = 0; // Erase
    QString text;  // Type, Paste

    static ExpansionAction erase(int count) { return {Kind::Erase, count, {}}; }
    static ExpansionAction type(const QString& text) { return {Kind::Type, 0, text}; }
    static ExpansionAction paste(const QString& text) { return {Kind::Paste, 0, text}; }
    friend bool operator==(const ExpansionAction&, const ExpansionAction&) = default;
};

using Expansion = QList<ExpansionAction>;
