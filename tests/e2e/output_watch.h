#pragma once

#include <QByteArray>

#include "e2e/scoped_process.h"

namespace kivo::test {

// Kivo's output, read as it comes.
class OutputWatch {
public:
    explicit OutputWatch(ScopedProcess& process) : process_(process) {}

    // How often `line` has been printed so far. Without an event loop, only a wait reads the pipe.
    qsizetype count(const QByteArray& line) {
        process_.process().waitForReadyRead(100);
        seen_ += process_.process().readAllStandardOutput();
        return seen_.count(QByteArray(line + '\n'));
    }

private:
    ScopedProcess& process_;
    QByteArray seen_;
};

}  // namespace kivo::test
