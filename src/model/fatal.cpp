#include "model/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace kivo {

void fatal(const char* message) {
    std::fflush(stdout);
    std::fprintf(stderr, "kivo: fatal: %s\n", message);
    std::fflush(stderr);
    std::abort();
}

}  // namespace kivo
