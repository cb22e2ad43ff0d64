#include "reports/usage_report.h"

#include <gtest/gtest.h>

#include "reports/percentage.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

class UsageReports : public testing::Test {
protected:
    UsageReports() {
        work = h.records.project(u"Work"_qs);
        home = h.records.project(u"Home"_qs);
        code = h.records.filter(work, u"Code"_qs);
        mail = h.records.filter(work, u"Mail"_qs);
        cook = h.records.filter(home, u"Cook"_qs);
    }

    UsageReport<AppDisplayItem> apps() {
        return computeApplicationReport(*h.store, h.tree, h.today, h.today);
    }

    test::ScopedTimeZone zone{"Asia/Tokyo"};
    test::TreeHarness h{QDate(2026, 5, 4)};
    Instant morning = test::localMoment(h.today, 9);
    Project work, home;
    Filter code, mail, cook;
};

std::vector<std::pair<QString, std::int64_t>> chartOf(const UsageReport<AppDisplayItem>& report) {
    std::vector<std::pair<QString, std::int64_t>> rows;
    for (const auto& row : report.chartDataSet) {
        rows.emplace_back(row.appName, row.duration);
    }
    return rows;
}

TEST(UsageReportChart, PoolsGroupsOfAtMostThreePercentAndDropsAPoolOfAtMostOneTwentieth) {
    using Chart = std::vector<std::pair<QString, std::int64_t>>;
    const QString misc = u"Misc."_qs;
    const std::vector<std::pair<std::vector<std::int64_t>, Chart>> cases{
        {{29, 20, 951}, {{u"2"_qs, 951}, {misc, 49}}},
        {std::vector<std::int64_t>(34, 10), {{misc, 340}}},
        {{30, 970}, {{u"1"_qs, 970}, {misc, 30}}},
        {{1, 1999}, {{u"1"_qs, 1999}}},
        {{2, 1998}, {{u"1"_qs, 1998}, {misc, 2}}},
        {{50, 550, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20},
         {{u"1"_qs, 550}, {misc, 400}, {u"0"_qs, 50}}},
    };
    test::ScopedTimeZone zone("UTC");
    for (const auto& [durations, chart] : cases) {
        test::TreeHarness h(QDate(2026, 5, 4));
        const auto filter = h.records.filter(h.records.project(u"P"_qs), u"F"_qs);
        for (std::size_t i = 0; i < durations.size(); ++i) {
            h.records.appUsage(filter, QString::number(i), durations[i],
                               test::localMoment(h.today, 9));
        }
        h.buildTree();
        const auto report = computeApplicationReport(*h.store, h.tree, h.today, h.today);
        EXPECT_EQ(report.tableDataSet.size(), durations.size());
        EXPECT_EQ(chartOf(report), chart) << durations.size() << " groups";
    }
}

TEST_F(UsageReports, FirstRecordNamesTheGroupAndEqualRowsKeepTheirOrder) {
    h.records.appUsage(code, u"org.editor"_qs, 10, morning, u"Editor"_qs);
    h.records.appUsage(mail, u"org.mail"_qs, 25, morning);
    h.records.appUsage(cook, u"org.editor"_qs, 15, morning, u"Editor (beta)"_qs);
    h.records.appUsage(cook, u"org.zero"_qs, 0, morning);
    h.buildTree();
    const auto table = apps().tableDataSet;
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].appName, u"Editor");
    EXPECT_EQ(table[0].filterId, code.id);
    EXPECT_EQ(table[0].duration, 25);
    EXPECT_EQ(table[1].appBundleId, u"org.mail");
}

TEST_F(UsageReports, OnlyTheSelectedFiltersCount) {
    h.records.tagUsage(code, 100, morning);
    h.records.tagUsage(mail, 30, morning);
    h.records.tagUsage(cook, 7, morning);
    h.records.webUsage(mail, u"example.org"_qs, 30, morning);
    h.records.webUsage(cook, u"example.org"_qs, 12, morning);
    h.records.webUsage(code, u"example.com"_qs, 12, morning);
    h.buildTree();
    h.tree.applySelection({mail.id, cook.id});

    const auto tags = computeFilterReport(*h.store, h.tree, h.today, h.today).tableDataSet;
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].tagName, u"Mail");
    EXPECT_EQ(tags[0].projectName, u"Work");
    EXPECT_EQ(tags[1].projectName, u"Home");
    const auto projects = computeProjectReport(*h.store, h.tree, h.today, h.today);
    EXPECT_EQ(projects.durationTotal, 37);
    EXPECT_EQ(projects.tableDataSet[0].projectId, work.id);
    const auto webs = computeWebsiteReport(*h.store, h.tree, h.today, h.today).tableDataSet;
    ASSERT_EQ(webs.size(), 1u);
    EXPECT_EQ(webs[0].duration, 42);

    h.tree.applySelection({});
    const auto none = apps();
    EXPECT_TRUE(none.tableDataSet.empty() && none.chartDataSet.empty());
    EXPECT_EQ(none.durationTotal, 1);
}

TEST_F(UsageReports, CountedRecordOfAProjectTheTreeCannotNameStops) {
    // A filter moved to another project after its time was recorded, with the tree not told.
    auto moved = h.records.filter(work, u"Moved"_qs);
    moved.projectId = QUuid::createUuid();
    h.records.tagUsage(moved, 10, morning);
    h.buildTree();
    EXPECT_DEATH(computeProjectReport(*h.store, h.tree, h.today, h.today), "project");
}

TEST(PercentageText, TruncatesAndShowsSmallSharesAsBelowOne) {
    EXPECT_EQ(percentageText(9, 1000), u"<1%");
    EXPECT_EQ(percentageText(199, 10000), u"1%");
    EXPECT_EQ(percentageText(2, 3), u"66%");
    EXPECT_EQ(percentageText(1000, 1000), u"100%");
    EXPECT_DEATH(percentageText(1, 0), "percentage");
}

}  // namespace
}  // namespace kivo
