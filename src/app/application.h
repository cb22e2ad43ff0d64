#pragma once

namespace kivo {

// Kivo's entry: `kivo` runs the tracker, `kivo report ...` prints a report, and `--help` and
// `--version` answer as usual.
int runApplication(int argc, char* argv[]);

}  // namespace kivo
