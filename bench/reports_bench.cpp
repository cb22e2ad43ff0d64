#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cli/report_arguments.h"
#include "cli/report_contents.h"
#include "cli/report_json.h"
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
        // Read as `kivo report` reads it; seeding brought it up to date.
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

// Argument 0: the last day, 1: its month (30 days), 2: its year (365 days), 3: three years,
// 4: all five years.
QDate rangeStart(std::int64_t range) {
    constexpr int daysBack[] = {0, 29, 364, 3 * 365 - 1, 0};
    return range == 4 ? firstDay : lastDay.addDays(-daysBack[range]);
}

void applyRanges(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("range")->DenseRange(0, 4)->Unit(benchmark::kMillisecond);
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
        const auto report = compute(*f.store, f.tree.reportSelection(), rangeStart(state.range(0)),
                                    lastDay, LiveActivities{});
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

// The score of every day of the range, as `kivo report` lists them.
void dayScores(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto scores =
            productivityOfDays(*f.store, productivityInputs(*f.store, f.tree.reportSelection()),
                               rangeStart(state.range(0)), lastDay);
        benchmark::DoNotOptimize(scores.back().score);
    }
}
BENCHMARK(dayScores)->Apply(applyRanges);

// Everything `kivo report --json` computes and writes, but starting the process and reading the
// settings file.
void wholeReportJson(benchmark::State& state) {
    auto& f = fixture();
    ReportArguments arguments;
    arguments.from = rangeStart(state.range(0));
    arguments.to = lastDay;
    arguments.isJson = true;
    for (auto _ : state) {
        const auto json = reportJson(collectReport(*f.store, *f.settings, f.clock, arguments));
        benchmark::DoNotOptimize(json.size());
    }
}
BENCHMARK(wholeReportJson)->Apply(applyRanges);

