#include "UsageDescription.h"

#include <QLocale>

QString UsageDescription::describe(const SnippetUsage& usage, const QDateTime& now) {
    if (usage.count <= 0)
        return tr("Not used yet");
    const QDate day = QDateTime::fromMSecsSinceEpoch(usage.lastUsedMs).toLocalTime().date();
    const qint64 daysAgo = day.daysTo(now.toLocalTime().date());
    QString when;
    if (daysAgo <= 0)
        when = tr("today");
    else if (daysAgo == 1)
        when = tr("yesterday");
    else if (daysAgo < 7)
        when = tr("%1 days ago").arg(daysAgo);
    else
        when = tr("on %1").arg(QLocale().toString(day, QLocale::ShortFormat));
    return usage.count == 1 ? tr("Used once, last %1").arg(when)
                            : tr("Used %1 times, last %2").arg(usage.count).arg(when);
}
