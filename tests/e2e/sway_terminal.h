#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "e2e/sway_session.h"

namespace kivo::test {

// A foot terminal in a sway session whose title the test can change: its shell waits on a pipe
// for the new title and sets it with the terminal's title escape.
class SwayTerminal {
public:
    SwayTerminal(const SwaySession& session, const QString& title)
        : pipe_(session.runtimeFolder() + QStringLiteral("/") + title + QStringLiteral(".title")) {
        const QByteArray pipe = pipe_.toLocal8Bit();
        if (::mkfifo(pipe.constData(), 0666) != 0 || ::chmod(pipe.constData(), 0666) != 0) {
            return;
        }
        process_ = session.startClient(
            QStringLiteral("foot"),
            {QStringLiteral("-T"), title, QStringLiteral("sh"), QStringLiteral("-c"),
             QStringLiteral("read t < '%1' && printf '\\033]2;%s\\007' \"$t\"; exec sleep 600")
                 .arg(pipe_)});
    }

    bool isRunning() const { return process_ && process_->isRunning(); }
    qint64 processId() const { return process_ ? process_->process().processId() : 0; }
    void close() { process_.reset(); }

    // Asks the shell to retitle the window; false when the shell never came to listen.
    bool retitle(const QString& title) {
        const QByteArray pipe = pipe_.toLocal8Bit();
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
            // Without a reader yet, opening for writing without waiting fails with ENXIO.
            const int fd = ::open(pipe.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (fd >= 0) {
                const QByteArray line = title.toUtf8() + '\n';
                const bool written = ::write(fd, line.constData(), line.size()) == line.size();
                ::close(fd);
                return written;
            }
        }
        return false;
    }

private:
    QString pipe_;
    std::unique_ptr<ScopedProcess> process_;
};

}  // namespace kivo::test
