#include "model/local_day.h"

#include <gtest/gtest.h>

#include <QDateTime>

#include "support/temp_home.h"

namespace kivo {
namespace {

double hoursOf(const DayRange& day) {
    return (day.end - day.begin).count() / 3600.0;
}

TEST(LocalDay, DaylightSavingDaysHave23And25HoursUpToTheirLastFraction) {
    test::ScopedTimeZone berlin("Europe/Berlin");
    EXPECT_EQ(hoursOf(localDay(QDate(2026, 3, 29))), 23.0);
    EXPECT_EQ(hoursOf(localDay(QDate(2026, 10, 25))), 25.0);
    EXPECT_EQ(hoursOf(localDay(QDate(2026, 11, 21))), 24.0);

    // The last second of the long day and its fractions belong to it.
    const DayRange day = localDay(QDate(2026, 10, 25));
    const Instant lastMoment = day.end - Seconds{0.0001};
    EXPECT_TRUE(day.contains(lastMoment));
    EXPECT_FALSE(day.contains(day.end));
    EXPECT_TRUE(day.contains(day.begin));
    EXPECT_EQ(localDateOf(lastMoment), QDate(2026, 10, 25));
    EXPECT_EQ(localDateOf(day.end), QDate(2026, 10, 26));
    EXPECT_EQ(localDayContaining(lastMoment).begin, day.begin);
}

TEST(LocalDay, RangeOfSeveralDaysEndsAfterTheLastOne) {
    test::ScopedTimeZone tokyo("Asia/Tokyo");
    const DayRange week = localDays(QDate(2026, 11, 15), QDate(2026, 11, 21));
    EXPECT_EQ(hoursOf(week), 7 * 24.0);
    EXPECT_EQ(week.begin, localDay(QDate(2026, 11, 15)).begin);
    EXPECT_EQ(week.end, localDay(QDate(2026, 11, 22)).begin);
}

TEST(LocalDay, SkippedMidnightStartsAtTheFirstExistingMoment) {
    // Chile moved clocks from 00:00 to 01:00 on 2022-09-11.
    test::ScopedTimeZone santiago("America/Santiago");
    const DayRange day = localDay(QDate(2022, 9, 11));
    EXPECT_EQ(hoursOf(day), 23.0);
    EXPECT_EQ(localDateOf(day.begin), QDate(2022, 9, 11));
    EXPECT_EQ(localDateOf(day.begin - Seconds{1}), QDate(2022, 9, 10));
}

}  // namespace
}  // namespace kivo
