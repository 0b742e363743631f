#pragma once

#include <QList>
#include <QString>
#include <array>

// A text prepared once for the fuzzy search: folded (letter case, accents and compatibility
// forms set aside), with a summary of it that turns most queries down, and scores one-letter
// queries, without reading the text: which letters it has, which of them start a word, which
// pairs of letters stand side by side, and where its words start.
class FoldedText {
public:
    // The most one letter of a query earns: it starts a word and follows the letter before.
    static constexpr int bestLetterScore = 52;

    FoldedText() = default;
    // `text` not yet folded.
    explicit FoldedText(const QString& text);

    const QString& text() const { return m_text; }

    // The letters of `folded` as bits, for mayContain(). A bit stands for exactly one letter for
    // a-z and 0-9, for a group of characters otherwise.
    static quint64 lettersOf(QStringView folded);
    // False when the text certainly lacks one of `letters` (from lettersOf()).
    bool mayContain(quint64 letters) const { return (m_letters & letters) == letters; }

    // How well `query` (folded, `letters` its lettersOf()) matches this text; what score() gives.
    int score(QStringView query, quint64 letters) const;

    // How well `query` matches `text`, both folded: 0 when the query's letters are not all in
    // the text in order; more when they stand side by side and start words.
    static int score(QStringView text, QStringView query);
    // "Café" and "CAFE" both read "cafe".
    static QString fold(const QString& text);

private:
    // `summary` (null for a plain text) only spares reading the text: the score is the same.
    static int score(QStringView text, QStringView query, const FoldedText* summary);
    bool mayHavePairsOf(QStringView query) const;
    // Where `query` stands as one piece at a word start, first; -1 if nowhere.
    qsizetype pieceAtWordStart(QStringView query) const;
    // The first word start at or after `from` that holds `letter`; -1 if none.
    qsizetype wordStartOf(QChar letter, qsizetype from) const;

    QString m_text;
    quint64 m_letters = 0;
    quint64 m_wordStartLetters = 0;
    struct WordStart {
        quint16 at;
        char16_t letter; // the text's character there, so that a search reads this list alone
    };

    std::array<quint64, 4> m_pairs{};          // hashed pairs of neighbouring characters
    std::array<quint64, 2> m_wordStartPairs{}; // the same, for the two that begin each word
    QList<WordStart> m_wordStarts; // ascending; empty for a text too long to list them
    bool m_wordStartsListed = false;
};
