#include "reports/percentage.h"

#include <cmath>

#include "model/fatal.h"

namespace kivo {

double sharePercent(std::int64_t part, std::int64_t whole) {
    return static_cast<double>(part) / static_cast<double>(whole) * 100.0;
}

std::int64_t truncatedPercent(double percent) {
    // 2^63 is exact as a double; every double below it converts without overflow.
    constexpr double limit = 9223372036854775808.0;
    const double whole = std::trunc(percent);
    if (!std::isfinite(whole) || whole >= limit || whole < -limit) {
        fatal("a percentage is not finite or does not fit a 64-bit integer");
    }
    return static_cast<std::int64_t>(whole);
}

QString percentageText(std::int64_t duration, std::int64_t durationTotal) {
    const std::int64_t percent = truncatedPercent(sharePercent(duration, durationTotal));
    return percent == 0 ? QStringLiteral("<1%") : QString::number(percent) + u'%';
}

}  // namespace kivo
