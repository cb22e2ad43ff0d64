#include "app/command_line.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstdio>
#include <cstring>

#include "app/install_layout.h"
#include "cli/report_command.h"

namespace kivo {

namespace {

constexpr const char* usage =
    "Usage: kivo [--hidden | --help | --version]\n"
    "       kivo record\n"
    "       kivo report [--from YYYY-MM-DD] [--to YYYY-MM-DD] [--days N] [--json]\n"
    "\n"
    "Without a command Kivo opens its window and tray item and records which application is\n"
    "in front, once per tick, until you quit it; starting it again brings the window back.\n"
    "With --hidden it starts in the tray only, as the login autostart entry does.\n"
    "`kivo record` records the same way without a window until it is interrupted.\n"
    "`kivo report` prints where the time went.\n";

bool isWindowApplicationCommand(int argc, char* argv[]) {
    return argc == 1 || (argc == 2 && (std::strcmp(argv[1], "record") == 0 ||
                                       std::strcmp(argv[1], "--hidden") == 0));
}

// The same process id goes on, so whoever started Kivo still holds it.
int becomeWindowApplication(char* argv[]) {
    const auto executable = windowApplicationExecutable();
    execv(executable.c_str(), argv);
    std::fprintf(stderr, "kivo: cannot start %s: %s\n", executable.c_str(), std::strerror(errno));
    return 127;
}

}  // namespace

int runCommandLine(int argc, char* argv[]) {
    if (argc > 1 && std::strcmp(argv[1], "report") == 0) {
        // A report asks the calendar about every day of its range. Without TZ, glibc looks at
        // /etc/localtime anew for each question; naming the same file reads it once.
        setenv("TZ", ":/etc/localtime", 0);
        return runReportCommand(argc, argv);
    }
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::fputs(usage, stdout);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("kivo %s\n", KIVO_VERSION);
        return 0;
    }
    if (isWindowApplicationCommand(argc, argv)) {
        return becomeWindowApplication(argv);
    }
    std::fputs(usage, stderr);
    return 2;
}

}  // namespace kivo
