#include "ui/report_arguments.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

const QDate today(2026, 11, 21);

std::optional<ReportArguments> parse(const QStringList& options) {
    return parseReportArguments(options, today);
}

TEST(ReportArguments, DefaultsToTodayAndAWeekOfBars) {
    const auto arguments = parse({});
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->from, today);
    EXPECT_EQ(arguments->to, today);
    EXPECT_EQ(arguments->days, 7);
    EXPECT_FALSE(arguments->isJson);
}

TEST(ReportArguments, OneDateAloneMakesTheRangeAroundIt) {
    const auto fromOnly = parse({u"--from"_qs, u"2026-11-01"_qs, u"--json"_qs});
    ASSERT_TRUE(fromOnly);
    EXPECT_EQ(fromOnly->from, QDate(2026, 11, 1));
    EXPECT_EQ(fromOnly->to, today);
    EXPECT_TRUE(fromOnly->isJson);

    const auto toOnly = parse({u"--to"_qs, u"2025-02-28"_qs, u"--days"_qs, u"0"_qs});
    ASSERT_TRUE(toOnly);
    EXPECT_EQ(toOnly->from, QDate(2025, 2, 28));
    EXPECT_EQ(toOnly->to, QDate(2025, 2, 28));
    EXPECT_EQ(toOnly->days, 0);
}

TEST(ReportArguments, RejectsWhatItCannotRead) {
    const std::vector<QStringList> bad{
        {u"--from"_qs},
        {u"--from"_qs, u"2026-02-30"_qs},
        {u"--from"_qs, u"2026-2-3"_qs},
        {u"--to"_qs, u"21.11.2026"_qs},
        {u"--from"_qs, u"2026-11-22"_qs},
        {u"--from"_qs, u"2026-11-10"_qs, u"--to"_qs, u"2026-11-09"_qs},
        {u"--days"_qs, u"-1"_qs},
        {u"--days"_qs, u"seven"_qs},
        {u"--days"_qs, u"99999"_qs},
        {u"--weeks"_qs, u"2"_qs},
        {u"today"_qs},
    };
    for (const auto& options : bad) {
        EXPECT_FALSE(parse(options)) << options.join(u' ').toStdString();
    }
}

}  // namespace
}  // namespace kivo
