#include <gtest/gtest.h>

#include <QHash>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "model/day_score_sums.h"
#include "model/local_day.h"
#include "model/range_totals.h"
#include "reports/productivity_score.h"
#include "reports/project_bar_chart.h"
#include "reports/usage_report.h"
#include "tree/tree_harness.h"

// The reports read narrow, pre-grouped totals. Here they are checked against the plain reading
// of the rules: whole records fetched one day or one range at a time in the store's order
// (creation moment, then insertion), grouped in the order in which their groups first appear.

namespace kivo {
namespace {

using test::localMoment;

constexpr int dayCount = 6;
const QDate firstDay(2026, 3, 26);  // Berlin moves its clocks on 3/29
const QDate lastDay = firstDay.addDays(dayCount - 1);

template <class Record>
std::vector<Record> storeOrder(RecordStore& store, QDate first, QDate last) {
    const DayRange range = localDays(first, last);
    return store.fetch<Record>({"isDeleted = 0 AND createdAt >= ? AND createdAt < ?",
                                {range.begin, range.end},
                                "createdAt, rowid"});
}

QString misc() {
    return QStringLiteral("Misc.");
}

QString describe(const AppDisplayItem& row) {
    const bool isMisc = row.appName == misc() && row.appBundleId.isEmpty();
    return u"%1 %2 %3 %4"_qs
        .arg(row.appName, row.appBundleId, isMisc ? QString() : row.filterId.toString())
        .arg(row.duration);
}
QString describe(const WebDisplayItem& row) {
    return u"%1 %2"_qs.arg(row.domainName).arg(row.duration);
}
QString describe(const TagDisplayItem& row) {
    const bool isMisc = row.tagName == misc() && row.projectName == misc();
    return u"%1 %2 %3 %4"_qs
        .arg(row.projectName, row.tagName, isMisc ? QString() : row.filterId.toString())
        .arg(row.duration);
}
QString describe(const ProjectDisplayItem& row) {
    const bool isMisc = row.projectName == misc();
    return u"%1 %2 %3"_qs.arg(row.projectName, isMisc ? QString() : row.projectId.toString())
        .arg(row.duration);
}

// What a report view shows, but the fresh ids of rows and of the "Misc." pool.
template <class Row>
QStringList shown(const UsageReport<Row>& report) {
    QStringList lines{u"total %1"_qs.arg(report.durationTotal), u"table"_qs};
    for (const auto& row : report.tableDataSet) {
        lines << describe(row);
    }
    lines << u"chart"_qs;
    for (const auto& row : report.chartDataSet) {
        lines << describe(row);
    }
    return lines;
}

// The rules of a usage report, record by record.
template <class Row, class Record, class KeyOf, class RowOf>
UsageReport<Row> referenceReport(const std::vector<Record>& records,
                                 const ReportSelection& selection, KeyOf keyOf, RowOf rowOf,
                                 Row pool) {
    const QSet<QUuid> counted(selection.enableFilters.begin(), selection.enableFilters.end());
    std::vector<Row> rows;
    std::vector<decltype(keyOf(records.front()))> keys;
    std::int64_t total = 0;
    for (const auto& record : records) {
        if (!counted.contains(record.filterId)) {
            continue;
        }
        const auto key = std::find(keys.begin(), keys.end(), keyOf(record));
        if (key == keys.end()) {
            keys.push_back(keyOf(record));
            rows.push_back(rowOf(record));
        } else {
            rows[static_cast<std::size_t>(key - keys.begin())].duration += record.duration;
        }
        total += record.duration;
    }
    UsageReport<Row> report;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(report.tableDataSet),
                 [](const Row& row) { return row.duration != 0; });
    report.durationTotal = total == 0 ? 1 : total;
    for (const auto& row : report.tableDataSet) {
        if (row.duration * 100.0 / report.durationTotal > 3.0) {
            report.chartDataSet.push_back(row);
        } else {
            pool.duration += row.duration;
        }
    }
    if (pool.duration * 100.0 / report.durationTotal > 0.05) {
        report.chartDataSet.push_back(pool);
    }
    const auto largestFirst = [](const Row& a, const Row& b) { return a.duration > b.duration; };
    std::stable_sort(report.tableDataSet.begin(), report.tableDataSet.end(), largestFirst);
    std::stable_sort(report.chartDataSet.begin(), report.chartDataSet.end(), largestFirst);
    return report;
}

// Projects and filters beyond the harness's sample (a deleted filter, a deleted project with a
// filter of its own, an unknown filter id), and totals of every kind over six days: moments
// shared by many totals, totals dated earlier than totals inserted before them, deleted ones,
// zero durations, and the first and last moments of days.
struct RandomStore {
    explicit RandomStore(unsigned seed, int spanDays = dayCount)
        : random(seed), spanDays(spanDays) {
        auto& r = h.records;
        const Project garden = r.project(u"Garden"_qs);
        const Project gone = r.project(u"Gone"_qs);
        filters = {h.s.code,
                   h.s.guitar,
                   h.s.mail,
                   h.s.cook,
                   r.filter(garden, u"Dig"_qs, 30),
                   r.filter(garden, u"Rake"_qs, 70),
                   r.filter(gone, u"Old"_qs, 20),
                   r.filter(h.s.work, u"Dropped"_qs, 90)};
        r.remove(filters[7]);
        r.remove(gone);
        Filter unknown = h.s.code;
        unknown.id = QUuid::createUuid();
        for (int i = 0; i < 400; ++i) {
            addTotal(i % 9 == 0 ? unknown : filters[pick(filters.size())]);
        }
        h.buildTree();
    }

