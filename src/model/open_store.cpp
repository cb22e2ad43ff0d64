#include "model/open_store.h"

#include <cstdio>
#include <cstdlib>

namespace kivo {

namespace {

[[noreturn]] void exitWithStoreError(const StoreError& error) {
    std::printf("Could not create ModelContainer: %s\n", error.what());
    std::fflush(stdout);
    std::exit(EXIT_FAILURE);
}

}  // namespace

std::unique_ptr<RecordStore> openStoreOrExit(const QString& path, RecordStore::Mode mode) {
    try {
        return RecordStore::open(path, mode);
    } catch (const StoreError& error) {
        exitWithStoreError(error);
    }
}

std::unique_ptr<StoreLock> lockStoreOrExit(const QString& path) {
    try {
        if (auto lock = StoreLock::tryAcquire(path)) {
            return lock;
        }
    } catch (const StoreError& error) {
        exitWithStoreError(error);
    }
    std::fprintf(stderr, "kivo: Kivo is already recording into %s\n", qUtf8Printable(path));
    std::exit(EXIT_FAILURE);
}

}  // namespace kivo
