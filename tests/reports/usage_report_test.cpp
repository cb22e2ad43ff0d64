#include "reports/usage_report.h"

#include <gtest/gtest.h>

#include "reports/percentage.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;
using test::ScopedTimeZone;
using test::TreeHarness;

class UsageReports : public testing::Test {
protected:
    UsageReports() {
        work = h.records.project(QStringLiteral("Work"));
        home = h.records.project(QStringLiteral("Home"));
        code = h.records.filter(work, QStringLiteral("Code"));
        mail = h.records.filter(work, QStringLiteral("Mail"));
        cook = h.records.filter(home, QStringLiteral("Cook"));
    }

    // Saves the records and counts every filter, as on a first start.
    void buildTree() {
        h.records.save();
        h.tree.buildTreeFromRecords();
    }

    void app(const Filter& filter, const QString& bundleId, std::int64_t duration,
             const QString& name = {}) {
        h.records.appUsage(filter, name.isEmpty() ? bundleId : name, bundleId, duration, morning);
    }

    UsageReport<AppDisplayItem> apps() {
        return computeApplicationReport(*h.store, h.tree, h.today, h.today);
    }

    ScopedTimeZone zone{"Asia/Tokyo"};
    TreeHarness h{QDate(2026, 5, 4)};
    Instant morning = localMoment(h.today, 9);
    Project work, home;
    Filter code, mail, cook;
};

std::vector<std::int64_t> durations(const auto& rows) {
    std::vector<std::int64_t> result;
    for (const auto& row : rows) {
        result.push_back(row.duration);
    }
    return result;
}

TEST_F(UsageReports, SmallGroupsArePooledIntoMiscInTheChartOnly) {
    app(code, u"a"_qs, 29);
    app(code, u"b"_qs, 20);
    app(mail, u"c"_qs, 951);
    buildTree();
    const auto report = apps();
    EXPECT_EQ(report.durationTotal, 1000);
    EXPECT_EQ(durations(report.tableDataSet), (std::vector<std::int64_t>{951, 29, 20}));
    ASSERT_EQ(durations(report.chartDataSet), (std::vector<std::int64_t>{951, 49}));
    const auto& misc = report.chartDataSet[1];
    EXPECT_EQ(misc.appName, QStringLiteral("Misc."));
    EXPECT_TRUE(misc.appBundleId.isEmpty());
    EXPECT_FALSE(misc.filterId.isNull());
    EXPECT_NE(misc.filterId, code.id);
}

TEST_F(UsageReports, ThirtyFourSmallGroupsChartAsMiscAlone) {
    for (int i = 0; i < 34; ++i) {
        app(code, QString::number(i), 10);
    }
    buildTree();
    const auto report = apps();
    EXPECT_EQ(report.tableDataSet.size(), 34u);
    ASSERT_EQ(report.chartDataSet.size(), 1u);
    EXPECT_EQ(report.chartDataSet[0].duration, 340);
    EXPECT_EQ(report.chartDataSet[0].appName, QStringLiteral("Misc."));
}

TEST_F(UsageReports, PoolOfAtMostOneTwentiethOfAPercentIsNotCharted) {
    app(code, u"big"_qs, 1999);
    app(code, u"small"_qs, 1);
    buildTree();
    EXPECT_EQ(durations(apps().chartDataSet), (std::vector<std::int64_t>{1999}));

    app(code, u"small"_qs, 1);  // 2 of 2001 is above 0.05 percent
    h.records.save();
    EXPECT_EQ(durations(apps().chartDataSet), (std::vector<std::int64_t>{1999, 2}));
}

TEST_F(UsageReports, GroupOfExactlyThreePercentIsPooled) {
    app(code, u"three"_qs, 30);
    app(code, u"rest"_qs, 970);
    buildTree();
    const auto chart = apps().chartDataSet;
    ASSERT_EQ(chart.size(), 2u);
    EXPECT_EQ(chart[1].appName, QStringLiteral("Misc."));
}

TEST_F(UsageReports, MiscIsSortedWithTheOthers) {
    app(code, u"a"_qs, 50);
    for (int i = 0; i < 20; ++i) {
        app(code, QString::number(i), 20);
    }
    app(code, u"b"_qs, 550);
    buildTree();
    const auto report = apps();
    EXPECT_EQ(durations(report.chartDataSet), (std::vector<std::int64_t>{550, 400, 50}));
    EXPECT_EQ(report.chartDataSet[1].appName, QStringLiteral("Misc."));
}

TEST_F(UsageReports, FirstRecordNamesTheGroupAndEqualRowsKeepTheirOrder) {
    app(code, u"org.editor"_qs, 10, u"Editor"_qs);
    app(mail, u"org.mail"_qs, 25);
    app(cook, u"org.editor"_qs, 15, u"Editor (beta)"_qs);
    app(cook, u"org.zero"_qs, 0);
    buildTree();
    const auto table = apps().tableDataSet;
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].appName, QStringLiteral("Editor"));
    EXPECT_EQ(table[0].filterId, code.id);
    EXPECT_EQ(table[0].duration, 25);
    EXPECT_EQ(table[1].appBundleId, QStringLiteral("org.mail"));
    EXPECT_NE(table[0].id, table[1].id);
}

