#pragma once

namespace kivo {

// Kivo's entry: `kivo` opens the window application, `kivo record` records without a window,
// `kivo report ...` prints a report, and `--help` and `--version` answer as usual.
int runApplication(int argc, char* argv[]);

}  // namespace kivo