    // Later changes to the totals: grown, deleted and undeleted, moved to other days and renamed.
    void editSome(int count) {
        for (int i = 0; i < count; ++i) {
            auto& tag = tags[pick(tags.size())];
            auto& app = apps[pick(apps.size())];
            auto& web = webs[pick(webs.size())];
            switch (pick(4)) {
                case 0:
                    tag.isDeleted = !tag.isDeleted;
                    app.appName = u"renamed %1"_qs.arg(i);
                    web.isDeleted = !web.isDeleted;
                    break;
                case 1:
                    tag.createdAt = moment();
                    app.createdAt = moment();
                    web.createdAt = moment();
                    break;
                default:
                    tag.duration += static_cast<std::int64_t>(pick(600));
                    app.duration += static_cast<std::int64_t>(pick(600));
                    web.duration += static_cast<std::int64_t>(pick(600));
            }
            h.store->update(tag);
            h.store->update(app);
            h.store->update(web);
        }
        h.store->save();
    }

    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    }

    Instant moment() {
        const QDate day = firstDay.addDays(static_cast<qint64>(pick(spanDays)));
        // Where summarised stretches of days meet: UTC midnights every fourth day.
        constexpr double stretch = 4 * 86400.0;
        const double stretchEdge =
            std::ceil(toEpochSeconds(localDay(day).begin) / stretch) * stretch;
        switch (pick(8)) {
            case 0:
                return localDay(day).begin;
            case 1:
                return fromEpochSeconds(toEpochSeconds(localDay(day).end) - 0.5);
            case 2:
                return fromEpochSeconds(stretchEdge);
            case 3:
                return fromEpochSeconds(stretchEdge - 0.5);
            default:
                return localMoment(day, static_cast<int>(pick(4)) * 6,
                                   static_cast<int>(pick(2)) * 30);
        }
    }

    template <class Record>
    Record made(const Filter& filter) {
        auto record = newRecord<Record>(moment());
        record.filterId = filter.id;
        record.duration = pick(5) == 0 ? 0 : static_cast<std::int64_t>(pick(3600));
        record.isDeleted = pick(7) == 0;
        return record;
    }

    void addTotal(const Filter& filter) {
        const bool isUnknown = !std::any_of(filters.begin(), filters.end(),
                                            [&](const Filter& f) { return f.id == filter.id; });
        if (!isUnknown) {  // a counted total must name a filter with a rating
            auto tag = made<TagUsage>(filter);
            tag.projectId = pick(8) == 0 ? h.s.home.id : filter.projectId;
            h.store->insert(tag);
            tags.push_back(tag);
        }
        auto app = made<AppUsage>(filter);
        app.appBundleId = u"org.app%1"_qs.arg(pick(12));
        app.appName = app.appBundleId + u" v"_qs + QString::number(pick(3));
        h.store->insert(app);
        apps.push_back(app);
        auto web = made<WebUsage>(filter);
        web.domainName = u"site%1.example"_qs.arg(pick(40));
        h.store->insert(web);
        webs.push_back(web);
    }

