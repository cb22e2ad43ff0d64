#include "reports/chart_days.h"

#include "model/fatal.h"

namespace kivo {

std::vector<QDate> chartDays(QDate today, int daysAgo) {
    if (daysAgo < 0) {
        fatal("a chart cannot show a negative number of days");
    }
    std::vector<QDate> days;
    days.reserve(static_cast<std::size_t>(daysAgo));
    for (int i = 0; i < daysAgo; ++i) {
        days.push_back(today.addDays(i - daysAgo + 1));
    }
    return days;
}

QString dayLabel(QDate date) {
    return date.toString(u"M/d");
}

}  // namespace kivo
