#include "e2e/scoped_process.h"

#include <csignal>

namespace kivo::test {

ScopedProcess::ScopedProcess(const QString& program, const QStringList& arguments,
                             const QProcessEnvironment& environment, const QString& outputFile)
    : process_(std::make_unique<QProcess>()) {
    process_->setProcessEnvironment(environment);
    if (!outputFile.isEmpty()) {
        process_->setProcessChannelMode(QProcess::MergedChannels);
        process_->setStandardOutputFile(outputFile, QIODevice::Append);
    }
    process_->start(program, arguments);
    process_->waitForStarted(10'000);
}

ScopedProcess::~ScopedProcess() {
    if (isRunning()) {
        stop(SIGTERM, 5'000);
    }
}

bool ScopedProcess::isRunning() const {
    return process_->state() != QProcess::NotRunning;
}

qint64 ScopedProcess::processId() const {
    return process_->processId();
}

int ScopedProcess::stop(int signal, int timeoutMs) {
    if (const qint64 pid = processId(); pid > 0) {
        ::kill(static_cast<pid_t>(pid), signal);
    }
    if (!process_->waitForFinished(timeoutMs)) {
        process_->kill();
        process_->waitForFinished(5'000);
        return -1;
    }
    return process_->exitStatus() == QProcess::NormalExit ? process_->exitCode() : -1;
}

}  // namespace kivo::test
