#pragma once

#include <QString>
#include <memory>

#include "model/record_store.h"

namespace kivo {

// Opens the store or ends the process: a tracker that cannot keep what it records must not run.
// Prints "Could not create ModelContainer: " and the reason on standard output, exits with 1.
std::unique_ptr<RecordStore> openStoreOrExit(const QString& path,
                                             RecordStore::Mode mode = RecordStore::Mode::ReadWrite);

}  // namespace kivo
