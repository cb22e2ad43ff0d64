// The cost of one sample of the X11 desktop against a private Xvfb, and of the steps behind it
// that run only now and then (resolving a new window's application, scanning the installed
// applications).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

#include "desktop/x11/x11_desktop.h"
#include "desktop/xdg/application_resolver.h"
#include "e2e/fake_window_manager.h"
#include "e2e/xvfb_server.h"

namespace kivo {
namespace {

// One X server and one active xterm-like window for all benchmarks; its process is this
// benchmark's parent, so that /proc holds real files to read.
struct Session {
    test::XvfbServer server;
    test::FakeWindowManager manager{server.displayName()};
    xcb_window_t window = XCB_WINDOW_NONE;
    XdgApplicationCatalog catalog{XdgEnvironment::fromProcess()};
    std::unique_ptr<X11Desktop> desktop;

    Session() {
        manager.announce();
        window = manager.createWindow();
        manager.setCardinal(window, "_NET_WM_PID", static_cast<std::uint32_t>(::getppid()));
        manager.setText(window, "WM_CLASS", "STRING", QByteArrayView("xterm\0XTerm\0", 12));
        manager.setText(window, "_NET_WM_NAME", "UTF8_STRING", "bash — ~/src/kivo");
        manager.setActiveWindow(window);
        catalog.rescan();
        QString failure;
        desktop =
            X11Desktop::connect({server.displayName(), &catalog, QStringLiteral("/proc")}, failure);
        if (!desktop) {
            std::fprintf(stderr, "no X11 desktop: %s\n", qUtf8Printable(failure));
        }
    }
};

// Lives in main, between the application object's birth and death, as QProcess requires.
Session* activeSession = nullptr;

Session& session() {
    return *activeSession;
}

void sampleOnce(benchmark::State& state) {
    X11Desktop* desktop = session().desktop.get();
    if (desktop == nullptr) {
        state.SkipWithError("no X11 desktop");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(desktop->focusedWindow());
    }
}

void BM_SampleUtf8Title(benchmark::State& state) {
    session().manager.removeProperty(session().window, "WM_NAME");
    session().manager.setText(session().window, "_NET_WM_NAME", "UTF8_STRING", "bash — ~/src/kivo");
    session().manager.sync();
    sampleOnce(state);
}
BENCHMARK(BM_SampleUtf8Title);

void BM_SampleCompoundTextTitle(benchmark::State& state) {
    session().manager.removeProperty(session().window, "_NET_WM_NAME");
    session().manager.setText(session().window, "WM_NAME", "COMPOUND_TEXT",
                              "Editor \x1b$)B\xc6\xfc\xcb\xdc");
    session().manager.sync();
    sampleOnce(state);
}
BENCHMARK(BM_SampleCompoundTextTitle);

// What the first sample of a new window adds: /proc reads and the desktop-entry lookups.
void BM_ResolveNewWindow(benchmark::State& state) {
    const auto index =
        ApplicationIndex::scan(XdgEnvironment::fromProcess().applicationFolders(), QString());
    const WindowOwner owner{::getppid(), QStringLiteral("xterm"), QStringLiteral("XTerm")};
    for (auto _ : state) {
        benchmark::DoNotOptimize(resolveApplicationId(owner, QStringLiteral("/proc"), index));
    }
}
BENCHMARK(BM_ResolveNewWindow);

void BM_ScanInstalledApplications(benchmark::State& state) {
    const auto environment = XdgEnvironment::fromProcess();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ApplicationIndex::scan(environment.applicationFolders(), environment.messagesLocale));
    }
}
BENCHMARK(BM_ScanInstalledApplications);

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
