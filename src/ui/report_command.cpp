#include "ui/report_command.h"

#include <cstdio>

namespace kivo {

// PLACEHOLDER until the report work lands; replaced by the reports helper.
int runReportCommand(int, char*[]) {
    std::puts("kivo report: not built yet");
    return 1;
}

}  // namespace kivo
