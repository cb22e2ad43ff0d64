#pragma once

namespace kivo {

// Records the desktop's foreground into the store until SIGINT, SIGTERM or SIGHUP, then records
// the captures still open. A second tracker of the same store says so in one line and leaves.
int runTracker(int argc, char* argv[]);

}  // namespace kivo
