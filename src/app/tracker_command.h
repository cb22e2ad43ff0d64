#pragma once

namespace kivo {

// Records the desktop's foreground into the store until SIGINT or SIGTERM.
int runTracker(int argc, char* argv[]);

}  // namespace kivo
