// kivo-browser-host: started by a browser for Kivo's extension (see NativeHost).
#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

#include "browser/browser_protocol.h"
#include "browser/native_host.h"

int main(int argc, char* argv[]) {
    // A browser that goes away closes our output; the write fails instead of ending us.
    ::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    const auto socketPath = kivo::browser_protocol::socketPath();
    if (!socketPath) {
        std::fprintf(stderr,
                     "kivo-browser-host: XDG_RUNTIME_DIR is not set; Kivo cannot be reached\n");
        return EXIT_FAILURE;
    }
    // The browser starts us itself, so our parent is the browser whose windows we report.
    kivo::NativeHost host(STDIN_FILENO, STDOUT_FILENO, *socketPath, ::getppid());
    QObject::connect(&host, &kivo::NativeHost::finished, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    return QCoreApplication::exec();
}
