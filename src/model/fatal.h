#pragma once

namespace kivo {

// Stops the program at a fault that no later step could repair, such as a total that no longer
// fits its integer. Prints "kivo: fatal: " and the message on standard error, then aborts so
// that the fault leaves a core to inspect.
[[noreturn]] void fatal(const char* message);

}  // namespace kivo
