#pragma once

#include "Snippet.h"

#include <QList>
#include <optional>

// The matching rule written the plain way: sort a copy of the snippets by command length in
// characters, longest first, stable, and take the first whose command the text ends with.
// The engine's index must always agree with it; benchmarks measure against it.
class ReferenceMatcher {
public:
    static std::optional<qsizetype> match(const QList<Snippet>& snippets, const QString& text);
};
