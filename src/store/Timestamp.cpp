#include "Timestamp.h"

#include <chrono>
#include <cmath>

double Timestamp::now() {
    using namespace std::chrono;
    const auto micros =
        duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return fromUnix(static_cast<double>(micros) / 1e6);
}

QDateTime Timestamp::toDateTime(double seconds) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(toUnix(seconds) * 1000.0),
                                          Qt::UTC);
}

double Timestamp::fromDateTime(const QDateTime& dateTime) {
    return fromUnix(static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0);
}
