#pragma once

#include "Snippet.h"

#include <QHash>
#include <QList>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

class KeystrokeBuffer;

// Finds the snippet whose command the buffer ends with, in time that depends on the length of
// the commands, not on how many snippets there are.
//
// The answer is the one the plain rule gives: order the snippets by the number of characters of
// their command, longest first, keeping list order among equal lengths, and take the first whose
// command the buffer ends with. The index is a trie over the commands' canonical characters read
// from the end; walking the buffer backwards visits every command that could match, and each
// node remembers the snippets that end there, in list order.
//
// Snippets that match the command's case sit in a second trie over case-folded characters, which
// the buffer is walked through folded; a match from either trie competes by the same rule.
class TriggerIndex {
public:
    // Whether the snippet at this position of the indexed list may expand now (its category
    // may be limited to other applications).
    using Allowed = std::function<bool(qsizetype)>;

    void rebuild(const QList<Snippet>& snippets);

    // Position in the indexed list of the matching snippet, if any. Without `allowed` every
    // snippet may expand.
    std::optional<qsizetype> match(const KeystrokeBuffer& buffer, const Allowed& allowed = {}) const;

private:
    struct Candidate {
        qsizetype listIndex = -1;
        qsizetype length = -1; // characters in the command as written
        bool beats(const Candidate& other) const {
            return other.listIndex < 0 || length > other.length ||
                   (length == other.length && listIndex < other.listIndex);
        }
    };

    class Trie {
    public:
        explicit Trie(bool folded) : m_folded(folded) {}
        void clear(qsizetype expected);
        void add(const QString& command, qsizetype listIndex);
        bool isEmpty() const { return m_best.size() <= 1; }
        void walk(const KeystrokeBuffer& buffer, const Allowed& allowed, Candidate& best) const;

    private:
        static constexpr quint32 noSymbol = 0xffffffffu;
        // Characters become small numbers: a printable ASCII character is its own code, any
        // other canonical character gets the next free number above 127.
        quint32 symbolFor(const QString& canonicalCharacter) const;
        quint32 internSymbol(const QString& canonicalCharacter);
        quint32 child(quint32 node, quint32 symbol) const;
        quint32 addChild(quint32 node, quint32 symbol);
        // The character as this trie compares it.
        QString key(const QString& canonicalCharacter) const;

        bool m_folded;
        QHash<QString, quint32> m_symbols;
        QHash<quint64, quint32> m_edges; // (node << 32 | symbol) -> child node
        std::vector<Candidate> m_best;   // per node; node 0 is the root (the empty command)
        // Further snippets with the same command, in list order: expanding only in other
        // applications, they are asked for only when the first may not expand.
        QHash<quint32, QList<qsizetype>> m_more;
    };

    Trie m_exact{false};
    Trie m_folded{true};
};
