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

// Most commands differ from a query at the first character: compared here without a call.
bool startsWith(QStringView text, QStringView prefix) {
    if (prefix.size() > text.size())
        return false;
    for (qsizetype i = 0; i < prefix.size(); ++i)
        if (text[i] != prefix[i])
            return false;
    return true;
}

bool same(QStringView a, QStringView b) { return a.size() == b.size() && startsWith(a, b); }
} // namespace

SnippetSearch::SnippetSearch() = default;
SnippetSearch::~SnippetSearch() = default;

void SnippetSearch::rebuild(const QList<Snippet>& snippets, const QList<Category>& categories) {
    setIndex(std::make_shared<const SnippetIndex>(snippets, categories, m_index.get()));
}

void SnippetSearch::setIndex(std::shared_ptr<const SnippetIndex> index) {
    m_index = index ? std::move(index) : std::make_shared<const SnippetIndex>();
    while (!m_steps.isEmpty())
        dropLastStep();
    mapUsage();
}

void SnippetSearch::dropLastStep() {
    constexpr qsizetype keptLists = 4;
    QList<Scored> scored = std::move(m_steps.last().scored);
    m_steps.removeLast();
    if (m_spareLists.size() < keptLists) {
        scored.clear(); // keeps its memory
        m_spareLists.append(std::move(scored));
    }
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

int SnippetSearch::wordScore(const SnippetIndex::Entry& entry, const Word& word) {
    int best = 0;
    if (const int inCommand = entry.command.score(word.text, word.letters)) {
        const QStringView command = entry.command.text();
        const qsizetype start = entry.commandStart;
        int points = inCommand * commandWeight;
        if (startsWith(command, word.text) || startsWith(command.sliced(start), word.text))
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
    return best;
}

SnippetSearch::Rescore SnippetSearch::rescoreFor(const QList<Word>& earlier,
                                                 const QList<Word>& words) {
    // The query goes on from the earlier one, so its words begin with the earlier words but the
    // last, and that one is the same, grown, or followed by new words.
    if (earlier.isEmpty() || words.size() < earlier.size())
        return {};
    const qsizetype last = earlier.size() - 1;
    if (words.size() == earlier.size())
        return {true, false, words[last].text == earlier[last].text ? words.size() : last};
    if (words[last].text == earlier[last].text)
        return {true, true, earlier.size()};
    return {};
}

void SnippetSearch::scoreRows(const QList<Scored>* earlier, qsizetype from, qsizetype to,
                              const QList<Word>& words, Rescore rescore, const QString& exact,
                              const QString& foldedExact, QList<Scored>& scored) const {
    const QList<SnippetIndex::Entry>& entries = m_index->entries();
    const QList<Snippet>& snippets = m_index->snippets();
    const qsizetype lastWord = words.size() - 1;
    // A search reads each entry and its content's word starts from memory the cache has mostly
    // lost since the last keystroke: they are asked for some rows ahead, to arrive meanwhile.
    constexpr qsizetype entryAhead = 16;
    constexpr qsizetype wordStartsAhead = 8;
    const auto rowAt = [earlier](qsizetype i) { return earlier ? earlier->at(i).row : i; };
    for (qsizetype i = from; i < to; ++i) {
        if (i + entryAhead < to) {
            const SnippetIndex::Entry& ahead = entries[rowAt(i + entryAhead)];
            __builtin_prefetch(&ahead.command);
            __builtin_prefetch(&ahead.content);
        }
        if (i + wordStartsAhead < to)
            entries[rowAt(i + wordStartsAhead)].content.prefetch();
        const Scored* before = earlier ? &earlier->at(i) : nullptr;
        const qsizetype row = before ? before->row : i;
        const SnippetIndex::Entry& entry = entries[row];
        qint64 done = 0;
        int last = 0;
        if (before) {
            done = rescore.keepDone ? before->done : 0;
            if (rescore.addLast)
                done += before->last;
            else if (rescore.firstNew > lastWord)
                last = before->last;
        }
        bool matched = true;
        for (qsizetype w = rescore.firstNew; w <= lastWord; ++w) {
            const int points = wordScore(entry, words[w]);
            if (points == 0) {
                matched = false;
                break;
            }
            if (w < lastWord)
                done += points;
            else
                last = points;
        }
        if (!matched)
            continue;
        qint64 total = std::max<qint64>(done + last, 1);
        const QString& command = snippets[row].command;
        if (!exact.isEmpty() && same(command, exact))
            total += 2 * exactCommandPoints;
        else if (!foldedExact.isEmpty() && same(entry.command.text(), foldedExact))
            total += exactCommandPoints;
        scored.append({row, total, done, last});
    }
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
        dropLastStep();
    if (m_steps.isEmpty() || m_steps.last().query != folded) {
        const Step* earlierStep = m_steps.isEmpty() ? nullptr : &m_steps.last();
        const QList<Scored>* earlier = earlierStep ? &earlierStep->scored : nullptr;
        const Rescore rescore = earlierStep ? rescoreFor(earlierStep->words, words) : Rescore{};
        const qsizetype count = earlier ? earlier->size() : m_index->size();
        // Room for every row looked at, so that the second thread's share joins without a copy
        // of the first's.
        QList<Scored> scored;
        for (qsizetype s = 0; s < m_spareLists.size(); ++s)
            if (m_spareLists[s].capacity() >= count) {
                scored = m_spareLists.takeAt(s);
                break;
            }
        scored.reserve(count);
        if (count > sharedScoringAbove) {
            if (!m_helper) {
                m_helper = std::make_unique<QThreadPool>();
                m_helper->setMaxThreadCount(1);
                // A thread that waits for the next keystroke starts it sooner than a new one.
                m_helper->setExpiryTimeout(-1);
            }
            const qsizetype half = count / 2;
            QList<Scored>& secondScored = m_secondScored;
            secondScored.clear();
            QFuture<void> second = QtConcurrent::run(m_helper.get(), [&] {
                secondScored.reserve(count - half);
                scoreRows(earlier, half, count, words, rescore, exact, foldedExact, secondScored);
            });
            scoreRows(earlier, 0, half, words, rescore, exact, foldedExact, scored);
            second.waitForFinished();
            scored.append(secondScored);
        } else {
            scoreRows(earlier, 0, count, words, rescore, exact, foldedExact, scored);
        }
        m_steps.append({folded, words, std::move(scored)});
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
    // The order is total, so the step's own list is sorted where it is: the queries that go on
    // from it read its rows in any order.
    QList<Scored>& scored = m_steps.last().scored;
    const qsizetype shown = std::min(limit, scored.size());
    std::partial_sort(scored.begin(), scored.begin() + shown, scored.end(), better);
    Result result;
    result.matches = scored.size();
    result.rows.reserve(shown);
    for (qsizetype i = 0; i < shown; ++i)
        result.rows.append(scored[i].row);
    return result;
}
