#pragma once

#include <unistd.h>

#include <memory>

#include "e2e/scoped_process.h"

namespace kivo::test {

// Compositors and desktop shells refuse to run as root: when the tests run as root, their
// sessions run as "nobody".
inline constexpr uid_t sessionUser = 65534;

inline bool isRoot() {
    return ::geteuid() == 0;
}

// Starts `program` as the session's user.
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
        QStringList{QStringLiteral("--reuid=%1").arg(sessionUser),
                    QStringLiteral("--regid=%1").arg(sessionUser), QStringLiteral("--clear-groups"),
                    program} +
            arguments,
        environment, logFile);
}

}  // namespace kivo::test
