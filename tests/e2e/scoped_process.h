#pragma once

#include <QProcess>
#include <csignal>
#include <functional>
#include <memory>

namespace kivo::test {

// A child process that ends with the object, by its own process id (SIGTERM, then SIGKILL), so that
// failed tests leave nothing behind. `outputFile` spares a talkative daemon a pipe nobody reads;
// `inChild` runs in the child just before the program starts (to rearrange its descriptors).
class ScopedProcess {
public:
    ScopedProcess(const QString& program, const QStringList& arguments,
                  const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                  const QString& outputFile = QString(),
                  const std::function<void()>& inChild = {}) {
        process_->setProcessEnvironment(environment);
        if (!outputFile.isEmpty()) {
            process_->setProcessChannelMode(QProcess::MergedChannels);
            process_->setStandardOutputFile(outputFile, QIODevice::Append);
        }
        if (inChild) {
            process_->setChildProcessModifier(inChild);
        }
        process_->start(program, arguments);
        process_->waitForStarted(10'000);
    }
    ~ScopedProcess() {
        if (isRunning()) {
            stop(SIGTERM, 5'000);
        }
    }

    // False also when the program could not be started.
    bool isRunning() const { return process_->state() != QProcess::NotRunning; }
    QProcess& process() { return *process_; }

    // Sends `signal`; the exit code, or -1 when killed after `timeoutMs` or ended by a signal.
    int stop(int signal, int timeoutMs = 10'000) {
        if (const qint64 pid = process_->processId(); pid > 0) {
            ::kill(static_cast<pid_t>(pid), signal);
        }
        if (!process_->waitForFinished(timeoutMs)) {
            process_->kill();
            process_->waitForFinished(5'000);
            return -1;
        }
        return process_->exitStatus() == QProcess::NormalExit ? process_->exitCode() : -1;
    }

private:
    std::unique_ptr<QProcess> process_ = std::make_unique<QProcess>();
};

}  // namespace kivo::test
