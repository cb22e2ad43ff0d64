#pragma once

#include <QDate>
#include <QString>

#include "model/instant.h"

// The benchmarks' store: five years of tracking (about 1.5 million activities with their daily
// totals, 20 projects of 10 tags) ending on a fixed day, built once and cached under /tmp so that
// every run and every benchmark measures the same data.
namespace kivo::five_year_store {

inline const QDate lastDay(2026, 6, 30);
inline const QDate firstDay = lastDay.addYears(-5).addDays(1);
inline const QString storePath = QStringLiteral("/tmp/kivo_reports_bench/kivo-v1.sqlite");

Instant momentOf(QDate day, int secondOfDay);

// Builds the store unless a whole one is cached; a half-written one is never taken for whole.
void seedStoreIfMissing();

// The daily totals alone (the usage reports read nothing else) of the last `years` years of the
// same tracking, to tell how a year's report grows with the data behind it. Built once, cached.
QString totalsStorePath(int years);
void seedTotalsStoreIfMissing(int years);

}  // namespace kivo::five_year_store