    test::TreeHarness h{"Europe/Berlin", lastDay};
    std::mt19937 random;
    int spanDays;
    std::vector<Filter> filters;
    std::vector<TagUsage> tags;
    std::vector<AppUsage> apps;
    std::vector<WebUsage> webs;
};

// The selections the sidebar can make, applied in turn to the same tree.
std::vector<std::function<void(test::TreeHarness&)>> selections() {
    return {
        [](test::TreeHarness&) {},  // as built: every filter toggled
        [](test::TreeHarness& h) { h.tree.applySelection({h.tree.roots().front().id}); },
        [](test::TreeHarness& h) {
            h.tree.applySelection({h.s.work.id, h.s.cook.id});
        },
        [](test::TreeHarness& h) {
            h.tree.setIsShowArchivedProject(true);
            h.tree.applySelection({h.tree.roots().front().id});
        },
        [](test::TreeHarness& h) {
            auto projects = h.tree.projects();
            projects[0].isToggled = false;  // only productivity reads a project's own flag
            h.tree.setProjects(projects);
            h.tree.applySelection({h.s.guitar.id, h.s.mail.id});
        },
        [](test::TreeHarness& h) { h.tree.applySelection({}); },
    };
}

const std::vector<std::pair<QDate, QDate>> ranges{
    {firstDay, firstDay},
    {QDate(2026, 3, 28), QDate(2026, 3, 30)},
    {firstDay, lastDay},
    {QDate(2026, 3, 1), QDate(2026, 3, 2)},  // nothing recorded
};

// Every report of every range under every selection, against the plain reading of the rules.
void expectReportsMatchTheRecords(RandomStore& r, unsigned seed,
                                  const std::vector<std::pair<QDate, QDate>>& ranges) {
    auto& h = r.h;
    for (const auto& select : selections()) {
        select(h);
        const ReportSelection s = h.tree.reportSelection();
        for (const auto& [from, to] : ranges) {
            SCOPED_TRACE(u"seed %1, %2 to %3"_qs.arg(seed)
                             .arg(from.toString(), to.toString())
                             .toStdString());
            EXPECT_EQ(
                shown(computeApplicationReport(*h.store, s, from, to)),
                shown(referenceReport(
                    storeOrder<AppUsage>(*h.store, from, to), s,
                    [](const AppUsage& u) { return u.appBundleId; },
                    [](const AppUsage& u) {
                        return AppDisplayItem{{}, u.duration, u.appName, u.appBundleId, u.filterId};
                    },
                    AppDisplayItem{{}, 0, misc(), {}, {}})));
            EXPECT_EQ(shown(computeWebsiteReport(*h.store, s, from, to)),
                      shown(referenceReport(
                          storeOrder<WebUsage>(*h.store, from, to), s,
                          [](const WebUsage& u) { return u.domainName; },
                          [](const WebUsage& u) {
                              return WebDisplayItem{{}, u.domainName, u.duration};
                          },
                          WebDisplayItem{{}, misc(), 0})));
            const auto tags = storeOrder<TagUsage>(*h.store, from, to);
            const auto tagRows = shown(referenceReport(
                tags, s, [](const TagUsage& u) { return u.filterId; },
                [&s](const TagUsage& u) {
                    return TagDisplayItem{{},
                                          u.duration,
                                          s.projectNames[u.projectId],
                                          s.tagNames[u.filterId],
                                          u.filterId};
                },
                TagDisplayItem{{}, 0, misc(), misc(), {}}));
            const auto projectRows = shown(referenceReport(
                tags, s, [](const TagUsage& u) { return u.projectId; },
                [&s](const TagUsage& u) {
                    return ProjectDisplayItem{
                        {}, u.duration, s.projectNames[u.projectId], u.projectId};
                },
                ProjectDisplayItem{{}, 0, misc(), {}}));
            EXPECT_EQ(shown(computeFilterReport(*h.store, s, from, to)), tagRows);
            EXPECT_EQ(shown(computeProjectReport(*h.store, s, from, to)), projectRows);

            // The tree: each filter's own records, whatever their project.
            QHash<QUuid, std::int64_t> byFilter;
            for (const auto& usage : tags) {
                byFilter[usage.filterId] += usage.duration;
            }
            const auto expectTreeDurations = [&] {
                std::int64_t total = 0;
                for (const auto& project : h.tree.projects()) {
                    std::int64_t sum = 0;
                    for (const auto& filter : project.filters) {
                        EXPECT_EQ(filter.duration, byFilter.value(filter.id));
                        sum += filter.duration;
                    }
                    EXPECT_EQ(project.duration, sum);
                    total += h.tree.isShowArchivedProject() || !project.isArchived ? sum : 0;
                }
                EXPECT_EQ(h.tree.durationTotal(), total);
            };
            const auto treeGroups = h.tree.recomputeTreeDurations(from, to);
            expectTreeDurations();
            // The reports from the tree's reading count only the selection's filters.
            EXPECT_EQ(shown(computeFilterReportFromTree(treeGroups, s)), tagRows);
            EXPECT_EQ(shown(computeProjectReportFromTree(treeGroups, s)), projectRows);
        }
    }
}

