#include "ui/tracker_command.h"

#include <cstdio>

namespace kivo {

// PLACEHOLDER until the desktop backend lands; replaced by the X11 helper.
int runTracker(int, char*[]) {
    std::puts("kivo: tracker not built yet");
    return 1;
}

}  // namespace kivo
