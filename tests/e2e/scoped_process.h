#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <memory>

namespace kivo::test {

// A child process that ends with the object, by its own process id: SIGTERM, then SIGKILL when
// it has not exited within a few seconds. Tests that fail half-way leave nothing behind.
class ScopedProcess {
public:
    // With `outputFile`, standard output and error go there instead of pipes that nobody may
    // read, so that a talkative daemon never blocks on a full pipe.
    ScopedProcess(const QString& program, const QStringList& arguments,
                  const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                  const QString& outputFile = QString());
    ~ScopedProcess();
    ScopedProcess(const ScopedProcess&) = delete;
    ScopedProcess& operator=(const ScopedProcess&) = delete;

    // False also when the program could not be started.
    bool isRunning() const;
    qint64 processId() const;
    QProcess& process() { return *process_; }

    // Sends `signal`, waits for the exit and returns the exit code; -1 when the process did not
    // exit by itself in time (it is then killed) or was ended by a signal.
    int stop(int signal, int timeoutMs = 10'000);

private:
    std::unique_ptr<QProcess> process_;
};

}  // namespace kivo::test
