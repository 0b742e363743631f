#pragma once

#include "Category.h"
#include "FoldedText.h"
#include "Snippet.h"
#include "SnippetIndex.h"
#include "SnippetUsage.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>
#include <memory>

class QThreadPool;

// Finds snippets by a few typed letters, for the insert window: the letters must come in order
// in the command, the content or the category's name (not necessarily side by side), letter
// case and accents ignored. Matches at the start of words and at the command's start rank
// first; a query that is exactly a snippet's command puts that snippet at the top. Snippets
// that rank the same are ordered by how often, then how recently, they were used.
//
// The texts are read from a SnippetIndex, folded once, so a keystroke only compares prepared
// text. A query that goes on from an earlier one of the same typing only looks again at the
// snippets that one matched, and going back to it (BackSpace) scores nothing again.
class SnippetSearch {
public:
    // Above this many snippets to look at, two threads score them, half each.
    static constexpr qsizetype sharedScoringAbove = 20000;

    SnippetSearch();
    ~SnippetSearch();
    SnippetSearch(const SnippetSearch&) = delete;
    SnippetSearch& operator=(const SnippetSearch&) = delete;

    static constexpr qsizetype searchedContentLength = SnippetIndex::searchedContentLength;

    struct Result {
        QList<qsizetype> rows; // indexes in the index's snippet list, best first
        qsizetype matches = 0; // how many snippets matched; `rows` holds at most `limit`
    };

    // Makes the index here, reusing what the current one already folded.
    void rebuild(const QList<Snippet>& snippets, const QList<Category>& categories);
    // Searches `index` from now on (one made elsewhere, for example on another thread).
    void setIndex(std::shared_ptr<const SnippetIndex> index);
    const std::shared_ptr<const SnippetIndex>& index() const { return m_index; }
    qsizetype size() const { return m_index->size(); }
    // The usage counts that order snippets ranked alike; kept until the next call.
    void setUsage(const QHash<QUuid, SnippetUsage>& usage);

    // The best `limit` matches of `query` (every snippet for a blank query), ranked. Words
    // separated by spaces may each match a different field.
    Result rank(const QString& query, qsizetype limit = 100);

    // How well `query` matches `text`; 0 when its letters are not all in `text` in order.
    // Both already folded (see fold()).
    static int fieldScore(QStringView text, QStringView query) {
        return FoldedText::score(text, query);
    }
    // Letter case, accents and compatibility forms set aside: "Café" and "cafe" read alike.
    static QString fold(const QString& text) { return FoldedText::fold(text); }

private:
    struct Word {
        QString text;
        quint64 letters;
    };
    struct Scored {
        qsizetype row;
        qint64 score;
    };
    // The matches of one query of the current typing, for the queries that go on from it.
    struct Step {
        QString query;
        QList<Scored> scored;
    };
    // 0 when some word of the query matches no field.
    static qint64 score(const SnippetIndex::Entry& entry, const Snippet& snippet,
                        const QList<Word>& words, const QString& exact,
                        const QString& foldedExact);
    void mapUsage();
    // Scores the snippets at rows [from, to) of `earlier` (of the whole index when null).
    QList<Scored> scoreRows(const QList<Scored>* earlier, qsizetype from, qsizetype to,
                            const QList<Word>& words, const QString& exact,
                            const QString& foldedExact) const;

    std::shared_ptr<const SnippetIndex> m_index = std::make_shared<const SnippetIndex>();
    QHash<QUuid, SnippetUsage> m_usageById;
    QList<SnippetUsage> m_usage; // by row of the index
    // Each earlier query the current one goes on from, shortest first.
    QList<Step> m_steps;
    // The second thread for large libraries, made when first needed.
    std::unique_ptr<QThreadPool> m_helper;
};
