#pragma once

#include <QString>
#include <memory>

#include "model/record_store.h"
#include "model/store_lock.h"

namespace kivo {

// Opens the store or ends the process: a tracker that cannot keep what it records must not run.
// Prints "Could not create ModelContainer: " and the reason on standard output, exits with 1.
std::unique_ptr<RecordStore> openStoreOrExit(const QString& path,
                                             RecordStore::Mode mode = RecordStore::Mode::ReadWrite);

// Makes this process the one recorder of the store at `path`, or ends it: when another process
// records into it, prints "Kivo is already recording" and the store on standard error and exits
// with 1 before anything is written. A lock that cannot be taken at all ends the process as a
// store that cannot be opened does.
std::unique_ptr<StoreLock> lockStoreOrExit(const QString& path);

}  // namespace kivo
