#pragma once

#include "Snippet.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <optional>

// Encodes the snippet list for saving, remembering each snippet's encoded JSON so that a save
// after an edit only encodes what changed. Building JSON objects dominates the cost of saving a
// large library, and a save almost always follows a change to a single snippet.
//
// The output is byte for byte what RecordCodec::encodeSnippets writes.
class SnippetListEncoder {
public:
    std::optional<QByteArray> encode(const QList<Snippet>& snippets);

private:
    struct Entry {
        Snippet snippet; // the exact values that `json` encodes
        QByteArray json;
    };
    QHash<QUuid, Entry> m_cache;
};
