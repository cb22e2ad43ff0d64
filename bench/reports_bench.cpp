#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include "five_year_store.h"
#include "model/application_settings.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "reports/productivity_score.h"
#include "reports/project_bar_chart.h"
#include "reports/usage_report.h"
#include "support/manual_clock.h"
#include "tree/project_tree_view_model.h"

namespace kivo {
namespace {

using namespace five_year_store;

// The store, a scratch settings file and a tree built from the records, shared by every case.
struct Fixture {
    Fixture()
        : store(RecordStore::open(storePath, RecordStore::Mode::ReadOnly)),
          settings(ApplicationSettings::openFile(scratch.filePath(QStringLiteral("Kivo.conf")))),
          clock(momentOf(lastDay, 12 * 3600)),
          tree(*store, *settings, clock) {
        tree.buildTreeFromRecords();
    }

    QTemporaryDir scratch;
    std::unique_ptr<RecordStore> store;
    std::unique_ptr<ApplicationSettings> settings;
    test::ManualClock clock;
    ProjectTreeViewModel tree;
};

Fixture& fixture() {
    static Fixture instance;
    return instance;
}

// Argument 0: the last day, 1: its month (30 days), 2: its year (365 days).
QDate rangeStart(std::int64_t range) {
    return lastDay.addDays(range == 0 ? 0 : range == 1 ? -29 : -364);
}

void applyRanges(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("range")->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
}

void treeDurations(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        f.tree.recomputeTreeDurations(rangeStart(state.range(0)), lastDay);
        benchmark::DoNotOptimize(f.tree.durationTotal());
    }
}
BENCHMARK(treeDurations)->Apply(applyRanges);

// The fetch alone, to tell the store's share of each report from the grouping's.
template <class Record>
void fetchOnly(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto records = f.store->fetch<Record>(
            liveCreatedWithin(localDays(rangeStart(state.range(0)), lastDay)));
        benchmark::DoNotOptimize(records.size());
    }
}
BENCHMARK(fetchOnly<TagUsage>)->Apply(applyRanges);
BENCHMARK(fetchOnly<AppUsage>)->Apply(applyRanges);

template <class Compute>
void usageReport(benchmark::State& state, Compute compute) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto report =
            compute(*f.store, f.tree.reportSelection(), rangeStart(state.range(0)), lastDay);
        benchmark::DoNotOptimize(report.durationTotal);
    }
}
BENCHMARK_CAPTURE(usageReport, applications, computeApplicationReport)->Apply(applyRanges);
BENCHMARK_CAPTURE(usageReport, websites, computeWebsiteReport)->Apply(applyRanges);
BENCHMARK_CAPTURE(usageReport, tags, computeFilterReport)->Apply(applyRanges);
BENCHMARK_CAPTURE(usageReport, projects, computeProjectReport)->Apply(applyRanges);

void productivityChart(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto bars = productivityBars(*f.store, f.tree.reportSelection(), lastDay,
                                           static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(bars.back().annotation);
    }
}
BENCHMARK(productivityChart)->ArgName("days")->Arg(7)->Arg(30)->Unit(benchmark::kMillisecond);

void projectChart(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto chart = computeProjectBarChart(*f.store, f.tree.reportSelection(), lastDay,
                                                  static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(chart.durationPeriodMaxHour);
    }
}
BENCHMARK(projectChart)->ArgName("days")->Arg(7)->Arg(30)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    kivo::five_year_store::seedStoreIfMissing();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
