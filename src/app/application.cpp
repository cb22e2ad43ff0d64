#include "app/application.h"

#include <cstdio>
#include <cstring>

#include "app/tracker_command.h"
#include "app/window_command.h"

namespace kivo {

int runApplication(int argc, char* argv[]) {
    if (argc == 1) {
        return runWindow(argc, argv);
    }
    if (argc == 2 && std::strcmp(argv[1], "record") == 0) {
        return runTracker(argc, argv);
    }
    if (argc == 2 && std::strcmp(argv[1], "--hidden") == 0) {
        return runWindow(argc, argv, true);
    }
    std::fputs("kivo-app is started by kivo; see kivo --help\n", stderr);
    return 2;
}

}  // namespace kivo
