#pragma once

#include <QtGlobal>

// How often one snippet went out (expanded or inserted) and when it last did. Kept on this
// computer only, beside the library, never in it.
struct SnippetUsage {
    int count = 0;
    qint64 lastUsedMs = 0; // milliseconds since the Unix epoch; 0 when never used

    friend bool operator==(const SnippetUsage&, const SnippetUsage&) = default;
};
