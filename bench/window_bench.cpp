// The main window over the five-year store: start to first painted window, a full refresh for a
// year's range, and resident memory with the window open, also after 10,000 recording ticks.
// Runs on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

#include "capture/recorder.h"
#include "five_year_store.h"
#include "gui/activity_list_model.h"
#include "gui/activity_list_view.h"
#include "gui/main_window.h"
#include "model/application_settings.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "reports/productivity.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo {
namespace {

using namespace five_year_store;

double residentMegabytes() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    const double pages = fields.size() > 1 ? fields[1].toDouble() : 0.0;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

// The highest resident memory of the process so far (VmHWM).
double peakResidentMegabytes() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            return line.mid(6).trimmed().split(' ').front().toDouble() / 1024.0;
        }
    }
    return 0.0;
}

void waitForActivityList(MainWindow& window) {
    ActivityListView& list = window.activityList();
    while (list.isListing()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

// Until the window has painted itself once.
class FirstPaint : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint || event->type() == QEvent::UpdateRequest) {
            painted = true;
        }
        return false;
    }
    bool painted = false;
};

// A private copy of the store (the window writes to it) and everything a window needs.
struct Session {
    static QString copyOfStore() {
        static QTemporaryDir scratch;
        static const QString copy = [] {
            const QString path = scratch.filePath(QStringLiteral("kivo.sqlite"));
            QFile::copy(storePath, path);
            return path;
        }();
        return copy;
    }

    Session()
        : store(RecordStore::open(copyOfStore())),
          settings(ApplicationSettings::openFile(settingsFolder.filePath(u"Kivo.conf"_qs))) {
        recorder =
            std::make_unique<Recorder>(desktop.focus, desktop.tabs, *store, *settings, clock);
        catalog.entries = {{test::editorId, QStringLiteral("Text Editor"), {}}};
    }

    MainWindow& openWindow() {
        window = std::make_unique<MainWindow>(
            WindowServices{*store, *settings, productivity, *recorder, catalog, clock});
        window->resize(1280, 800);
        FirstPaint paint;
        window->installEventFilter(&paint);
        window->show();
        while (!paint.painted) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        window->removeEventFilter(&paint);
        return *window;
    }

    QTemporaryDir settingsFolder;
    test::ManualClock clock{momentOf(lastDay, 12 * 3600)};
    std::unique_ptr<RecordStore> store;
    std::unique_ptr<ApplicationSettings> settings;
    test::FakeDesktop desktop;
    test::FakeApplicationCatalog catalog;
    Productivity productivity;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<MainWindow> window;
};

void startToFirstPaint(benchmark::State& state) {
    Session::copyOfStore();
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        Session session;
        session.openWindow();
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
}
BENCHMARK(startToFirstPaint)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// The window's thread busy with a refresh for a year's range; the activity list that the
// refresh asks for is waited for outside the measured time, so that one refresh's listing does
// not slow the next. Argument: the section shown (0 projects, 2 applications, 4 stats).
void refreshForAYear(benchmark::State& state) {
    Session session;
    MainWindow& window = session.openWindow();
    window.selectSection(static_cast<MenuType>(state.range(0)));
    window.setSelectedRange(lastDay.addDays(-364), lastDay);
    waitForActivityList(window);
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        window.forceUpdate();
        window.repaint();
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        waitForActivityList(window);
    }
    state.counters["rss_MB"] = residentMegabytes();
    state.counters["rss_peak_MB"] = peakResidentMegabytes();
}
BENCHMARK(refreshForAYear)
    ->ArgName("section")
    ->Arg(0)
    ->Arg(2)
    ->Arg(4)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// From a refresh for a year's range until its activity list is shown and painted.
void yearListShown(benchmark::State& state) {
    Session session;
    MainWindow& window = session.openWindow();
    window.setSelectedRange(lastDay.addDays(-364), lastDay);
    waitForActivityList(window);
    for (auto _ : state) {
        window.forceUpdate();
        waitForActivityList(window);
        window.repaint();
    }
    state.counters["rows"] = static_cast<double>(window.activityList().model().rowCount());
    state.counters["rss_MB"] = residentMegabytes();
    state.counters["rss_peak_MB"] = peakResidentMegabytes();
}
BENCHMARK(yearListShown)->Unit(benchmark::kMillisecond);

// Resident memory with the window open before and after 10,000 ticks that record a new window
// title every few seconds.
void memoryOverRecording(benchmark::State& state) {
    Session session;
    MainWindow& window = session.openWindow();
    window.stopRecording();  // the benchmark ticks by hand
    QApplication::processEvents();
    const double before = residentMegabytes();
    const auto recordedToday = [&] {
        return session.store->fetch<Activity>(liveCreatedWithin(localDay(lastDay))).size();
    };
    const auto activitiesBefore = recordedToday();
    for (auto _ : state) {
        for (int tick = 0; tick < 10'000; ++tick) {
            session.desktop.showEditor(QStringLiteral("notes %1.txt").arg(tick / 5));
            session.clock.advance(1.0);
            session.recorder->captureTick();
            if (tick % 300 == 0) {
                QApplication::processEvents();
            }
        }
    }
    window.forceUpdate();
    QApplication::processEvents();
    state.counters["rss_before_MB"] = before;
    state.counters["rss_after_MB"] = residentMegabytes();
    state.counters["recorded"] = static_cast<double>(recordedToday() - activitiesBefore);
}
BENCHMARK(memoryOverRecording)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    kivo::five_year_store::seedStoreIfMissing();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
