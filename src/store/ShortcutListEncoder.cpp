#include "ShortcutListEncoder.h"

#include "RecordCodec.h"

#include <QJsonDocument>
#include <cmath>
#include <cstring>

namespace {
bool sameValues(const Shortcut& a, const Shortcut& b) {
    // Bitwise time comparison: a changed time must be re-encoded even if it compares equal
    // (0.0 and -0.0 are written differently).
    return a.id == b.id && a.categoryId == b.categoryId && a.command == b.command &&
           a.content == b.content &&
           std::memcmp(&a.createdAt, &b.createdAt, sizeof(double)) == 0;
}
} // namespace

std::optional<QByteArray> ShortcutListEncoder::encode(const QList<Shortcut>& shortcuts) {
    QHash<QUuid, Entry> cache;
    cache.reserve(shortcuts.size());
    QByteArray out;
    out.append('[');
    for (qsizetype i = 0; i < shortcuts.size(); ++i) {
        const Shortcut& shortcut = shortcuts[i];
        if (!std::isfinite(shortcut.createdAt))
            return std::nullopt; // nothing is written; the old cache stays valid
        if (i > 0)
            out.append(',');
        auto cached = m_cache.constFind(shortcut.id);
        if (cached == m_cache.cend() || !sameValues(cached->shortcut, shortcut)) {
            const QByteArray json =
                QJsonDocument(RecordCodec::encode(shortcut)).toJson(QJsonDocument::Compact);
            out.append(json);
            cache.insert(shortcut.id, Entry{shortcut, json});
        } else {
            out.append(cached->json);
            cache.insert(shortcut.id, *cached);
        }
    }
    out.append(']');
    m_cache = std::move(cache);
    return out;
}
