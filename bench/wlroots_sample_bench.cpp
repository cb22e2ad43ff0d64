// The cost of one sample of a wlroots compositor against a private headless sway with one foot
// window, and of the steps behind it that run only when the focus moves (asking sway for the
// process, resolving a new toplevel's application).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdio>
#include <memory>

#include "desktop/wlroots/sway_ipc.h"
#include "desktop/wlroots/wlroots_desktop.h"
#include "desktop/xdg/application_resolver.h"
#include "e2e/sway_session.h"
#include "e2e/sway_terminal.h"

namespace kivo {
namespace {

struct Session {
    test::SwaySession sway;
    test::SwayTerminal terminal{sway, QStringLiteral("kivo-bench")};
    XdgApplicationCatalog catalog{XdgEnvironment::fromProcess()};
    std::unique_ptr<WlrootsDesktop> desktop;

    Session() {
        if (!sway.waitForFocus(QStringLiteral("kivo-bench"))) {
            std::fprintf(stderr, "sway started no focused window\n");
            return;
        }
        catalog.rescan();
        QString failure;
        desktop = WlrootsDesktop::connect(
            {sway.displayPath(), &catalog, QStringLiteral("/proc"), sway.swaySocket()}, failure);
        if (!desktop) {
            std::fprintf(stderr, "no wlroots desktop: %s\n", qUtf8Printable(failure));
        }
    }
};

// Lives in main, between the application object's birth and death, as QProcess requires.
Session* activeSession = nullptr;

// A tick while the focus stays where it is: a look at the socket and the cached answers.
void BM_WlrootsSample(benchmark::State& state) {
    WlrootsDesktop* desktop = activeSession->desktop.get();
    if (desktop == nullptr || !desktop->focusedWindow()) {
        state.SkipWithError("no focused window");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(desktop->focusedWindow());
    }
}
BENCHMARK(BM_WlrootsSample);

// What each new activation adds on sway: one get_tree round trip over the IPC socket.
void BM_SwayProcessOfNewActivation(benchmark::State& state) {
    const QByteArray socket = activeSession->sway.swaySocket();
    for (auto _ : state) {
        benchmark::DoNotOptimize(swayFocusedProcessId(socket, QStringLiteral("foot")));
    }
}
BENCHMARK(BM_SwayProcessOfNewActivation);

// What the first sample of a new toplevel adds: /proc reads and the desktop-entry lookups.
void BM_ResolveNewToplevel(benchmark::State& state) {
    const ToplevelOwner owner{activeSession->terminal.processId(), QStringLiteral("foot")};
    const ApplicationIndex& index = activeSession->catalog.index();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            resolveToplevelApplicationId(owner, QStringLiteral("/proc"), index));
    }
}
BENCHMARK(BM_ResolveNewToplevel);

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    kivo::Session session;
    kivo::activeSession = &session;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
