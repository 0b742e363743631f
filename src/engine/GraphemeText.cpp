#include "GraphemeText.h"

#include <QTextBoundaryFinder>

QList<qsizetype> GraphemeText::clusterStarts(QStringView text) {
    QList<qsizetype> starts;
    extendClusterStarts(text, 0, starts);
    return starts;
}

void GraphemeText::extendClusterStarts(QStringView text, qsizetype from,
                                       QList<qsizetype>& starts) {
    qsizetype position = from;
    while (position < text.size()) {
        const qsizetype next =
            position + ((text[position].isHighSurrogate() && position + 1 < text.size() &&
                         text[position + 1].isLowSurrogate())
                            ? 2
                            : 1);
        // Printable ASCII never joins a neighbouring printable ASCII character; this keeps
        // ordinary commands and typing away from the full boundary rules.
        const auto printableAscii = [](QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0x7F; };
        if (starts.isEmpty() ||
            (printableAscii(text[position]) && position > 0 && printableAscii(text[position - 1]))) {
            starts.append(position);
            position = next;
            continue;
        }
        // Re-segment the last cluster with the new code point; everything before it is settled.
        const qsizetype lastStart = starts.takeLast();
        const QStringView tail = text.mid(lastStart, next - lastStart);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, tail.data(), tail.size());
        qsizetype boundary = 0;
        while (boundary >= 0 && boundary < tail.size()) {
            starts.append(lastStart + boundary);
            boundary = finder.toNextBoundary();
        }
        position = next;
    }
}

QStringList GraphemeText::clusters(QStringView text) {
    const QList<qsizetype> starts = clusterStarts(text);
    QStringList result;
    result.reserve(starts.size());
    for (qsizetype i = 0; i < starts.size(); ++i) {
        const qsizetype end = i + 1 < starts.size() ? starts[i + 1] : text.size();
        result.append(text.mid(starts[i], end - starts[i]).toString());
    }
    return result;
}

qsizetype GraphemeText::count(QStringView text) { return clusterStarts(text).size(); }

QString GraphemeText::canonical(QStringView cluster) {
    return cluster.toString().normalized(QString::NormalizationForm_D);
}

bool GraphemeText::endsWith(QStringView text, QStringView suffix) {
    const QStringList textClusters = clusters(text);
    const QStringList suffixClusters = clusters(suffix);
    if (suffixClusters.size() > textClusters.size())
        return false;
    const qsizetype offset = textClusters.size() - suffixClusters.size();
    for (qsizetype i = 0; i < suffixClusters.size(); ++i) {
        const QString& a = textClusters[offset + i];
        const QString& b = suffixClusters[i];
        if (a != b && canonical(a) != canonical(b))
            return false;
    }
    return true;
}
