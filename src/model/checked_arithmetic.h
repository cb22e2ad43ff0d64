#pragma once

#include <cmath>
#include <cstdint>

#include "model/fatal.h"

namespace kivo {

// Durations are summed in 64-bit integers; a sum that does not fit is a fault, never a wrap.
inline std::int64_t checkedAdd(std::int64_t left, std::int64_t right) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(left, right, &sum)) {
        fatal("a duration sum overflows a 64-bit integer");
    }
    return sum;
}

namespace detail {

// A value that is not finite or that no 64-bit integer can hold is a fault.
inline std::int64_t checkedWholeSeconds(double whole) {
    // 2^63 is exact as a double; every double below it converts without overflow.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(whole) || whole >= limit || whole < -limit) {
        fatal("a duration is not finite or does not fit a 64-bit integer");
    }
    return static_cast<std::int64_t>(whole);
}

}  // namespace detail

// The whole seconds of `seconds`, truncated toward zero.
inline std::int64_t wholeSeconds(double seconds) {
    return detail::checkedWholeSeconds(std::trunc(seconds));
}

// The whole seconds nearest to `seconds`, halves away from zero: a stopwatch's reading, which
// neither gains nor loses on average.
inline std::int64_t nearestWholeSeconds(double seconds) {
    return detail::checkedWholeSeconds(std::round(seconds));
}

}  // namespace kivo
