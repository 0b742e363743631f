#include "SnippetSearch.h"

#include <QRegularExpression>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>
#include <algorithm>

namespace {
constexpr int commandStartPoints = 40;   // the query's first letter is the command's first
constexpr int commandPrefixPoints = 120; // the command begins with the query
constexpr int commandWeight = 2;         // a command is what the user named the snippet by
constexpr qint64 exactCommandPoints = 1'000'000'000;
} // namespace

SnippetSearch::SnippetSearch() = default;
SnippetSearch::~SnippetSearch() = default;

void SnippetSearch::rebuild(const QList<Snippet>& snippets, const QList<Category>& categories) {
    setIndex(std::make_shared<const SnippetIndex>(snippets, categories, m_index.get()));
}

void SnippetSearch::setIndex(std::shared_ptr<const SnippetIndex> index) {
    m_index = index ? std::move(index) : std::make_shared<const SnippetIndex>();
    m_steps.clear();
    mapUsage();
}

void SnippetSearch::setUsage(const QHash<QUuid, SnippetUsage>& usage) {
    m_usageById = usage;
    mapUsage();
}

void SnippetSearch::mapUsage() {
    const QList<Snippet>& snippets = m_index->snippets();
    m_usage.resize(snippets.size());
    for (qsizetype row = 0; row < snippets.size(); ++row)
        m_usage[row] = m_usageById.value(snippets[row].id);
}

qint64 SnippetSearch::score(const SnippetIndex::Entry& entry, const Snippet& snippet,
                            const QList<Word>& words, const QString& exact,
                            const QString& foldedExact) {
    qint64 total = 0;
    const QStringView command = entry.command.text();
    const qsizetype start = entry.commandStart;
    for (const Word& word : words) {
        int best = 0;
        if (const int inCommand = entry.command.score(word.text, word.letters)) {
            int points = inCommand * commandWeight;
            if (command.startsWith(word.text) || command.sliced(start).startsWith(word.text))
                points += commandPrefixPoints;
            else if (start < command.size() && command[start] == word.text[0])
                points += commandStartPoints;
            best = points;
        }
        // What the best possible match elsewhere scores: every letter starting a word.
        const int ceiling = int(word.text.size()) * FoldedText::bestLetterScore;
        if (best < ceiling)
            best = std::max(best, entry.content.score(word.text, word.letters));
        if (best < ceiling)
            best = std::max(best, entry.category.score(word.text, word.letters));
        if (best == 0)
            return 0;
        total += best;
    }
    if (!exact.isEmpty() && snippet.command == exact)
        total += 2 * exactCommandPoints;
    else if (!foldedExact.isEmpty() && command == foldedExact)
        total += exactCommandPoints;
    return std::max<qint64>(total, 1);
}

QList<SnippetSearch::Scored> SnippetSearch::scoreRows(const QList<Scored>* earlier,
                                                      qsizetype from, qsizetype to,
                                                      const QList<Word>& words,
                                                      const QString& exact,
                                                      const QString& foldedExact) const {
    const QList<SnippetIndex::Entry>& entries = m_index->entries();
    const QList<Snippet>& snippets = m_index->snippets();
    QList<Scored> scored;
    scored.reserve(to - from);
    for (qsizetype i = from; i < to; ++i) {
        const qsizetype row = earlier ? earlier->at(i).row : i;
        if (const qint64 points = score(entries[row], snippets[row], words, exact, foldedExact))
            scored.append({row, points});
    }
    return scored;
}

SnippetSearch::Result SnippetSearch::rank(const QString& query, qsizetype limit) {
    const QString folded = fold(query);
    static const QRegularExpression spaces(QStringLiteral("\\s+"));
    QList<Word> words;
    for (const QString& word : folded.split(spaces, Qt::SkipEmptyParts))
        words.append({word, FoldedText::lettersOf(word)});
    const QString exact = query.trimmed();
    const QString foldedExact = folded.trimmed();

    // Every letter added to a query can only narrow what it matches: the latest earlier query
    // this one goes on from holds every match there is.
    while (!m_steps.isEmpty() && !folded.startsWith(m_steps.last().query))
        m_steps.removeLast();
    QList<Scored> scored;
    if (!m_steps.isEmpty() && m_steps.last().query == folded) {
        scored = m_steps.last().scored;
    } else {
        const QList<Scored>* earlier = m_steps.isEmpty() ? nullptr : &m_steps.last().scored;
        const qsizetype count = earlier ? earlier->size() : m_index->size();
        if (count > sharedScoringAbove) {
            if (!m_helper) {
                m_helper = std::make_unique<QThreadPool>();
                m_helper->setMaxThreadCount(1);
            }
            const qsizetype half = count / 2;
            QFuture<QList<Scored>> second = QtConcurrent::run(m_helper.get(), [&] {
                return scoreRows(earlier, half, count, words, exact, foldedExact);
            });
            scored = scoreRows(earlier, 0, half, words, exact, foldedExact);
            scored.append(second.result());
        } else {
            scored = scoreRows(earlier, 0, count, words, exact, foldedExact);
        }
        m_steps.append({folded, scored});
    }

    const auto better = [this](const Scored& a, const Scored& b) {
        if (a.score != b.score)
            return a.score > b.score;
        const SnippetUsage& ua = m_usage[a.row];
        const SnippetUsage& ub = m_usage[b.row];
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
