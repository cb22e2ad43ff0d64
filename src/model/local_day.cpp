#include "model/local_day.h"

#include <QDateTime>
#include <cmath>

namespace kivo {

namespace {

Instant instantOf(const QDateTime& dateTime) {
    return fromEpochSeconds(static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0);
}

}  // namespace

DayRange localDay(QDate date) {
    return localDays(date, date);
}

Instant localDayStart(QDate date) {
    // startOfDay() takes the first valid moment, so a day whose midnight is skipped by a
    // daylight-saving change still starts at its first existing instant.
    return instantOf(date.startOfDay());
}

DayRange localDays(QDate first, QDate last) {
    return {localDayStart(first), localDayStart(last.addDays(1))};
}

QDate localDateOf(Instant instant) {
    const auto msecs = static_cast<qint64>(std::floor(toEpochSeconds(instant) * 1000.0));
    return QDateTime::fromMSecsSinceEpoch(msecs).date();
}

DayRange localDayContaining(Instant instant) {
    return localDay(localDateOf(instant));
}

}  // namespace kivo
