#pragma once

#include <QList>
#include <QString>
#include <QStringView>

// Text as the user sees it: a character is an extended grapheme cluster, and two characters are
// the same when they are canonically equivalent (é typed precomposed or as e + accent).
class GraphemeText {
public:
    // Offsets where each grapheme cluster of `text` starts.
    static QList<qsizetype> clusterStarts(QStringView text);

    // Given the cluster starts of text[0, from), extends `starts` to cover all of `text`.
    //
    // Clusters are found one code point at a time: each code point either joins the last
    // cluster or starts new ones. That is exactly how typed text grows, so text segmented
    // whole and text typed key by key always agree. (Segmenting whole texts in one pass also
    // mis-pairs regional indicators after an emoji in the Unicode tables we build against.)
    static void extendClusterStarts(QStringView text, qsizetype from, QList<qsizetype>& starts);
    static QStringList clusters(QStringView text);
    static qsizetype count(QStringView text);

    // The form in which canonically equivalent clusters are equal strings.
    static QString canonical(QStringView cluster);

    // True when the last characters of `text` are canonically equivalent to those of `suffix`,
    // compared cluster by cluster. Every text ends with the empty text.
    static bool endsWith(QStringView text, QStringView suffix);
};
