// The cost of one sample of the X11 desktop against a private Xvfb, and of the steps behind it
// that run only now and then (resolving a new window's application, scanning the installed
// applications); and of a whole sample with a browser in front, answered by the browser bridge.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

#include "browser/browser_bridge.h"
#include "capture/browser_table.h"
#include "capture/sampling.h"
#include "desktop/x11/x11_desktop.h"
#include "desktop/xdg/application_resolver.h"
#include "e2e/fake_window_manager.h"
#include "e2e/xvfb_server.h"
#include "support/fake_browser_host.h"
#include "support/manual_clock.h"

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

// Chromium in front, its extension connected through a host that answers at once. `clock` drives
// the bridge's freshness rules.
struct BrowserInFront {
    QTemporaryDir runtime;
    std::unique_ptr<BrowserBridge> bridge;
    std::unique_ptr<test::FakeBrowserHost> host;

    explicit BrowserInFront(const Clock& clock) {
        const QString socketPath = runtime.filePath(QStringLiteral("kivo-browser.socket"));
        QString failure;
        bridge = BrowserBridge::listen({socketPath, &clock}, failure);
        if (!bridge) {
            return;
        }
        session().manager.setText(session().window, "WM_CLASS", "STRING",
                                  QByteArrayView("chromium\0Chromium\0", 18));
        session().manager.setText(session().window, "_NET_WM_NAME", "UTF8_STRING",
                                  "News - Chromium");
        host = std::make_unique<test::FakeBrowserHost>(socketPath, ::getppid(),
                                                       QStringLiteral("News"));
        const FocusedWindow window{::getppid(), QStringLiteral("chromium"),
                                   QStringLiteral("Chromium"), QStringLiteral("News - Chromium")};
        for (const QDeadlineTimer deadline(10'000);
             !std::holds_alternative<BrowserTab>(bridge->frontTab(window)) &&
             !deadline.hasExpired();) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        }
    }

    // Samples as the recorder does; `step` runs before each sample.
    void sample(benchmark::State& state, const std::function<void()>& step, const Clock& clock) {
        if (!bridge || session().desktop == nullptr) {
            state.SkipWithError("no bridge or no X11 desktop");
            return;
        }
        const QStringList installed{QStringLiteral("chromium")};
        for (auto _ : state) {
            step();
            const auto sample =
                takeSample(*session().desktop, *bridge, clock, installed, desktopBrowserTable());
            if (!sample || sample->url != QStringLiteral("http://127.0.0.1/")) {
                state.SkipWithError("the front tab was not sampled");
                return;
            }
        }
    }
};

// The usual tick: the extension has reported the front tab, the bridge answers from memory.
void BM_SampleBrowserInFront(benchmark::State& state) {
    const SystemClock clock;
    BrowserInFront browser(clock);
    browser.sample(
        state, [] {}, clock);
}
BENCHMARK(BM_SampleBrowserInFront);

// Every report aged: each sample asks the browser and waits for its answer.
void BM_SampleBrowserInFrontAsked(benchmark::State& state) {
    test::ManualClock clock;
    BrowserInFront browser(clock);
    browser.sample(
        state, [&] { clock.advance(31.0); }, clock);
}
BENCHMARK(BM_SampleBrowserInFrontAsked);

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
