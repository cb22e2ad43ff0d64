#pragma once

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>
#include <cstdint>
#include <functional>
#include <numeric>
#include <vector>

#include "model/instant.h"
#include "model/record_store.h"

namespace kivo::test {

// When a scripted change happened: some time between the command's start and its end.
struct Moment {
    double before = 0.0;
    double after = 0.0;
};

inline double now() {
    return toEpochSeconds(SystemClock().now());
}

template <class Record>
std::int64_t totalDuration(const std::vector<Record>& records) {
    return std::accumulate(records.begin(), records.end(), std::int64_t{0},
                           [](std::int64_t sum, const Record& r) { return sum + r.duration; });
}

// Kivo prepares its store just before it starts ticking; it may be half-created for a while.
// Prepared means it holds the unassigned project and its tag (a test may have put filters there
// before). `between` runs between looks, for input that keeps the user present.
inline bool waitForStore(const QString& storePath, const std::function<void()>& between = {}) {
    for (const QDeadlineTimer deadline(30'000); !deadline.hasExpired();) {
        try {
            if (QFile::exists(storePath)) {
                const auto store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
                if (!store->fetch<Project>().empty() && !store->fetch<Filter>().empty()) {
                    return true;
                }
            }
        } catch (const StoreError&) {
        }
        between ? between() : QThread::msleep(100);
    }
    ADD_FAILURE() << "Kivo prepared no store";
    return false;
}

}  // namespace kivo::test
