#pragma once

#include <chrono>

namespace kivo {

// Moments are seconds since 1970-01-01T00:00:00Z as a double, the unit the store keeps them in:
// captures accumulate fractions of a second, records keep the exact moment.
using Seconds = std::chrono::duration<double>;
using Instant = std::chrono::sys_time<Seconds>;

inline double toEpochSeconds(Instant instant) {
    return instant.time_since_epoch().count();
}
inline Instant fromEpochSeconds(double seconds) {
    return Instant{Seconds{seconds}};
}

class Clock {
public:
    virtual ~Clock() = default;
    virtual Instant now() const = 0;
};

class SystemClock final : public Clock {
public:
    Instant now() const override {
        return std::chrono::time_point_cast<Seconds>(std::chrono::system_clock::now());
    }
};

}  // namespace kivo
