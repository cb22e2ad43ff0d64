#pragma once

#include <QDate>
#include <QString>
#include <vector>

namespace kivo {

// The `daysAgo` days that end with `today`, oldest first. A negative count stops the program.
std::vector<QDate> chartDays(QDate today, int daysAgo);

// A chart's day label: month and day without leading zeros, "3/7".
QString dayLabel(QDate date);

}  // namespace kivo
