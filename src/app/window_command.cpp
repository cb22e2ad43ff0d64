#include "app/window_command.h"

#include <QApplication>
#include <cstdlib>

#include "app/browser_wiring.h"
#include "app/install_layout.h"
#include "app/termination_signals.h"
#include "gui/icons.h"
#include "gui/kivo_app.h"
#include "gui/single_instance.h"
#include "model/diagnostics.h"

namespace kivo {

int runWindow(int argc, char* argv[], bool hidden) {
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("Kivo"));
    QApplication::setDesktopFileName(QStringLiteral("app.kivo.Kivo"));
    QApplication::setWindowIcon(kivoIcon());
    // Closing the window keeps recording; Kivo ends through "Quit Kivo" or a signal.
    QApplication::setQuitOnLastWindowClosed(false);

    // Before the store is touched: a second Kivo only hands over to the first.
    SingleInstance instance;
    switch (instance.claim()) {
        case SingleInstance::Claim::alreadyRunning:
            if (hidden) {
                return EXIT_SUCCESS;
            }
            return SingleInstance::activateRunningInstance() ? EXIT_SUCCESS : EXIT_FAILURE;
        case SingleInstance::Claim::noSessionBus:
            printDiagnostic(QStringLiteral(
                "No D-Bus session bus: a second start of Kivo cannot find this one"));
            break;
        case SingleInstance::Claim::owned:
            break;
    }

    TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &TerminationSignals::received, &application,
                     &QCoreApplication::quit);

    const SystemClock clock;
    const auto browserTabs = startBrowserTabs(clock);
    KivoApp kivo(*browserTabs, QString::fromStdString(launcherExecutable().string()));
    QObject::connect(&instance, &SingleInstance::activated, &kivo, &KivoApp::reopenMainWindow);
    kivo.start(hidden);
    return QApplication::exec();
}

}  // namespace kivo
