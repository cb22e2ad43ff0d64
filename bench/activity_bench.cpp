#include <benchmark/benchmark.h>

#include <memory>

#include "five_year_store.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "reports/activity_list.h"
#include "reports/rule_preview.h"

namespace kivo {
namespace {

using namespace five_year_store;

struct Fixture {
    Fixture() {
        seedStoreIfMissing();
        store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
        filters = store->fetch<Filter>(live());
    }

    std::unique_ptr<RecordStore> store;
    std::vector<Filter> filters;
};

Fixture& fixture() {
    static Fixture instance;
    return instance;
}

// What the list shows for the last month or year with every tag counted: reading, grouping
// and the hourly histogram.
void rangeList(benchmark::State& state) {
    auto& f = fixture();
    ActivityListQuery query;
    query.minDate = lastDay.addDays(1 - state.range(0));
    query.maxDate = lastDay;
    for (const Filter& filter : f.filters) {
        query.countedFilters.insert(filter.id);
    }
    std::size_t groups = 0;
    std::size_t entries = 0;
    for (auto _ : state) {
        const ActivityList list = listActivities(*f.store, query);
        groups = list.groups.size();
        entries = 0;
        for (const ActivityGroup& group : list.groups) {
            entries += group.entries.size();
        }
        benchmark::DoNotOptimize(list.minutesPerHour);
    }
    state.counters["groups"] = static_cast<double>(groups);
    state.counters["entries"] = static_cast<double>(entries);
}
BENCHMARK(rangeList)->Arg(30)->Arg(365)->Unit(benchmark::kMillisecond);

// The store's share of the listing: stepping through the same rows without grouping them.
void rangeRead(benchmark::State& state) {
    auto& f = fixture();
    const DayRange days = localDays(lastDay.addDays(1 - state.range(0)), lastDay);
    for (auto _ : state) {
        std::int64_t seconds = 0;
        f.store->read(
            "SELECT id, projectId, filterId, appName, appBundleId, title, url, domainName, "
            "duration, startAt, endAt FROM Activity WHERE isDeleted = 0 AND startAt >= ? AND "
            "startAt < ? ORDER BY startAt",
            {days.begin, days.end}, [&seconds](const RowCells& row) { seconds += row.integer(8); });
        benchmark::DoNotOptimize(seconds);
    }
}
BENCHMARK(rangeRead)->Arg(30)->Arg(365)->Unit(benchmark::kMillisecond);

// A title rule tried on a year of the busiest tag's activities, that tag standing in for the
// unassigned time.
void yearPreview(benchmark::State& state) {
    auto& f = fixture();
    const Filter& unassigned = f.filters.front();
    auto rule = newRecord<Filter>(momentOf(lastDay, 0));
    rule.projectId = unassigned.projectId;
    rule.appBundleId = unassigned.appBundleId;
    rule.matchExpressionOfTitle = QStringLiteral("Window [1-3]");
    rule.isTitleRegexOn = true;
    std::size_t moves = 0;
    for (auto _ : state) {
        const RulePreview preview =
            previewRule(*f.store, rule, unassigned.id, lastDay.addDays(-364), lastDay);
        moves = preview.moves.size();
        benchmark::DoNotOptimize(preview.durationTotal);
    }
    state.counters["moves"] = static_cast<double>(moves);
}
BENCHMARK(yearPreview)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kivo

BENCHMARK_MAIN();
