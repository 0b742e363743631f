#include "KeystrokeBuffer.h"

#include "GraphemeText.h"

void KeystrokeBuffer::append(const QString& text) {
    if (text.isEmpty())
        return;
    // Only the last character can change (a mark or joiner joins it), so only it and the new
    // ones are segmented and normalised again.
    const qsizetype firstChanged = std::max<qsizetype>(0, m_starts.size() - 1);
    const qsizetype from = m_text.size();
    m_text.append(text);
    GraphemeText::extendClusterStarts(m_text, from, m_starts);
    m_canonical.resize(firstChanged);
    for (qsizetype i = firstChanged; i < m_starts.size(); ++i) {
        const qsizetype end = i + 1 < m_starts.size() ? m_starts[i + 1] : m_text.size();
        m_canonical.append(GraphemeText::canonical(QStringView(m_text).mid(m_starts[i], end - m_starts[i])));
    }
}

void KeystrokeBuffer::removeLast() {
    if (m_starts.isEmpty())
        return;
    m_text.truncate(m_starts.last());
    m_starts.removeLast();
    m_canonical.removeLast();
}

void KeystrokeBuffer::clear() {
    m_text.clear();
    m_starts.clear();
    m_canonical.clear();
}
