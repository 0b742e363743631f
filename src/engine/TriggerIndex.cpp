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

char16_t asciiLower(char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c; }
} // namespace

QString TriggerIndex::Trie::key(const QString& character) const {
    if (!m_folded)
        return character;
    if (character.size() == 1 && character[0].unicode() < 0x80)
        return QString(QChar(asciiLower(character[0].unicode())));
    return character.toCaseFolded();
}

quint32 TriggerIndex::Trie::symbolFor(const QString& character) const {
    if (character.size() == 1 && character[0].unicode() < 0x80)
        return m_folded ? asciiLower(character[0].unicode()) : character[0].unicode();
    return m_symbols.value(key(character), noSymbol);
}

quint32 TriggerIndex::Trie::internSymbol(const QString& character) {
    if (character.size() == 1 && character[0].unicode() < 0x80)
        return m_folded ? asciiLower(character[0].unicode()) : character[0].unicode();
    const QString folded = key(character);
    const auto found = m_symbols.constFind(folded);
    if (found != m_symbols.cend())
        return *found;
    const quint32 symbol = 0x80 + static_cast<quint32>(m_symbols.size());
    m_symbols.insert(folded, symbol);
    return symbol;
}

quint32 TriggerIndex::Trie::child(quint32 node, quint32 symbol) const {
    return m_edges.value(edgeKey(node, symbol), 0); // 0 (the root) is never anyone's child
}

quint32 TriggerIndex::Trie::addChild(quint32 node, quint32 symbol) {
    if (const quint32 existing = child(node, symbol))
        return existing;
    const auto created = static_cast<quint32>(m_best.size());
    m_best.emplace_back();
    m_edges.insert(edgeKey(node, symbol), created);
    return created;
}

void TriggerIndex::Trie::clear(qsizetype expected) {
    m_symbols.clear();
    m_edges.clear();
    m_best.clear();
    m_more.clear();
    m_best.emplace_back();
    m_edges.reserve(expected * 4);
    m_best.reserve(size_t(expected) * 4);
}

void TriggerIndex::Trie::add(const QString& command, qsizetype listIndex) {
    quint32 node = 0;
    qsizetype length = 0;
    if (isPrintableAscii(command)) {
        // Every character is a cluster of its own and already canonical.
        for (qsizetype c = command.size() - 1; c >= 0; --c)
            node = addChild(node, m_folded ? asciiLower(command[c].unicode()) : command[c].unicode());
        length = command.size();
    } else {
        const QStringList characters = GraphemeText::clusters(command);
        for (auto c = characters.crbegin(); c != characters.crend(); ++c)
            node = addChild(node, internSymbol(GraphemeText::canonical(*c)));
        length = characters.size();
    }
    // Snippets are added in list order: the first at a node comes first in the order.
    if (m_best[node].listIndex < 0)
        m_best[node] = Candidate{listIndex, length};
    else
        m_more[node].append(listIndex);
}

void TriggerIndex::Trie::walk(const KeystrokeBuffer& buffer, const Allowed& allowed,
                              Candidate& best) const {
    if (isEmpty())
        return;
    quint32 node = 0;
    for (qsizetype i = buffer.characterCount() - 1; i >= 0; --i) {
        const quint32 symbol = symbolFor(buffer.canonicalCharacter(i));
        if (symbol == noSymbol)
            break;
        node = child(node, symbol);
        if (node == 0)
            break;
        Candidate here = m_best[node];
        if (here.listIndex < 0)
            continue;
        if (allowed && !allowed(here.listIndex)) {
            here.listIndex = -1;
            for (const qsizetype other : m_more.value(node)) {
                if (allowed(other)) {
                    here.listIndex = other;
                    break;
                }
            }
            if (here.listIndex < 0)
                continue;
        }
        if (here.beats(best))
            best = here;
    }
}

void TriggerIndex::rebuild(const QList<Snippet>& snippets) {
    m_exact.clear(snippets.size());
    m_folded.clear(0);
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        const QString& command = snippets[i].command;
        // A command of nothing (or only blanks) would fire on every key, or on every space.
        if (command.trimmed().isEmpty())
            continue;
        (snippets[i].matchCase ? m_folded : m_exact).add(command, i);
    }
}

std::optional<qsizetype> TriggerIndex::match(const KeystrokeBuffer& buffer,
                                             const Allowed& allowed) const {
    Candidate best;
    m_exact.walk(buffer, allowed, best);
    m_folded.walk(buffer, allowed, best);
    if (best.listIndex < 0)
        return std::nullopt;
    return best.listIndex;
}
