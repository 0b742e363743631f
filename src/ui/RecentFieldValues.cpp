#include "RecentFieldValues.h"

#include <QDateTime>

RecentFieldValues::RecentFieldValues(Clock clock)
    : m_clock(clock ? std::move(clock) : Clock([] { return QDateTime::currentMSecsSinceEpoch(); })) {}

void RecentFieldValues::remember(const QUuid& snippet, const QHash<QString, QString>& values) {
    m_given.insert(snippet, Given{values, m_clock()});
}

QHash<QString, QString> RecentFieldValues::recall(const QUuid& snippet) {
    const auto found = m_given.constFind(snippet);
    if (found == m_given.cend())
        return {};
    if (m_clock() - found->at > keptMs) {
        m_given.erase(found); // nothing older than a day stays in memory
        return {};
    }
    return found->values;
}
