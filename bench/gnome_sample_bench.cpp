// The cost of one sample of GNOME Shell on Wayland, against a stand-in for Kivo's extension on a
// private bus: a tick while the focus stays (answered from what Kivo already knows), and one
// after the extension announced a change (one question to the shell over the bus).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "desktop/gnome/fake_focus_extension.h"
#include "desktop/gnome/gnome_desktop.h"
#include "desktop/xdg/desktop_fixtures.h"
#include "e2e/private_bus.h"

namespace kivo {
namespace {

struct Session {
    test::PrivateBus bus;
    QTemporaryDir data;
    XdgApplicationCatalog catalog{
        {QString(), data.path(), data.filePath(QStringLiteral("none")), QStringLiteral("C")}};
    std::unique_ptr<test::FakeFocusExtension> extension;
    QDBusConnection client = QDBusConnection::connectToBus(bus.address(), QStringLiteral("bench"));
    std::unique_ptr<GnomeDesktop> desktop;

    Session() {
        test::writeFixtureFile(data.filePath(QStringLiteral("applications/foot.desktop")),
                               test::applicationEntry("Foot"));
        catalog.rescan();
        extension = std::make_unique<test::FakeFocusExtension>(bus.address());
        extension->setFocus(QStringLiteral("bash — ~/src/kivo"), QStringLiteral("foot"), 1, false);
        QString failure;
        if (extension->publish()) {
            desktop = GnomeDesktop::open({client, &catalog, QStringLiteral("/proc")}, failure);
        }
    }
    ~Session() {
        desktop.reset();
        extension.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("bench"));
    }
};

void BM_GnomeSample(benchmark::State& state) {
    Session session;
    if (!session.desktop) {
        state.SkipWithError("no extension on the bus");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(session.desktop->focusedWindow());
    }
}
BENCHMARK(BM_GnomeSample);

// The announcement is delivered outside the timing; the sample then asks the extension.
void BM_GnomeSampleAfterFocusChange(benchmark::State& state) {
    Session session;
    if (!session.desktop) {
        state.SkipWithError("no extension on the bus");
        return;
    }
    const test::AnnouncementCounter announcements(session.client);
    int change = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString title = QStringLiteral("title %1").arg(++change);
        session.extension->setFocus(title, QStringLiteral("foot"), 1, true);
        if (!announcements.waitFor(change)) {
            state.SkipWithError("the change was not announced");
            break;
        }
        state.ResumeTiming();
        const auto sample = session.desktop->focusedWindow();
        if (!sample || sample->title != title) {
            state.SkipWithError("the change was not seen");
            break;
        }
    }
}
BENCHMARK(BM_GnomeSampleAfterFocusChange)->MeasureProcessCPUTime()->UseRealTime();

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
