#pragma once

#include <gtest/gtest.h>

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

// An activity a script made: its window's title and application, and when it began and ended.
struct ExpectedActivity {
    const char* title;
    const char* bundleId;
    const char* name;
    Moment from;
    Moment to;
};

// The recorded `activities`, earliest first, are the `expected` ones. Each edge is seen up to
// `lateness` seconds late (a tick, and what a busy machine adds); the first start a little later
// still, as Kivo's first sample follows the store's preparation.
inline void expectActivities(const std::vector<Activity>& activities,
                             const std::vector<ExpectedActivity>& expected, double lateness) {
    QStringList titles;
    for (const Activity& activity : activities) {
        titles.append(activity.title);
    }
    ASSERT_EQ(activities.size(), expected.size()) << titles.join(u", ").toStdString();
    for (std::size_t i = 0; i < activities.size(); ++i) {
        const Activity& activity = activities[i];
        const auto& [title, bundleId, name, from, to] = expected[i];
        SCOPED_TRACE(title);
        EXPECT_EQ(activity.title, QString::fromLatin1(title));
        EXPECT_EQ(activity.appBundleId, QString::fromLatin1(bundleId));
        EXPECT_EQ(activity.appName, QString::fromLatin1(name));
        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, from.before);
        EXPECT_LE(startAt, from.after + lateness + (i == 0 ? 1.5 : 0.0));
        EXPECT_GE(endAt, to.before - lateness);
        EXPECT_LE(endAt, to.after);
        EXPECT_GE(activity.duration, 1);
    }
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
