#include "TriggerIndex.h"

#include "GraphemeText.h"
#include "KeystrokeBuffer.h"

namespace {
bool isPrintableAscii(QStringView text) {
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() >= 0x7F)
            return false;
    }
    return true;
}

quint64 edgeKey(quint32 node, quint32 symbol) { return (quint64(node) << 32) | symbol; }
} // namespace

quint32 TriggerIndex::symbolFor(const QString& character) const {
    if (character.size() == 1 && character[0].unicode() < 0x80)
        return character[0].unicode();
    return m_symbols.value(character, noSymbol);
}

quint32 TriggerIndex::internSymbol(const QString& character) {
    if (character.size() == 1 && character[0].unicode() < 0x80)
        return character[0].unicode();
    const auto found = m_symbols.constFind(character);
    if (found != m_symbols.cend())
        return *found;
    const quint32 symbol = 0x80 + static_cast<quint32>(m_symbols.size());
    m_symbols.insert(character, symbol);
    return symbol;
}

quint32 TriggerIndex::child(quint32 node, quint32 symbol) const {
    return m_edges.value(edgeKey(node, symbol), 0); // 0 (the root) is never anyone's child
}

quint32 TriggerIndex::addChild(quint32 node, quint32 symbol) {
    if (const quint32 existing = child(node, symbol))
        return existing;
    const auto created = static_cast<quint32>(m_best.size());
    m_best.emplace_back();
    m_edges.insert(edgeKey(node, symbol), created);
    return created;
}

void TriggerIndex::rebuild(const QList<Snippet>& snippets) {
    m_symbols.clear();
    m_edges.clear();
    m_best.clear();
    m_best.emplace_back();
    m_edges.reserve(snippets.size() * 4);
    m_best.reserve(snippets.size() * 4);
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        const QString& command = snippets[i].command;
        // A command of nothing (or only blanks) would fire on every key, or on every space.
        if (command.trimmed().isEmpty())
            continue;
        quint32 node = 0;
        qsizetype length = 0;
        if (isPrintableAscii(command)) {
            // Every character is a cluster of its own and already canonical.
            for (qsizetype c = command.size() - 1; c >= 0; --c)
                node = addChild(node, command[c].unicode());
            length = command.size();
        } else {
            const QStringList characters = GraphemeText::clusters(command);
            for (auto c = characters.crbegin(); c != characters.crend(); ++c)
                node = addChild(node, internSymbol(GraphemeText::canonical(*c)));
            length = characters.size();
        }
        const Candidate candidate{i, length};
        if (candidate.beats(m_best[node]))
            m_best[node] = candidate;
    }
}

std::optional<qsizetype> TriggerIndex::match(const KeystrokeBuffer& buffer) const {
    if (m_best.empty())
        return std::nullopt;
    Candidate best = m_best[0];
    quint32 node = 0;
    for (qsizetype i = buffer.characterCount() - 1; i >= 0; --i) {
        const quint32 symbol = symbolFor(buffer.canonicalCharacter(i));
        if (symbol == noSymbol)
            break;
        node = child(node, symbol);
        if (node == 0)
            break;
        const Candidate& here = m_best[node];
        if (here.listIndex >= 0 && here.beats(best))
            best = here;
    }
    if (best.listIndex < 0)
        return std::nullopt;
    return best.listIndex;
}
