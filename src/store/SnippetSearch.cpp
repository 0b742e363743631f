#include "SnippetSearch.h"

#include <QRegularExpression>
#include <algorithm>

namespace {
// What one matched letter earns, and what makes a match read as intended rather than by chance.
constexpr int letterPoints = 16;
constexpr int wordStartPoints = 24;  // a letter that starts a word ("pa" in "personal address")
constexpr int adjacentPoints = 12;   // a letter right after the previous matched one
constexpr int gapPenaltyCap = 10;    // skipped letters cost one each, up to this per gap
constexpr int commandStartPoints = 40; // the query's first letter is the command's first
constexpr int commandPrefixPoints = 120; // the command begins with the query
constexpr int commandWeight = 2;    // a command is what the user named the snippet by
constexpr qint64 exactCommandPoints = 1'000'000'000;

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
            score += gap == 0 ? adjacentPoints : -static_cast<int>(std::min<qsizetype>(gap, gapPenaltyCap));
        }
    }
    return score;
}

// The first letter of a command that is a letter or digit: ";addr" starts at "a".
qsizetype commandStart(QStringView command) {
    for (qsizetype i = 0; i < command.size(); ++i)
        if (command[i].isLetterOrNumber())
            return i;
    return 0;
}
} // namespace

QString SnippetSearch::fold(const QString& text) {
    // Letters from ASCII, and punctuation, symbols and spaces that decompose into nothing else
    // (a dash, curly quotes): folding leaves all of those as they are but the capitals. Most
    // texts hold nothing else, and a large library folds them all at once.
    const auto plain = [](QChar c) {
        if (c.unicode() < 0x80)
            return true;
        if (c.isSurrogate() || c.decompositionTag() != QChar::NoDecomposition)
            return false;
        return c.isPunct() || c.isSymbol() || c.isSpace();
    };
    if (std::all_of(text.begin(), text.end(), plain)) {
        QString folded = text;
        for (QChar& c : folded) {
            if (c >= u'A' && c <= u'Z')
                c = QChar(c.unicode() + (u'a' - u'A'));
        }
        return folded;
    }
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

int SnippetSearch::fieldScore(QStringView text, QStringView query) {
    const qsizetype length = query.size();
    if (length == 0)
        return 1;
    constexpr qsizetype maxPath = 64;
    const qsizetype scored = std::min(length, maxPath);
    qsizetype path[maxPath];
    std::fill_n(path, scored, qsizetype(0));

    // The query as one piece first. A piece where a word starts is as good as it gets: no
    // scattered letters are looked for then. (Each search for a character is a vectorised scan:
    // this is what keeps a keystroke quick over a large library.)
    const char16_t* chars = text.utf16();
    const char16_t* wanted = query.utf16();
    const qsizetype size = text.size();
    const QChar first(wanted[0]);
    int best = 0;
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
            for (qsizetype i = text.indexOf(letter, any + 1); i >= 0; i = text.indexOf(letter, i + 1))
                if (isWordStart(text, i)) {
                    chosen = i;
                    break;
                }
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

void SnippetSearch::rebuild(const QList<Snippet>& snippets, const QList<Category>& categories) {
    QHash<QUuid, QString> categoryNames;
    for (const Category& category : categories)
        categoryNames.insert(category.id, fold(category.name));
    // A snippet whose category is gone is shown in the default one, and found by its name.
    const QString fallback = categoryNames.value(Category::defaultCategoryId);
    m_entries.clear();
    m_entries.reserve(snippets.size());
    for (const Snippet& snippet : snippets) {
        Entry entry{fold(snippet.command), categoryNames.value(snippet.categoryId, fallback),
                    fold(snippet.content.left(searchedContentLength)), snippet.command, snippet.id,
                    {}, 0};
        entry.commandStart = commandStart(entry.command);
        m_entries.append(std::move(entry));
    }
    m_lastValid = false;
}

void SnippetSearch::setUsage(const QHash<QUuid, SnippetUsage>& usage) {
    for (Entry& entry : m_entries)
        entry.usage = usage.value(entry.id);
}

qint64 SnippetSearch::score(const Entry& entry, const QStringList& words, const QString& exact,
                            const QString& foldedExact) {
    qint64 total = 0;
    const QStringView command = entry.command;
    const qsizetype start = entry.commandStart;
    for (const QString& word : words) {
        int best = 0;
        if (const int inCommand = fieldScore(command, word)) {
            int points = inCommand * commandWeight;
            if (command.startsWith(word) || command.sliced(start).startsWith(word))
                points += commandPrefixPoints;
            else if (start < command.size() && command[start] == word[0])
                points += commandStartPoints;
            best = points;
        }
        // What the best possible match elsewhere scores: every letter starting a word.
        const int ceiling = int(word.size()) * (letterPoints + wordStartPoints + adjacentPoints);
        if (best < ceiling)
            best = std::max(best, fieldScore(entry.content, word));
        if (best < ceiling)
            best = std::max(best, fieldScore(entry.category, word));
        if (best == 0)
            return 0;
        total += best;
    }
    if (!exact.isEmpty() && entry.rawCommand == exact)
        total += 2 * exactCommandPoints;
    else if (!foldedExact.isEmpty() && entry.command == foldedExact)
        total += exactCommandPoints;
    return std::max<qint64>(total, 1);
}

SnippetSearch::Result SnippetSearch::rank(const QString& query, qsizetype limit) {
    const QString folded = fold(query);
    static const QRegularExpression spaces(QStringLiteral("\\s+"));
    const QStringList words = folded.split(spaces, Qt::SkipEmptyParts);
    const QString exact = query.trimmed();
    const QString foldedExact = folded.trimmed();

    // Every letter added to a query can only narrow what it matches.
    const bool narrowing = m_lastValid && folded.startsWith(m_lastQuery);
    struct Scored {
        qsizetype row;
        qint64 score;
    };
    QList<Scored> scored;
    const auto consider = [&](qsizetype row) {
        if (const qint64 points = score(m_entries[row], words, exact, foldedExact))
            scored.append({row, points});
    };
    if (narrowing) {
        scored.reserve(m_lastMatches.size());
        for (const qsizetype row : std::as_const(m_lastMatches))
            consider(row);
    } else {
        scored.reserve(m_entries.size());
        for (qsizetype row = 0; row < m_entries.size(); ++row)
            consider(row);
    }
    m_lastQuery = folded;
    m_lastMatches.resize(scored.size());
    for (qsizetype i = 0; i < scored.size(); ++i)
        m_lastMatches[i] = scored[i].row;
    m_lastValid = true;

    const auto better = [this](const Scored& a, const Scored& b) {
        if (a.score != b.score)
            return a.score > b.score;
        const SnippetUsage& ua = m_entries[a.row].usage;
        const SnippetUsage& ub = m_entries[b.row].usage;
        if (ua.count != ub.count)
            return ua.count > ub.count;
        if (ua.lastUsedMs != ub.lastUsedMs)
            return ua.lastUsedMs > ub.lastUsedMs;
        return a.row < b.row;
    };
    const qsizetype shown = std::min(limit, scored.size());
    std::partial_sort(scored.begin(), scored.begin() + shown, scored.end(), better);
    Result result;
    result.matches = scored.size();
    result.rows.reserve(shown);
    for (qsizetype i = 0; i < shown; ++i)
        result.rows.append(scored[i].row);
    return result;
}
