#include <SQLiteCpp/SQLiteCpp.h>
#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <string>
#include <vector>

#include "capture/capture_recording.h"
#include "capture/recorder.h"
#include "model/unassigned_entries.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo {
namespace {

const QString trackerId = QStringLiteral("com.google.Chrome");

// A store and settings in a folder of their own, removed afterwards.
struct Home {
    QTemporaryDir dir;
    std::unique_ptr<RecordStore> store =
        RecordStore::open(dir.filePath(QStringLiteral("kivo.sqlite")));
    std::unique_ptr<ApplicationSettings> settings =
        ApplicationSettings::openFile(dir.filePath(QStringLiteral("Kivo.conf")));
};

// The tick of every second while the same window stays in front: a sample, one extended capture,
// nothing to write.
void tickWithoutClosing(benchmark::State& state) {
    Home home;
    test::ManualClock clock;
    test::FakeDesktop desktop;
    desktop.show(trackerId, QStringLiteral("Tracker"), QStringLiteral("Issue #0 - Tracker"));
    Recorder recorder(desktop.focus, desktop.tabs, *home.store, *home.settings, clock);
    recorder.setInstalledApplications({QStringLiteral("org.gnome.Terminal"), trackerId});
    for (auto _ : state) {
        clock.advance(1.0);
        recorder.captureTick();
    }
    benchmark::DoNotOptimize(recorder.pendingCaptures().front().duration);
}
BENCHMARK(tickWithoutClosing);

// Filters of one application with a title cut and regular-expression conditions on title and
// address; only the first accepts the capture.
void addIssueFilters(RecordStore& store, int count, Instant now) {
    for (int i = 0; i < count; ++i) {
        auto filter = newRecord<Filter>(now);
        filter.projectId = QUuid::createUuid();
        filter.tagName = QStringLiteral("Issue %1").arg(i);
        filter.appBundleId = trackerId;
        filter.isPreprocessTitleOn = true;
        filter.regexOfPreprocessTitle = QStringLiteral("[^-]+");
        filter.matchExpressionOfTitle = QStringLiteral("^Issue #%1 .*(review|merge)").arg(i);
        filter.isTitleRegexOn = true;
        filter.matchExpressionOfUrl =
            QStringLiteral("^https://tracker\\.example/issues/%1$").arg(i);
        filter.isUrlRegexOn = true;
        store.insert(filter);
    }
    store.save();
}

// One closed capture offered to every filter, written with its daily totals and committed.
// Argument 1: 0 drops the triggers that keep the totals' summaries, to show their share.
void recordOneClosedCapture(benchmark::State& state) {
    Home home;
    test::ManualClock clock;
    ensureUnassignedEntries(*home.store, clock.now());
    addIssueFilters(*home.store, static_cast<int>(state.range(0)), clock.now());
    if (state.range(1) == 0) {
        SQLite::Database database(home.dir.filePath(QStringLiteral("kivo.sqlite")).toStdString(),
                                  SQLite::OPEN_READWRITE);
        SQLite::Statement triggers(database,
                                   "SELECT name FROM sqlite_schema WHERE type = 'trigger'");
        std::vector<std::string> names;
        while (triggers.executeStep()) {
            names.push_back(triggers.getColumn(0).getString());
        }
        for (const auto& name : names) {
            database.exec("DROP TRIGGER " + name);
        }
    }
    CaptureData closed{42.0,
                       QStringLiteral("Tracker"),
                       trackerId,
                       QStringLiteral("Issue #0 needs review - Tracker"),
                       QStringLiteral("https://tracker.example/issues/0"),
                       true,
                       clock.now(),
                       clock.now() + Seconds{42.0}};
    const std::vector<CaptureData> pending{closed};
    for (auto _ : state) {
        clock.advance(1.0);
        recordCaptures(pending, *home.store, *home.settings, clock.now(), MatchBudget());
        home.store->save();
    }
}
BENCHMARK(recordOneClosedCapture)
    ->ArgNames({"filters", "summaries"})
    ->ArgsProduct({{10, 100, 1000}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

// The tick that closes a capture whose title makes each of 1,000 distinct patterns backtrack
// without end: the tick's matching budget, not the patterns, bounds its wall time.
void tickClosingACaptureAgainstSlowPatterns(benchmark::State& state) {
    const QString editorId = QStringLiteral("org.gnome.TextEditor");
    Home home;
    test::ManualClock clock;
    ensureUnassignedEntries(*home.store, clock.now());
    for (int i = 0; i < 1000; ++i) {
        auto filter = newRecord<Filter>(clock.now());
        filter.projectId = QUuid::createUuid();
        filter.appBundleId = editorId;
        filter.matchExpressionOfTitle = QStringLiteral("(a+)+(%1)?$").arg(i);
        filter.isTitleRegexOn = true;
        home.store->insert(filter);
    }
    home.store->save();
    home.settings->setMaximumGapLength(1.0);
    test::FakeDesktop desktop;
    Recorder recorder(desktop.focus, desktop.tabs, *home.store, *home.settings, clock);
    recorder.setInstalledApplications({QStringLiteral("org.gnome.Terminal"), editorId});
    const QString pathological = QString(36, u'a') + u'!';
    for (auto _ : state) {
        // Untimed: the capture lasts a second, then another window comes to the front.
        state.PauseTiming();
        desktop.show(editorId, QStringLiteral("Text Editor"), pathological);
        clock.advance(1.0);
        recorder.captureTick();
        clock.advance(1.0);
        recorder.captureTick();
        desktop.show(QStringLiteral("org.gnome.Terminal"), QStringLiteral("Terminal"),
                     QStringLiteral("~"));
        clock.advance(2.0);
        state.ResumeTiming();
        recorder.captureTick();  // closes and records it
    }
    benchmark::DoNotOptimize(recorder.pendingCaptures().size());
}
BENCHMARK(tickClosingACaptureAgainstSlowPatterns)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
}  // namespace kivo

BENCHMARK_MAIN();