TEST(ReportsAgainstTheRecords, UsageReportsMatchOverRandomStores) {
    for (unsigned seed : {1u, 2u, 3u}) {
        RandomStore r(seed);
        expectReportsMatchTheRecords(r, seed, ranges);
    }
}

// Months of totals, changed after they were written: long ranges read whole stretches of days
// from the summaries and only their edges from the totals themselves.
TEST(ReportsAgainstTheRecords, UsageReportsMatchOverMonthsOfChangedTotals) {
    const std::vector<std::pair<QDate, QDate>> longRanges{
        {firstDay, firstDay.addDays(119)},
        {firstDay.addDays(3), firstDay.addDays(77)},
        {firstDay.addDays(40), firstDay.addDays(40)},
    };
    for (unsigned seed : {6u, 7u}) {
        RandomStore r(seed, 120);
        r.editSome(150);
        expectReportsMatchTheRecords(r, seed, longRanges);
    }
}

// Each day read on its own, record by record.
DayProductivity referenceScore(RecordStore& store, const ProductivityInputs& inputs, QDate day) {
    std::int64_t total = 0;
    double weighted = 0.0;
    for (const auto& usage : storeOrder<TagUsage>(store, day, day)) {
        if (inputs.countedProjects.contains(usage.projectId)) {
            total += usage.duration;
            weighted += static_cast<double>(usage.duration) *
                        static_cast<double>(inputs.ratingByFilter.value(usage.filterId)) / 100.0;
        }
    }
    return {
        total == 0 ? 0 : static_cast<std::int64_t>(weighted / static_cast<double>(total) * 100.0),
        total};
}

