#include "app/tracker_command.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

#include "app/browser_wiring.h"
#include "app/termination_signals.h"
#include "capture/capture_timer.h"
#include "capture/recorder.h"
#include "desktop/desktop_factory.h"
#include "model/application_settings.h"
#include "model/application_state.h"
#include "model/diagnostics.h"
#include "model/open_store.h"
#include "model/unassigned_entries.h"

namespace kivo {

int runTracker(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    // Installed first, so that a signal during start-up also ends the process cleanly.
    TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &TerminationSignals::received, &application,
                     &QCoreApplication::quit);

    XdgApplicationCatalog catalog(XdgEnvironment::fromProcess());
    auto choice = chooseDesktop(catalog);
    if (!choice.focusedWindow) {
        std::fprintf(stderr, "kivo: %s\n", qUtf8Printable(choice.failure));
        return EXIT_FAILURE;
    }

    const SystemClock clock;
    const QString storePath = RecordStore::defaultPath();
    const auto storeLock = lockStoreOrExit(storePath);
    const auto store = openStoreOrExit(storePath);
    ensureUnassignedEntries(*store, clock.now());
    const auto settings = ApplicationSettings::openDefault();

    const auto browserTabs = startBrowserTabs(clock);
    Recorder recorder(*choice.focusedWindow, *browserTabs, *store, *settings, clock);
    catalog.rescan();
    recorder.setInstalledApplications(catalog.installedBundleIds());
    const auto presence = choosePresence(*settings, clock);
    ApplicationState state;
    recorder.watchPresence(*presence, state);
    // Headless, the log is where the user sees why nothing counts.
    QObject::connect(&state, &ApplicationState::isAwayChanged, [](bool isAway) {
        printDiagnostic(isAway ? QStringLiteral("Paused: away")
                               : QStringLiteral("Recording again"));
    });
    CaptureTimer timer(recorder, *settings);
    timer.start();
    QCoreApplication::exec();
    timer.stop();
    recorder.finish();
    return EXIT_SUCCESS;
}

}  // namespace kivo
