#pragma once

#include "IniFormat.h"

#include <QStringList>

// Joins a change another program made to the library file with Typolet's own unsaved change,
// both made from the same earlier version (`base`): three-way, record by record for the snippet
// and category lists, key by key for everything else.
//  - a record or key changed on one side only takes that side;
//  - changed on both sides, Typolet's version wins (the other one is in the history, kept
//    before the merge);
//  - a record added on either side is kept; one deleted on one side and unchanged on the other
//    is deleted; one deleted on one side and changed on the other is kept as changed.
class LibraryMerge {
public:
    struct Result {
        IniFormat::Values values;
        // Keys whose merged value is not Typolet's own (the views must read them again).
        QStringList takenFromOutside;
    };

    static Result merge(const IniFormat::Values& base, const IniFormat::Values& ours,
                        const IniFormat::Values& theirs);
};
