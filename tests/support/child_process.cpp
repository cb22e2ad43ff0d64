#include "support/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace kivo::test {

ChildResult runInChild(const std::function<int()>& body) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) {
        return {};
    }
    // Standard error goes to a file, so that a child writing much to both never blocks.
    std::FILE* errors = std::tmpfile();
    if (errors == nullptr) {
        return {};
    }
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        ::dup2(pipeEnds[1], STDOUT_FILENO);
        ::dup2(::fileno(errors), STDERR_FILENO);
        const int status = body();
        std::fflush(nullptr);
        std::_Exit(status);
    }
    ::close(pipeEnds[1]);
    ChildResult result;
    char buffer[4096];
    for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
        result.output.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        result.signal = WTERMSIG(status);
    }
    std::rewind(errors);
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, errors)) > 0;) {
        result.errors.append(buffer, n);
    }
    std::fclose(errors);
    return result;
}

}  // namespace kivo::test
