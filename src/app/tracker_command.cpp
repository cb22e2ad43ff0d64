#include "app/tracker_command.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

#include "capture/capture_timer.h"
#include "capture/recorder.h"
#include "model/application_settings.h"
#include "model/open_store.h"
#include "model/unassigned_entries.h"
#include "desktop/desktop_factory.h"
#include "app/browser_wiring.h"
#include "app/termination_signals.h"

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
    const auto store = openStoreOrExit(RecordStore::defaultPath());
    ensureUnassignedEntries(*store, clock.now());
    const auto settings = ApplicationSettings::openDefault();

    const auto browserTabs = startBrowserTabs(clock);
    Recorder recorder(*choice.focusedWindow, *browserTabs, *store, *settings, clock);
    catalog.rescan();
    recorder.setInstalledApplications(catalog.installedBundleIds());
    CaptureTimer timer(recorder, *settings);
    timer.start();
    QCoreApplication::exec();
    timer.stop();
    return EXIT_SUCCESS;
}

}  // namespace kivo
