#pragma once

#include <QDateTime>

// Record timestamps are seconds (with fraction) since 2001-01-01T00:00:00 UTC, the origin the
// stored JSON uses. Keeping the double itself, rather than a millisecond QDateTime, means a
// stored value always reads back and writes out bit for bit.
class Timestamp {
public:
    // Seconds between the Unix epoch and 2001-01-01T00:00:00 UTC.
    static constexpr double unixOffset = 978307200.0;

    static double now();
    static double fromUnix(double unixSeconds) { return unixSeconds - unixOffset; }
    static double toUnix(double seconds) { return seconds + unixOffset; }
    static QDateTime toDateTime(double seconds);
    static double fromDateTime(const QDateTime& dateTime);
};
