#pragma once

#include <QDate>

#include "model/instant.h"

namespace kivo {

// One local calendar day as the half-open span [first moment, first moment of the next day).
// Half-open keeps the last second of the day (and its fractions) and is right on days of 23 or
// 25 hours; at whole-second precision it is the day's 00:00:00 to 23:59:59, both included.
struct DayRange {
    Instant begin;
    Instant end;

    bool contains(Instant instant) const { return begin <= instant && instant < end; }
};

DayRange localDay(QDate date);
// The first moment of `date`: where the day before it ends.
Instant localDayStart(QDate date);
DayRange localDayContaining(Instant instant);
QDate localDateOf(Instant instant);

// The span from the first moment of `first` to the end of `last`.
DayRange localDays(QDate first, QDate last);

}  // namespace kivo
