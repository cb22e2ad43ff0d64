#include "app/termination_signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <csignal>

#include "model/diagnostics.h"
#include "support/child_process.h"

namespace kivo {
namespace {

TEST(TerminationSignals, EachEndsTheLoopCleanlyOnTheMainThread) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        TerminationSignals signals;
        int received = 0;
        QObject::connect(&signals, &TerminationSignals::received, [&received] { ++received; });
        ASSERT_EQ(::raise(signal), 0);
        for (QDeadlineTimer deadline(10'000); received == 0 && !deadline.hasExpired();) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        }
        EXPECT_EQ(received, 1) << strsignal(signal);
    }
}

TEST(TerminationSignals, DiagnosticsToAReaderThatHasGoneAreDropped) {
    // Standard output becomes a pipe whose reader is closed before anything is written.
    for (const bool isHandled : {true, false}) {
        const auto result = test::runInChild([isHandled] {
            const auto signals = isHandled ? std::make_unique<TerminationSignals>() : nullptr;
            int ends[2];
            if (::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) < 0) {
                return 2;
            }
            ::close(ends[0]);
            for (int line = 0; line < 3; ++line) {
                printDiagnostic(QStringLiteral("nobody reads this"));
            }
            return 0;
        });
        if (isHandled) {
            EXPECT_EQ(result.signal, 0);
            EXPECT_EQ(result.exitCode, 0);
        } else {
            EXPECT_EQ(result.signal, SIGPIPE) << "what an unprepared process suffers";
        }
    }
}

}  // namespace
}  // namespace kivo
