#pragma once

#include <functional>
#include <string>

namespace kivo::test {

struct ChildResult {
    int exitCode = -1;   // -1 when the child did not exit normally
    int signal = 0;      // the signal that ended it, or 0
    std::string output;  // what it wrote on standard output
    std::string errors;  // what it wrote on standard error
};

// Runs `body` in a forked child with its standard output and error captured, and waits for it to
// end. The body's return value is the child's exit status.
ChildResult runInChild(const std::function<int()>& body);

}  // namespace kivo::test
