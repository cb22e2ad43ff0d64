#pragma once

#include <chrono>

namespace kivo {

// The wall time that one tick may spend matching captures against filters, in all. Searches stop
// at its end, so that a thousand patterns that backtrack without end cost one budget per tick
// instead of freezing the tracker.
class MatchBudget {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds perTick{50};

    explicit MatchBudget(Clock::duration total = perTick) : deadline_(Clock::now() + total) {}

    Clock::time_point deadline() const { return deadline_; }
    bool isSpent() const { return Clock::now() >= deadline_; }

private:
    Clock::time_point deadline_;
};

}  // namespace kivo
