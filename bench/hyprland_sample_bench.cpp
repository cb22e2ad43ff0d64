// The cost of one sample of Hyprland, against sockets that play Hyprland (its compositor is not
// packaged here): a tick while the focus stays, and one that reads a focus change and asks the
// request socket for the new window's process.
#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "desktop/hyprland/hyprland_desktop.h"
#include "desktop/hyprland/scripted_hyprland.h"

namespace kivo {
namespace {

struct Session {
    QTemporaryDir folder;
    test::ScriptedHyprland hyprland{folder.path()};
    XdgApplicationCatalog catalog{XdgEnvironment::fromProcess()};
    std::unique_ptr<HyprlandDesktop> desktop;

    Session() {
        hyprland.setActiveWindowReply(
            R"({"address":"0xaaa","class":"foot","title":"bash — ~/src/kivo","pid":1})");
        catalog.rescan();
        QString failure;
        desktop =
            HyprlandDesktop::connect({folder.path(), &catalog, QStringLiteral("/proc")}, failure);
    }
};

void BM_HyprlandSample(benchmark::State& state) {
    Session session;
    if (!session.desktop) {
        state.SkipWithError("no Hyprland desktop");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(session.desktop->focusedWindow());
    }
}
BENCHMARK(BM_HyprlandSample);

void BM_HyprlandSampleAfterFocusChange(benchmark::State& state) {
    Session session;
    if (!session.desktop) {
        state.SkipWithError("no Hyprland desktop");
        return;
    }
    int window = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QByteArray address = QByteArray::number(++window % 2 + 10);
        session.hyprland.sendEvents("activewindow>>foot,title " + address + "\nactivewindowv2>>" +
                                    address + '\n');
        state.ResumeTiming();
        benchmark::DoNotOptimize(session.desktop->focusedWindow());
    }
}
BENCHMARK(BM_HyprlandSampleAfterFocusChange);

}  // namespace
}  // namespace kivo

BENCHMARK_MAIN();
