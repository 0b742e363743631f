#pragma once

#include "Category.h"
#include "Snippet.h"
#include "SnippetUsage.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>

// Finds snippets by a few typed letters, for the insert window: the letters must come in order
// in the command, the content or the category's name (not necessarily side by side), letter
// case and accents ignored. Matches at the start of words and at the command's start rank
// first; a query that is exactly a snippet's command puts that snippet at the top. Snippets
// that rank the same are ordered by how often, then how recently, they were used.
//
// rebuild() folds every text once (case, accents, compatibility forms), so a keystroke only
// compares prepared text. A query that goes on from the previous one only looks again at the
// snippets the previous one matched.
class SnippetSearch {
public:
    // Only this much of a content is searched: enough for any text a user recognises a snippet
    // by, and it keeps a keystroke quick whatever the library holds.
    static constexpr qsizetype searchedContentLength = 2000;

    struct Result {
        QList<qsizetype> rows; // indexes in the snippet list given to rebuild(), best first
        qsizetype matches = 0; // how many snippets matched; `rows` holds at most `limit`
    };

    void rebuild(const QList<Snippet>& snippets, const QList<Category>& categories);
    qsizetype size() const { return m_entries.size(); }
    // The usage counts that order snippets ranked alike; kept until the next call.
    void setUsage(const QHash<QUuid, SnippetUsage>& usage);

    // The best `limit` matches of `query` (every snippet for a blank query), ranked. Words
    // separated by spaces may each match a different field.
    Result rank(const QString& query, qsizetype limit = 100);

    // How well `query` matches `text`; 0 when its letters are not all in `text` in order.
    // Both already folded (see fold()).
    static int fieldScore(QStringView text, QStringView query);
    // Letter case, accents and compatibility forms set aside: "Café" and "cafe" read alike.
    static QString fold(const QString& text);

private:
    struct Entry {
        QString command;
        QString category;
        QString content;
        QString rawCommand;
        QUuid id;
        SnippetUsage usage;
        qsizetype commandStart = 0; // its first letter or digit: ";addr" starts at "a"
    };
    // 0 when some word of the query matches no field.
    static qint64 score(const Entry& entry, const QStringList& words, const QString& exact,
                        const QString& foldedExact);

    QList<Entry> m_entries;
    // The previous query and the snippets it matched, for a query that goes on from it.
    QString m_lastQuery;
    QList<qsizetype> m_lastMatches;
    bool m_lastValid = false;
};