void projectChart(benchmark::State& state) {
    auto& f = fixture();
    for (auto _ : state) {
        const auto chart = computeProjectBarChart(*f.store, f.tree.reportSelection(), lastDay,
                                                  static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(chart.durationPeriodMaxHour);
    }
}
BENCHMARK(projectChart)->ArgName("days")->Arg(7)->Arg(30)->Unit(benchmark::kMillisecond);

// A year's four usage reports and tree durations (five computations per iteration) on stores of
// one, three and five years of totals: the cost should follow the groups and days of the year, not
// the totals stored around it.
void yearOnStoreOfYears(benchmark::State& state) {
    struct Growth {
        explicit Growth(int years)
            : path((seedTotalsStoreIfMissing(years), totalsStorePath(years))),
              store(
                  (RecordStore::open(path), RecordStore::open(path, RecordStore::Mode::ReadOnly))),
              settings(ApplicationSettings::openFile(scratch.filePath(u"Kivo.conf"_qs))),
              clock(momentOf(lastDay, 12 * 3600)),
              tree(*store, *settings, clock) {
            tree.buildTreeFromRecords();
        }
        QString path;
        QTemporaryDir scratch;
        std::unique_ptr<RecordStore> store;
        std::unique_ptr<ApplicationSettings> settings;
        test::ManualClock clock;
        ProjectTreeViewModel tree;
    };
    static std::map<std::int64_t, std::unique_ptr<Growth>> stores;
    auto& g = stores[state.range(0)];
    if (!g) {
        g = std::make_unique<Growth>(static_cast<int>(state.range(0)));
    }
    const QDate first = lastDay.addDays(-364);
    for (auto _ : state) {
        g->tree.recomputeTreeDurations(first, lastDay);
        const auto selection = g->tree.reportSelection();
        benchmark::DoNotOptimize(
            computeApplicationReport(*g->store, selection, first, lastDay).durationTotal);
        benchmark::DoNotOptimize(
            computeWebsiteReport(*g->store, selection, first, lastDay).durationTotal);
        benchmark::DoNotOptimize(
            computeFilterReport(*g->store, selection, first, lastDay).durationTotal);
        benchmark::DoNotOptimize(
            computeProjectReport(*g->store, selection, first, lastDay).durationTotal);
    }
}
BENCHMARK(yearOnStoreOfYears)
    ->ArgName("years")
    ->Arg(1)
    ->Arg(3)
    ->Arg(5)
    ->Unit(benchmark::kMillisecond);

// The whole `kivo report --json` for a year as a user runs it, process start included: wall time
// per run, its median (a run that another process on the machine delays skews the mean) and the
// largest resident set of any run. Linux carries the spawning process's peak over into the
// child's at exec, so that figure is the child's own only where it exceeds this process's peak,
// which is given beside it (run this case alone to keep this process small).
void reportProcessForAYear(benchmark::State& state) {
    QTemporaryDir home;
    QDir().mkpath(home.filePath(u"data/Kivo"_qs));
    QFile::link(storePath, home.filePath(u"data/Kivo/kivo.sqlite"_qs));
    std::vector<std::string> words{KIVO_EXECUTABLE,
                                   "report",
                                   "--json",
                                   "--from",
                                   lastDay.addDays(-364).toString(Qt::ISODate).toStdString(),
                                   "--to",
                                   lastDay.toString(Qt::ISODate).toStdString()};
    std::vector<std::string> variables{
        "XDG_DATA_HOME=" + home.filePath(u"data"_qs).toStdString(),
        "XDG_CONFIG_HOME=" + home.filePath(u"config"_qs).toStdString()};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (std::strncmp(*variable, "XDG_", 4) != 0) {
            variables.emplace_back(*variable);
        }
    }
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> list;
        for (auto& text : texts) {
            list.push_back(text.data());
        }
        list.push_back(nullptr);
        return list;
    };
    auto argv = pointers(words);
    auto envp = pointers(variables);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    long peakKilobytes = 0;
    std::vector<double> milliseconds;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        pid_t child = 0;
        int status = 0;
        rusage usage{};
        if (posix_spawn(&child, argv[0], &quiet, nullptr, argv.data(), envp.data()) != 0 ||
            wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
            WEXITSTATUS(status) != 0) {
            state.SkipWithError("kivo report failed");
            break;
        }
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        milliseconds.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        peakKilobytes = std::max(peakKilobytes, usage.ru_maxrss);
    }
    posix_spawn_file_actions_destroy(&quiet);
    state.counters["peak_rss_MB"] = static_cast<double>(peakKilobytes) / 1024.0;
    rusage own{};
    getrusage(RUSAGE_SELF, &own);
    state.counters["bench_rss_MB"] = static_cast<double>(own.ru_maxrss) / 1024.0;
    if (!milliseconds.empty()) {
        const auto middle =
            milliseconds.begin() + static_cast<std::ptrdiff_t>(milliseconds.size() / 2);
        std::nth_element(milliseconds.begin(), middle, milliseconds.end());
        state.counters["median_ms"] = *middle;
    }
}
BENCHMARK(reportProcessForAYear)->UseManualTime()->Iterations(21)->Unit(benchmark::kMillisecond);

// With KIVO_REPORTS_JSON_DIR set, writes the JSON of a day, a month and a year there, so that two
// builds can be compared on the same store.
void writeReportsForComparison() {
    const QString folder = qEnvironmentVariable("KIVO_REPORTS_JSON_DIR");
    if (folder.isEmpty()) {
        return;
    }
    auto& f = fixture();
    for (int range = 0; range <= 2; ++range) {
        ReportArguments arguments;
        arguments.from = rangeStart(range);
        arguments.to = lastDay;
        QFile file(QStringLiteral("%1/range%2.json").arg(folder).arg(range));
        if (file.open(QIODevice::WriteOnly)) {
            file.write(reportJson(collectReport(*f.store, *f.settings, f.clock, arguments)));
        }
    }
}

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    kivo::five_year_store::seedStoreIfMissing();
    kivo::writeReportsForComparison();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
