#pragma once

#include "model/instant.h"

namespace kivo::test {

// A clock that only moves when a test moves it.
class ManualClock final : public Clock {
public:
    explicit ManualClock(Instant start = fromEpochSeconds(1'700'000'000.0)) : now_(start) {}

    Instant now() const override { return now_; }
    void set(Instant instant) { now_ = instant; }
    void advance(double seconds) { now_ += Seconds{seconds}; }

private:
    Instant now_;
};

}  // namespace kivo::test
