#pragma once

#include <QString>
#include <memory>

namespace kivo {

// The one recorder of a store: an advisory lock on a file beside it ("kivo.sqlite.lock"), taken
// before the store is written and held while the object lives. A second recorder of the same
// store is refused instead of writing every span a second time. The kernel drops the lock when
// the process ends, however it ends.
class StoreLock {
public:
    // Takes the lock of the store at `storePath`, making its folder (0700) and lock file (0600)
    // when needed. Nothing when another process holds it. Throws StoreError when the lock file
    // cannot be made or locked for any other reason.
    static std::unique_ptr<StoreLock> tryAcquire(const QString& storePath);

    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

private:
    explicit StoreLock(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

}  // namespace kivo
