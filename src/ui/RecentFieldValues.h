#pragma once

#include <QHash>
#include <QString>
#include <QUuid>
#include <functional>

// The values last given to each snippet's form, offered again the next time it opens within a
// day. What people type into a form can be private (names, addresses, notes), so they are kept
// in this program's memory only: never written to disk, never logged, gone when Typolet quits.
class RecentFieldValues {
public:
    // Milliseconds since the epoch; injectable so that a day can pass in a test.
    using Clock = std::function<qint64()>;
    static constexpr qint64 keptMs = qint64(24) * 60 * 60 * 1000;

    explicit RecentFieldValues(Clock clock = {});

    void remember(const QUuid& snippet, const QHash<QString, QString>& values);
    // The values given to `snippet`'s form within the last 24 hours; none after that.
    QHash<QString, QString> recall(const QUuid& snippet);

private:
    struct Given {
        QHash<QString, QString> values;
        qint64 at = 0;
    };
    Clock m_clock;
    QHash<QUuid, Given> m_given;
};
