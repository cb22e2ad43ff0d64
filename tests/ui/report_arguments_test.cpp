#include "ui/report_arguments.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

const QDate today(2026, 11, 21);

TEST(ReportArguments, DatesMakeTheRangeAroundToday) {
    const auto none = parseReportArguments({}, today);
    ASSERT_TRUE(none);
    EXPECT_EQ(std::tuple(none->from, none->to, none->days, none->isJson),
              std::tuple(today, today, 7, false));
    const auto fromOnly =
        parseReportArguments({u"--from"_qs, u"2026-11-01"_qs, u"--json"_qs}, today);
    ASSERT_TRUE(fromOnly);
    EXPECT_EQ(std::tuple(fromOnly->from, fromOnly->to, fromOnly->isJson),
              std::tuple(QDate(2026, 11, 1), today, true));
    const auto toOnly =
        parseReportArguments({u"--to"_qs, u"2025-02-28"_qs, u"--days"_qs, u"0"_qs}, today);
    ASSERT_TRUE(toOnly);
    EXPECT_EQ(std::tuple(toOnly->from, toOnly->to, toOnly->days),
              std::tuple(QDate(2025, 2, 28), QDate(2025, 2, 28), 0));
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
    };
    for (const auto& options : bad) {
        EXPECT_FALSE(parseReportArguments(options, today)) << options.join(u' ').toStdString();
    }
}

}  // namespace
}  // namespace kivo
