#pragma once

#include "Category.h"
#include "FoldedText.h"
#include "Snippet.h"

#include <QList>

// The library's texts as the insert window's search reads them: each snippet's command,
// content and category name folded and summarised (see FoldedText), in the order of the
// snippet list it was made from, which it keeps. Never changed once made, so a search on one
// thread can read it while the next one is made on another.
class SnippetIndex {
public:
    // Only this much of a content is searched: enough for any text a user recognises a snippet
    // by, and it keeps a keystroke quick whatever the library holds.
    static constexpr qsizetype searchedContentLength = 2000;

    struct Entry {
        FoldedText command;
        FoldedText content;
        FoldedText category;
        qsizetype commandStart = 0; // its first letter or digit: ";addr" starts at "a"
    };

    SnippetIndex() = default;
    // Folds the texts of `snippets`. A snippet whose command and content `previous` already
    // holds unchanged is taken from it rather than folded again: after an edit, only the
    // edited snippets cost anything.
    SnippetIndex(QList<Snippet> snippets, const QList<Category>& categories,
                 const SnippetIndex* previous = nullptr);

    const QList<Snippet>& snippets() const { return m_snippets; }
    const QList<Entry>& entries() const { return m_entries; }
    qsizetype size() const { return m_entries.size(); }
    // How many snippets were taken from the previous index rather than folded.
    qsizetype reused() const { return m_reused; }

private:
    QList<Snippet> m_snippets;
    QList<Entry> m_entries;
    qsizetype m_reused = 0;
};
