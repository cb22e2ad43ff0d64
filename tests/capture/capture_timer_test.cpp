#include "capture/capture_timer.h"

#include "recorder_fixture.h"

namespace kivo::test {
namespace {

using CaptureTimerTest = RecorderTest;

TEST_F(CaptureTimerTest, IntervalIsReadWhenTheTimerStarts) {
    CaptureTimer timer(recorder, *settings);
    EXPECT_FALSE(timer.isRunning());
    settings->setTimerInterval(2.5);
    timer.start();
    EXPECT_TRUE(timer.isRunning());
    EXPECT_EQ(timer.interval(), std::chrono::milliseconds(2500));

    settings->setTimerInterval(4.0);
    timer.start();
    EXPECT_EQ(timer.interval(), std::chrono::milliseconds(2500)) << "a running timer stays";
    timer.stop();
    EXPECT_FALSE(timer.isRunning());
    timer.start();
    EXPECT_EQ(timer.interval(), std::chrono::milliseconds(4000));

    timer.stop();
    writeSetting(QStringLiteral("timerInterval"), -3.0);
    timer.start();
    EXPECT_EQ(timer.interval(), std::chrono::milliseconds(1000));
}

}  // namespace
}  // namespace kivo::test
