// The cost of one sample of KDE Plasma against a private KWin with one Qt window, and of the
// steps behind it that run only when the active window changes (reading the script's report,
// resolving a new window's application).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <cstdio>
#include <memory>

#include "desktop/kwin/kwin_desktop.h"
#include "desktop/kwin/kwin_window.h"
#include "desktop/xdg/application_resolver.h"
#include "e2e/kwin_session.h"

namespace kivo {
namespace {

struct Session {
    test::KWinSession kwin;
    std::unique_ptr<test::ScopedProcess> window;
    XdgApplicationCatalog catalog{XdgEnvironment{QString(), QString(),
                                                 kwin.dataFolder() + QStringLiteral(":/usr/share"),
                                                 QStringLiteral("C")}};
    std::unique_ptr<KWinDesktop> desktop;

    Session() {
        catalog.rescan();
        QString failure;
        desktop = KWinDesktop::connect({kwin.bus(), kwin.scriptCopy(), &catalog}, failure);
        if (!desktop) {
            std::fprintf(stderr, "no KWin desktop: %s\n", qUtf8Printable(failure));
            return;
        }
        window = kwin.startWaylandWindow(QStringLiteral("kivo-bench"));
        for (const QDeadlineTimer deadline(30'000);
             !deadline.hasExpired() && !desktop->focusedWindow(); QThread::msleep(50)) {
            QCoreApplication::processEvents();
        }
    }
};

// Lives in main, between the application object's birth and death, as QProcess requires.
Session* activeSession = nullptr;

// A tick while the active window stays: the latest report and the remembered application.
void BM_KWinSample(benchmark::State& state) {
    KWinDesktop* desktop = activeSession->desktop.get();
    if (desktop == nullptr || !desktop->focusedWindow()) {
        state.SkipWithError("no focused window");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(desktop->focusedWindow());
    }
}
BENCHMARK(BM_KWinSample);

// What each report of the script adds, once its message has arrived.
void BM_KWinReadReport(benchmark::State& state) {
    const QVariantMap report{
        {QStringLiteral("caption"), QStringLiteral("kivo-bench")},
        {QStringLiteral("resourceClass"), QString::fromLatin1(test::KWinSession::windowAppId)},
        {QStringLiteral("resourceName"), QStringLiteral("kivo-e2e-window")},
        {QStringLiteral("desktopFileName"), QString::fromLatin1(test::KWinSession::windowAppId)},
        {QStringLiteral("pid"), 4242.0},
        {QStringLiteral("internalId"), QStringLiteral("{8f2b6f0e-4f5c-4b43-9d1c-1f0e7c2d5a11}")}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(kwinWindowFromReport(report));
    }
}
BENCHMARK(BM_KWinReadReport);

// What the first sample of a new window adds: /proc reads and the desktop-entry lookups.
void BM_ResolveNewKWinWindow(benchmark::State& state) {
    const qint64 processId =
        activeSession->window ? activeSession->window->process().processId() : 0;
    const ToplevelOwner owner{processId, QLatin1String(test::KWinSession::windowAppId)};
    const ApplicationIndex& index = activeSession->catalog.index();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            resolveToplevelApplicationId(owner, QStringLiteral("/proc"), index));
    }
}
BENCHMARK(BM_ResolveNewKWinWindow);

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
