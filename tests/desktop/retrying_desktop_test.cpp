// A session without a usable desktop at start: recording waits and picks up once one appears.
#include "desktop/retrying_desktop.h"

#include <gtest/gtest.h>

#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo {
namespace {

TEST(RetryingDesktopTest, TriesAgainEveryIntervalAndThenAnswersFromTheBackend) {
    test::ManualClock clock;
    int attempts = 0;
    bool isAvailable = false;
    test::FakeFocusedWindow* backend = nullptr;
    RetryingDesktop desktop(
        [&]() -> DesktopChoice {
            ++attempts;
            if (!isAvailable) {
                return {nullptr, QStringLiteral("no window manager")};
            }
            auto focus = std::make_unique<test::FakeFocusedWindow>();
            focus->showEditor();
            backend = focus.get();
            return {std::move(focus), {}};
        },
        clock, Seconds{10.0});

    // Every tick asks, but the choice is tried only once per interval.
    for (int tick = 0; tick < 25; ++tick) {
        EXPECT_FALSE(desktop.focusedWindow());
        clock.advance(1.0);
    }
    EXPECT_EQ(attempts, 2);
    EXPECT_FALSE(desktop.hasBackend());

    isAvailable = true;
    clock.advance(5.0);
    const auto window = desktop.focusedWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->bundleId, test::editorId);
    EXPECT_TRUE(desktop.hasBackend());
    backend->window.reset();
    EXPECT_FALSE(desktop.focusedWindow());
    EXPECT_EQ(attempts, 3);
}

}  // namespace
}  // namespace kivo
