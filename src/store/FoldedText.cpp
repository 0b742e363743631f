#include "FoldedText.h"

#include <algorithm>

namespace {
// What one matched letter earns, and what makes a match read as intended rather than by chance.
constexpr int letterPoints = 16;
constexpr int wordStartPoints = 24; // a letter that starts a word ("pa" in "personal address")
constexpr int adjacentPoints = 12;  // a letter right after the previous matched one
constexpr int gapPenaltyCap = 10;   // skipped letters cost one each, up to this per gap
static_assert(letterPoints + wordStartPoints + adjacentPoints == FoldedText::bestLetterScore);

bool isWordStart(QStringView text, qsizetype at) {
    return at == 0 || !text[at - 1].isLetterOrNumber();
}

// Scores the letters of `query` at `positions` in `text`.
int pathScore(QStringView text, const qsizetype* positions, qsizetype count) {
    int score = 0;
    for (qsizetype i = 0; i < count; ++i) {
        score += letterPoints;
        if (isWordStart(text, positions[i]))
            score += wordStartPoints;
        if (i > 0) {
            const qsizetype gap = positions[i] - positions[i - 1] - 1;
            score += gap == 0 ? adjacentPoints
                              : -static_cast<int>(std::min<qsizetype>(gap, gapPenaltyCap));
        }
    }
    return score;
}

// Folded text holds lower-case ASCII letters and digits far more than anything else: they get
// a bit each, every other character shares one of the remaining bits.
bool hasOwnBit(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9'); }
quint64 bitOf(char16_t c) {
    if (c >= u'a' && c <= u'z')
        return quint64(1) << (c - u'a');
    if (c >= u'0' && c <= u'9')
        return quint64(1) << (26 + c - u'0');
    return quint64(1) << (36 + c % 28);
}

unsigned pairOf(char16_t before, char16_t after) {
    return (quint32(before) * 0x9E3779B1u + quint32(after) * 0x85EBCA77u) >> 24; // 0..255
}

qsizetype plainWordStartOf(QStringView text, QChar letter, qsizetype from) {
    for (qsizetype i = text.indexOf(letter, from); i >= 0; i = text.indexOf(letter, i + 1))
        if (isWordStart(text, i))
            return i;
    return -1;
}
} // namespace

FoldedText::FoldedText(const QString& text) : m_text(fold(text)) {
    const QStringView folded = m_text;
    m_wordStartsListed = folded.size() <= 0xFFFF;
    bool afterLetter = false;
    char16_t before = 0;
    for (qsizetype i = 0; i < folded.size(); ++i) {
        const QChar c = folded[i];
        const quint64 bit = bitOf(c.unicode());
        m_letters |= bit;
        if (!afterLetter) {
            m_wordStartLetters |= bit;
            if (m_wordStartsListed)
                m_wordStarts.append({static_cast<quint16>(i), c.unicode()});
            if (i + 1 < folded.size()) {
                const unsigned pair = pairOf(c.unicode(), folded[i + 1].unicode()) & 127;
                m_wordStartPairs[pair >> 6] |= quint64(1) << (pair & 63);
            }
        }
        if (i > 0) {
            const unsigned pair = pairOf(before, c.unicode());
            m_pairs[pair >> 6] |= quint64(1) << (pair & 63);
        }
        afterLetter = c.isLetterOrNumber();
        before = c.unicode();
    }
    m_wordStarts.squeeze();
}

QString FoldedText::fold(const QString& text) {
    const bool ascii = std::all_of(text.begin(), text.end(),
                                   [](QChar c) { return c.unicode() < 0x80; });
    if (ascii)
        return text.toLower();
    // Compatibility decomposition splits accents off their letters (and turns ligatures and
    // full-width forms into plain letters); the accents are then left out.
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QString folded;
    folded.reserve(decomposed.size());
    for (const QChar c : decomposed)
        if (c.category() != QChar::Mark_NonSpacing && c.category() != QChar::Mark_Enclosing)
            folded.append(c);
    return folded.toCaseFolded();
}

quint64 FoldedText::lettersOf(QStringView folded) {
    quint64 letters = 0;
    for (const QChar c : folded)
        letters |= bitOf(c.unicode());
    return letters;
}

bool FoldedText::mayHavePairsOf(QStringView query) const {
    for (qsizetype i = 1; i < query.size(); ++i) {
        const unsigned pair = pairOf(query[i - 1].unicode(), query[i].unicode());
        if (!(m_pairs[pair >> 6] & (quint64(1) << (pair & 63))))
            return false;
    }
    return true;
}

qsizetype FoldedText::pieceAtWordStart(QStringView query) const {
    const QChar first = query[0];
    if (!(m_wordStartLetters & bitOf(first.unicode())))
        return -1;
    if (query.size() > 1) {
        const unsigned pair = pairOf(first.unicode(), query[1].unicode()) & 127;
        if (!(m_wordStartPairs[pair >> 6] & (quint64(1) << (pair & 63))))
            return -1;
    }
    if (!m_wordStartsListed) {
        for (qsizetype i = plainWordStartOf(m_text, first, 0); i >= 0;
             i = plainWordStartOf(m_text, first, i + 1))
            if (QStringView(m_text).sliced(i).startsWith(query))
                return i;
        return -1;
    }
    const auto* text = reinterpret_cast<const char16_t*>(m_text.constData());
    const qsizetype size = m_text.size();
    const qsizetype length = query.size();
    for (const WordStart& start : m_wordStarts)
        if (start.letter == first && start.at + length <= size &&
            std::equal(query.utf16() + 1, query.utf16() + length, text + start.at + 1))
            return start.at;
    return -1;
}

qsizetype FoldedText::wordStartOf(QChar letter, qsizetype from) const {
    if (!(m_wordStartLetters & bitOf(letter.unicode())))
        return -1;
    if (!m_wordStartsListed)
        return plainWordStartOf(m_text, letter, from);
    const auto after = [](const WordStart& start, qsizetype at) { return start.at < at; };
    for (auto at = std::lower_bound(m_wordStarts.begin(), m_wordStarts.end(), from, after);
         at != m_wordStarts.end(); ++at)
        if (at->letter == letter)
            return at->at;
    return -1;
}

int FoldedText::score(QStringView query, quint64 letters) const {
    if (!mayContain(letters))
        return 0;
    // One letter: in the text at all, and at a word start or not, is the whole score.
    if (query.size() == 1 && hasOwnBit(query[0].unicode()))
        return letterPoints + ((m_wordStartLetters & letters) ? wordStartPoints : 0);
    return score(m_text, query, this);
}

int FoldedText::score(QStringView text, QStringView query) { return score(text, query, nullptr); }

int FoldedText::score(QStringView text, QStringView query, const FoldedText* summary) {
    const qsizetype length = query.size();
    if (length == 0)
        return 1;
    constexpr qsizetype maxPath = 64;
    const qsizetype scored = std::min(length, maxPath);
    qsizetype path[maxPath];
    std::fill_n(path, scored, qsizetype(0));

    // The query as one piece first. A piece where a word starts is as good as it gets: no
    // scattered letters are looked for then. (Each search for a character is a vectorised scan.)
    const char16_t* chars = text.utf16();
    const char16_t* wanted = query.utf16();
    const qsizetype size = text.size();
    const QChar first(wanted[0]);
    int best = 0;
    if (summary) {
        // Every piece scores alike but for a word start where it begins (its other letters
        // start words or not by the query's own characters): one at a word start, or else
        // any one, decides.
        qsizetype piece = summary->pieceAtWordStart(query);
        if (piece < 0 && summary->mayHavePairsOf(query)) {
            for (qsizetype i = text.indexOf(first); i >= 0 && i + length <= size;
                 i = text.indexOf(first, i + 1))
                if (std::equal(wanted + 1, wanted + length, chars + i + 1)) {
                    piece = i;
                    break;
                }
        }
        if (piece >= 0) {
            for (qsizetype q = 0; q < scored; ++q)
                path[q] = piece + q;
            best = pathScore(text, path, scored);
            if (isWordStart(text, piece))
                return best;
        }
    } else {
        for (qsizetype i = text.indexOf(first); i >= 0 && i + length <= size;
             i = text.indexOf(first, i + 1)) {
            if (!std::equal(wanted + 1, wanted + length, chars + i + 1))
                continue;
            for (qsizetype q = 0; q < scored; ++q)
                path[q] = i + q;
            best = std::max(best, pathScore(text, path, scored));
            if (isWordStart(text, i))
                return best;
        }
    }
    // The letters in order at all, and where they end at the earliest.
    qsizetype end = -1;
    for (qsizetype q = 0; q < length; ++q) {
        end = text.indexOf(QChar(wanted[q]), end + 1);
        if (end < 0)
            return 0;
    }

    // Back from that end, the tightest run of the letters.
    qsizetype at = end;
    for (qsizetype q = length - 1; q >= 0; --q, --at) {
        while (text[at] != query[q])
            --at;
        if (q < maxPath)
            path[q] = at;
    }
    best = std::max(best, pathScore(text, path, scored));

    // Letters that start words or follow each other, where the text has them: "pa" should
    // find "personal address" by its initials, not by the "a" inside "personal".
    at = 0;
    bool found = true;
    for (qsizetype q = 0; q < length && found; ++q) {
        const QChar letter(wanted[q]);
        const qsizetype any = text.indexOf(letter, at);
        qsizetype chosen = any;
        // Right after the previous letter, or else where a word starts; or else the first.
        if (any >= 0 && !(q > 0 && any == at) && !isWordStart(text, any)) {
            const qsizetype start = summary ? summary->wordStartOf(letter, any + 1)
                                            : plainWordStartOf(text, letter, any + 1);
            if (start >= 0)
                chosen = start;
        }
        found = chosen >= 0;
        if (found && q < maxPath)
            path[q] = chosen;
        at = chosen + 1;
    }
    if (found)
        best = std::max(best, pathScore(text, path, scored));
    return std::max(best, 1);
}