// With the ratings the totals were recorded under, then after filters were rated anew, which the
// summed scores must follow.
TEST(ReportsAgainstTheRecords, DailyFiguresMatchOverRandomStores) {
    for (unsigned seed : {4u, 5u}) {
        RandomStore r(seed);
        auto& h = r.h;
        std::vector<std::function<void(test::TreeHarness&)>> steps = selections();
        steps.push_back([&r](test::TreeHarness& h) {
            r.filters[4].rating = 35;
            r.filters[1].rating = -45;
            h.store->update(r.filters[4]);
            h.store->update(r.filters[1]);
            h.store->save();
        });
        for (const auto& select : selections()) {
            steps.push_back(select);
        }
        for (const auto& select : steps) {
            select(h);
            const ReportSelection s = h.tree.reportSelection();
            const ProductivityInputs inputs = productivityInputs(*h.store, s);
            const auto scores = productivityOfDays(*h.store, inputs, firstDay, lastDay);
            ASSERT_EQ(scores.size(), std::size_t{dayCount});
            const auto sharedReadScores =
                productivityOfDays(tagUsageDays(*h.store, firstDay, lastDay), inputs);
            ASSERT_EQ(sharedReadScores.size(), std::size_t{dayCount});
            const auto bars = productivityBars(*h.store, s, lastDay, dayCount);
            const auto chart = computeProjectBarChart(*h.store, s, lastDay, dayCount);
            const QSet<QUuid> counted(s.enableFilters.begin(), s.enableFilters.end());
            std::size_t segment = 0;
            for (int i = 0; i < dayCount; ++i) {
                const QDate day = firstDay.addDays(i);
                const auto expected = referenceScore(*h.store, inputs, day);
                EXPECT_EQ(std::pair(scores[i].score, scores[i].duration),
                          std::pair(expected.score, expected.duration))
                    << seed << " " << day.toString().toStdString();
                EXPECT_EQ(std::pair(sharedReadScores[i].score, sharedReadScores[i].duration),
                          std::pair(expected.score, expected.duration));
                EXPECT_EQ(bars[i].annotation, expected.score);

                QHash<QUuid, std::int64_t> byFilter;
                for (const auto& usage : storeOrder<TagUsage>(*h.store, day, day)) {
                    byFilter[usage.filterId] += usage.duration;
                }
                for (const auto& project : s.projects) {
                    if (!s.isShowArchivedProject && project.isArchived) {
                        continue;
                    }
                    std::int64_t sum = 0;
                    for (const auto& filter : project.filters) {
                        sum += filter.isToggled && counted.contains(filter.id)
                                   ? byFilter.value(filter.id)
                                   : 0;
                    }
                    ASSERT_LT(segment, chart.dataSet.size());
                    EXPECT_EQ(qRound64(chart.dataSet[segment].value * 3600.0), sum);
                    EXPECT_EQ(chart.dataSet[segment++].projectName, project.name);
                }
            }
            EXPECT_EQ(segment, chart.dataSet.size());
        }
    }
}

// Sums tell a score only where the additions one by one cannot round across a whole percent:
// 0.7 + 0.2 comes to just below 0.9, so a day of one second at 70 % and one at 20 % scores 44.
TEST(ReportsAgainstTheRecords, DayScoresAtWholePercentsFollowTheAdditions) {
    test::TreeHarness h{"Europe/Berlin", lastDay};
    const Filter seventy = h.records.filter(h.s.work, u"Seventy"_qs, 70);
    const Filter twenty = h.records.filter(h.s.work, u"Twenty"_qs, 20);
    const auto at = [](int day) { return localMoment(firstDay.addDays(day), 9); };
    h.records.tagUsage(seventy, 1, at(0));
    h.records.tagUsage(twenty, 1, at(0));
    h.records.tagUsage(h.s.code, 5, at(1));  // exactly 100 %
    h.records.tagUsage(seventy, 3, at(2));
    h.records.tagUsage(seventy, 3, at(2));
    h.records.tagUsage(twenty, 1, at(2));  // 62.9 %, well clear of a whole percent
    h.buildTree();
    const ProductivityInputs inputs = productivityInputs(*h.store, h.tree.reportSelection());
    ASSERT_EQ(referenceScore(*h.store, inputs, firstDay).score, 44);

    const auto sums =
        dayScoreSums(*h.store, firstDay, lastDay, inputs.countedProjects, inputs.ratingByFilter);
    ASSERT_EQ(sums.size(), std::size_t{dayCount});
    EXPECT_TRUE(std::all_of(sums.begin(), sums.end(), [](const auto& day) { return day.isKnown; }));
    EXPECT_EQ(sums[2].ratedDuration, 440);
    const auto scores = productivityOfDays(*h.store, inputs, firstDay, lastDay);
    for (int i = 0; i < dayCount; ++i) {
        const auto expected = referenceScore(*h.store, inputs, firstDay.addDays(i));
        EXPECT_EQ(std::pair(scores[i].score, scores[i].duration),
                  std::pair(expected.score, expected.duration))
            << i;
    }
}

}  // namespace
}  // namespace kivo
