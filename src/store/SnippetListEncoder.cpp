#include "SnippetListEncoder.h"

#include "RecordCodec.h"

#include <QJsonDocument>
#include <cmath>
#include <cstring>

namespace {
bool sameValues(const Snippet& a, const Snippet& b) {
    // Bitwise time comparison: a changed time must be re-encoded even if it compares equal
    // (0.0 and -0.0 are written differently).
    return a.id == b.id && a.categoryId == b.categoryId && a.command == b.command &&
           a.content == b.content && a.matchCase == b.matchCase &&
           std::memcmp(&a.createdAt, &b.createdAt, sizeof(double)) == 0;
}
} // namespace

std::optional<QByteArray> SnippetListEncoder::encode(const QList<Snippet>& snippets) {
    QHash<QUuid, Entry> cache;
    cache.reserve(snippets.size());
    QByteArray out;
    out.append('[');
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        const Snippet& snippet = snippets[i];
        if (!std::isfinite(snippet.createdAt))
            return std::nullopt; // nothing is written; the old cache stays valid
        if (i > 0)
            out.append(',');
        auto cached = m_cache.constFind(snippet.id);
        if (cached == m_cache.cend() || !sameValues(cached->snippet, snippet)) {
            const QByteArray json =
                QJsonDocument(RecordCodec::encode(snippet)).toJson(QJsonDocument::Compact);
            out.append(json);
            cache.insert(snippet.id, Entry{snippet, json});
        } else {
            out.append(cached->json);
            cache.insert(snippet.id, *cached);
        }
    }
    out.append(']');
    m_cache = std::move(cache);
    return out;
}
