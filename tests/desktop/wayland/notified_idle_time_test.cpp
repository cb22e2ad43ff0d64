#include "desktop/wayland/notified_idle_time.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <vector>

#include "support/manual_clock.h"

namespace kivo {
namespace {

using std::chrono::milliseconds;
using Change = IdleNotifier::Change;

// What the fake desktop behind every connection knows: the notifications asked for, the changes
// it has sent and not yet had read, whether the current connection still works.
struct FakeCompositor {
    int connections = 0;
    bool isReachable = true;
    bool isConnected = false;
    std::vector<milliseconds> asked;
    std::deque<Change> unread;
    IdleNotifier::Listener listener;
};

class FakeIdleNotifier final : public IdleNotifier {
public:
    explicit FakeIdleNotifier(FakeCompositor& compositor) : compositor_(compositor) {
        ++compositor_.connections;
        compositor_.isConnected = true;
    }
    ~FakeIdleNotifier() override {
        compositor_.isConnected = false;
        compositor_.listener = nullptr;
    }

    void notifyAfter(milliseconds timeout, Listener listener) override {
        compositor_.asked.push_back(timeout);
        compositor_.unread.clear();  // news of the old notification is dropped with it
        compositor_.listener = std::move(listener);
    }
    bool update() override {
        if (!compositor_.isConnected) {
            return false;
        }
        for (; !compositor_.unread.empty(); compositor_.unread.pop_front()) {
            compositor_.listener(compositor_.unread.front());
        }
        return true;
    }

private:
    FakeCompositor& compositor_;
};

class NotifiedIdleTimeTest : public ::testing::Test {
protected:
    NotifiedIdleTime::Connect connect() {
        return [this]() -> std::unique_ptr<IdleNotifier> {
            if (!compositor_.isReachable) {
                return nullptr;
            }
            return std::make_unique<FakeIdleNotifier>(compositor_);
        };
    }

