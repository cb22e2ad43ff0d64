#pragma once

namespace kivo {

// `kivo report [--from YYYY-MM-DD] [--to YYYY-MM-DD] [--days N] [--json]`; argv[1] is "report".
int runReportCommand(int argc, char* argv[]);

}  // namespace kivo
