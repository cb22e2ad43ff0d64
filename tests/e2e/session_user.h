#pragma once

#include <unistd.h>

#include <memory>

#include "e2e/scoped_process.h"

namespace kivo::test {

// Compositors refuse to run as root: as root, a test's compositor and its clients run as
// "nobody".
inline constexpr uid_t unprivilegedUser = 65534;

inline bool isRoot() {
    return ::geteuid() == 0;
}

// Starts `program` as the session's user (this process's own unless it is root), its output
// going to `logFile`.
inline std::unique_ptr<ScopedProcess> startAsSessionUser(const QString& program,
                                                         const QStringList& arguments,
                                                         const QProcessEnvironment& environment,
                                                         const QString& logFile) {
    if (!isRoot()) {
        return std::make_unique<ScopedProcess>(program, arguments, environment, logFile);
    }
    // setpriv executes the program in its own place, so the process id stays the program's.
    return std::make_unique<ScopedProcess>(
        QStringLiteral("setpriv"),
        QStringList{QStringLiteral("--reuid=%1").arg(unprivilegedUser),
                    QStringLiteral("--regid=%1").arg(unprivilegedUser),
                    QStringLiteral("--clear-groups"), program} +
            arguments,
        environment, logFile);
}

}  // namespace kivo::test