    double timeout_ = 300.0;
    FakeCompositor compositor_;
    test::ManualClock clock_;
    NotifiedIdleTime idle_{connect(), [this] { return timeout_; }, clock_};
};

TEST_F(NotifiedIdleTimeTest, IdleTimeIsTheTimeoutPlusTheTimeSinceTheNotificationFired) {
    // Each step: seconds passing, then a change the compositor sends (if any), then the answer.
    const struct {
        double advance;
        std::optional<Change> change;
        double expected;
    } steps[] = {
        {0.0, std::nullopt, 0.0},       // connects and asks; no news yet
        {200.0, std::nullopt, 0.0},     // below the timeout: all that matters, all that is known
        {100.0, Change::idled, 300.0},  // fires: exactly the timeout
        {7.5, std::nullopt, 307.5},     // then the time since it fired
        {60.0, std::nullopt, 367.5},    // ...however long
        {1.0, Change::resumed, 0.0},    // input again
        {299.0, std::nullopt, 0.0},     // the count restarts with the input
        {1.0, Change::idled, 300.0},    // idle again: from the timeout again
        {2.0, std::nullopt, 302.0},     // not from the first idleness
    };
    for (const auto& step : steps) {
        clock_.advance(step.advance);
        if (step.change) {
            compositor_.unread.push_back(*step.change);
        }
        const auto idle = idle_.idleTime();
        ASSERT_TRUE(idle.has_value());
        EXPECT_DOUBLE_EQ(idle->count(), step.expected);
    }
    EXPECT_EQ(compositor_.connections, 1);
    EXPECT_EQ(compositor_.asked, std::vector<milliseconds>{milliseconds{300'000}});
}

TEST_F(NotifiedIdleTimeTest, TheUserIsAwayFromTheFirstTickAfterTheNotificationFired) {
    timeout_ = 5.0;
    EXPECT_EQ(currentPresence(idle_, timeout_), Presence::present);
    clock_.advance(5.0);
    compositor_.unread.push_back(Change::idled);
    // Read as it arrives, the notification says exactly the timeout: not beyond it yet.
    EXPECT_EQ(currentPresence(idle_, timeout_), Presence::present);
    clock_.advance(1.0);
    EXPECT_EQ(currentPresence(idle_, timeout_), Presence::idle);
    compositor_.unread.push_back(Change::resumed);
    EXPECT_EQ(currentPresence(idle_, timeout_), Presence::present);
}

TEST_F(NotifiedIdleTimeTest, AChangedTimeoutAsksAgainAndForgetsWhatTheOldNotificationSaid) {
    ASSERT_TRUE(idle_.idleTime());
    compositor_.unread.push_back(Change::idled);
    clock_.advance(10.0);
    EXPECT_EQ(idle_.idleTime(), Seconds{300.0});
    clock_.advance(10.0);
    timeout_ = 600.0;
    EXPECT_EQ(idle_.idleTime(), Seconds{0.0}) << "the new notification counts from now";
    EXPECT_EQ(idle_.idleTime(), Seconds{0.0});
    EXPECT_EQ(compositor_.asked,
              (std::vector<milliseconds>{milliseconds{300'000}, milliseconds{600'000}}));
    EXPECT_EQ(compositor_.connections, 1);

    // Off: the connection goes and nothing is told; on again, a new one asks once.
    timeout_ = 0.0;
    EXPECT_EQ(idle_.idleTime(), std::nullopt);
    EXPECT_FALSE(compositor_.isConnected);
    timeout_ = 60.0;
    EXPECT_EQ(idle_.idleTime(), Seconds{0.0});
    EXPECT_EQ(compositor_.connections, 2);
    EXPECT_EQ(compositor_.asked.back(), milliseconds{60'000});
    EXPECT_EQ(compositor_.asked.size(), 3u);
}

TEST_F(NotifiedIdleTimeTest, ABrokenConnectionTellsNothingAndALaterCallConnectsAgain) {
    ASSERT_TRUE(idle_.idleTime());
    compositor_.unread.push_back(Change::idled);
    ASSERT_EQ(idle_.idleTime(), Seconds{300.0});

    compositor_.isConnected = false;  // the compositor went away
    compositor_.isReachable = false;
    EXPECT_EQ(idle_.idleTime(), std::nullopt);
    EXPECT_EQ(idle_.idleTime(), std::nullopt) << "while it cannot be reached";
    compositor_.isReachable = true;
    clock_.advance(30.0);
    EXPECT_EQ(idle_.idleTime(), Seconds{0.0}) << "a new connection has no notification fired";
    EXPECT_EQ(compositor_.connections, 2);
    EXPECT_EQ(compositor_.asked.size(), 2u);
}

TEST_F(NotifiedIdleTimeTest, AClockSetBackNeverMakesAnIdleUserLookPresent) {
    ASSERT_TRUE(idle_.idleTime());
    compositor_.unread.push_back(Change::idled);
    clock_.advance(20.0);
    ASSERT_EQ(idle_.idleTime(), Seconds{300.0}) << "read only now, the change counts from now";
    clock_.advance(20.0);
    ASSERT_EQ(idle_.idleTime(), Seconds{320.0});
    clock_.advance(-3600.0);
    EXPECT_EQ(idle_.idleTime(), Seconds{300.0});
}

TEST(NotificationTimeout, WholeMillisecondsWithinWhatTheProtocolsCarry) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double seconds;
        std::optional<milliseconds> expected;
    } cases[] = {
        {300.0, milliseconds{300'000}},
        {1.5, milliseconds{1'500}},
        {2.0004, milliseconds{2'000}},
        {0.0001, milliseconds{1}},  // a timeout too short to express still notifies
        {1e12, milliseconds{std::numeric_limits<std::uint32_t>::max()}},
        {0.0, std::nullopt},
        {-5.0, std::nullopt},
        {nan, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(NotifiedIdleTime::notificationTimeout(c.seconds), c.expected) << c.seconds;
    }
}

}  // namespace
}  // namespace kivo
