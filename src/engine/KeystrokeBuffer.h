#pragma once

#include <QList>
#include <QString>

// The text typed since the last clear, kept together with its grapheme clusters so that
// appending, erasing the last character and reading characters from the end cost no more than
// the characters involved, however long the buffer has grown.
class KeystrokeBuffer {
public:
    const QString& text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }
    qsizetype characterCount() const { return m_starts.size(); }

    // The canonical form of the character at `index` (0 is the first).
    const QString& canonicalCharacter(qsizetype index) const { return m_canonical[index]; }

    // The last `count` characters as typed (all of them when there are fewer).
    QString lastCharacters(qsizetype count) const {
        return count >= m_starts.size() ? m_text : m_text.mid(m_starts[m_starts.size() - count]);
    }

    // Appends text; a combining mark joins the character before it.
    void append(const QString& text);
    // Removes the last character (all code points of its cluster).
    void removeLast();
    void clear();

private:
    QString m_text;
    QList<qsizetype> m_starts;
    QList<QString> m_canonical;
};
