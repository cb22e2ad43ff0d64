#include "app/termination_signals.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>

namespace kivo {

namespace {

int writeEnd = -1;

void onTerminationSignal(int) {
    const char byte = 1;
    // Nothing can be done about a failed write inside a handler; a full socket already wakes
    // the loop.
    [[maybe_unused]] const auto written = ::write(writeEnd, &byte, 1);
}

// A closed terminal (SIGHUP) ends Kivo as cleanly as SIGINT and SIGTERM do.
void setHandler(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(signal, &action, nullptr);
    }
}

}  // namespace

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_) != 0) {
        qFatal("Cannot create the socket pair that carries termination signals");
    }
    writeEnd = sockets_[0];
    notifier_ = new QSocketNotifier(sockets_[1], QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &TerminationSignals::drain);
    setHandler(onTerminationSignal);
    // Writing to a pipe whose reader has gone must fail as a write, not end the process.
    ::signal(SIGPIPE, SIG_IGN);
}

TerminationSignals::~TerminationSignals() {
    setHandler(SIG_DFL);
    ::signal(SIGPIPE, SIG_DFL);
    writeEnd = -1;
    ::close(sockets_[0]);
    ::close(sockets_[1]);
}

void TerminationSignals::drain() {
    char buffer[64];
    while (::read(sockets_[1], buffer, sizeof buffer) > 0) {
    }
    Q_EMIT received();
}

}  // namespace kivo