TEST_F(UsageReports, OnlyTheSelectedFiltersCount) {
    h.records.tagUsage(code, 100, morning);
    h.records.tagUsage(mail, 30, morning);
    h.records.tagUsage(cook, 7, morning);
    h.records.webUsage(mail, u"example.org"_qs, 30, morning);
    h.records.webUsage(cook, u"example.org"_qs, 12, morning);
    buildTree();
    h.tree.applySelection({mail.id, cook.id});

    const auto tags = computeFilterReport(*h.store, h.tree, h.today, h.today);
    ASSERT_EQ(tags.tableDataSet.size(), 2u);
    EXPECT_EQ(tags.tableDataSet[0].tagName, QStringLiteral("Mail"));
    EXPECT_EQ(tags.tableDataSet[0].projectName, QStringLiteral("Work"));
    EXPECT_EQ(tags.tableDataSet[1].projectName, QStringLiteral("Home"));
    EXPECT_EQ(tags.durationTotal, 37);

    const auto projects = computeProjectReport(*h.store, h.tree, h.today, h.today);
    ASSERT_EQ(projects.tableDataSet.size(), 2u);
    EXPECT_EQ(projects.tableDataSet[0].projectId, work.id);
    EXPECT_EQ(projects.tableDataSet[0].duration, 30);

    const auto webs = computeWebsiteReport(*h.store, h.tree, h.today, h.today);
    ASSERT_EQ(webs.tableDataSet.size(), 1u);
    EXPECT_EQ(webs.tableDataSet[0].domainName, QStringLiteral("example.org"));
    EXPECT_EQ(webs.tableDataSet[0].duration, 42);
}

TEST_F(UsageReports, RangeCoversWholeLocalDays) {
    h.records.tagUsage(code, 1, localMoment(h.today.addDays(-1), 23, 59));
    h.records.tagUsage(code, 2, localMoment(h.today, 0));
    h.records.tagUsage(code, 4, localMoment(h.today.addDays(1), 23, 59));
    h.records.tagUsage(code, 8, localMoment(h.today.addDays(2), 0));
    buildTree();
    const auto report = computeProjectReport(*h.store, h.tree, h.today, h.today.addDays(1));
    EXPECT_EQ(report.durationTotal, 6);
}

TEST_F(UsageReports, NothingSelectedGivesEmptyReportsWithATotalOfOne) {
    h.records.tagUsage(code, 100, morning);
    app(code, u"a"_qs, 100);
    buildTree();
    h.tree.applySelection({});
    const auto report = apps();
    EXPECT_TRUE(report.tableDataSet.empty());
    EXPECT_TRUE(report.chartDataSet.empty());
    EXPECT_EQ(report.durationTotal, 1);
    EXPECT_TRUE(computeFilterReport(*h.store, h.tree, h.today, h.today).chartDataSet.empty());
}

TEST_F(UsageReports, SingleGroupIsTheWholeChart) {
    h.records.webUsage(code, u"example.org"_qs, 5, morning);
    buildTree();
    const auto report = computeWebsiteReport(*h.store, h.tree, h.today, h.today);
    ASSERT_EQ(report.chartDataSet.size(), 1u);
    EXPECT_EQ(report.chartDataSet[0].domainName, QStringLiteral("example.org"));
    EXPECT_EQ(percentageText(report.chartDataSet[0].duration, report.durationTotal), u"100%");
}

TEST_F(UsageReports, CountedRecordOfAProjectTheTreeCannotNameStops) {
    // A filter moved to another project after its time was recorded, with the tree not told.
    auto moved = h.records.filter(work, QStringLiteral("Moved"));
    moved.projectId = QUuid::createUuid();
    h.records.tagUsage(moved, 10, morning);
    buildTree();
    EXPECT_DEATH(computeProjectReport(*h.store, h.tree, h.today, h.today), "project");
    EXPECT_DEATH(computeFilterReport(*h.store, h.tree, h.today, h.today), "project");
}

TEST(PercentageText, TruncatesAndShowsSmallSharesAsBelowOne) {
    EXPECT_EQ(percentageText(9, 1000), u"<1%");
    EXPECT_EQ(percentageText(0, 1), u"<1%");
    EXPECT_EQ(percentageText(199, 10000), u"1%");
    EXPECT_EQ(percentageText(2, 3), u"66%");
    EXPECT_EQ(percentageText(1000, 1000), u"100%");
    EXPECT_DEATH(percentageText(1, 0), "percentage");
}

}  // namespace
}  // namespace kivo
