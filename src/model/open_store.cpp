#include "model/open_store.h"

#include <cstdio>
#include <cstdlib>

namespace kivo {

std::unique_ptr<RecordStore> openStoreOrExit(const QString& path, RecordStore::Mode mode) {
    try {
        return RecordStore::open(path, mode);
    } catch (const StoreError& error) {
        std::printf("Could not create ModelContainer: %s\n", error.what());
        std::fflush(stdout);
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace kivo
