#pragma once

namespace kivo {

// Kivo's entry: `kivo` opens the window application, `kivo record` records without a window,
// `kivo report ...` prints a report, and `--help` and `--version` answer as usual. Reports and
// answers are given here, with Qt Core alone, so that they start at once; the window and the
// recorder run in `kivo-app`, which this process becomes.
int runCommandLine(int argc, char* argv[]);

}  // namespace kivo
