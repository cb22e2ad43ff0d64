#pragma once

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>
#include <cstdint>
#include <cstdio>
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

// One stretch of a scripted session: `bringToFront` puts the window titled `title` in front (or
// renames the one in front, or switches its tab), which then stays there for `dwellMs`.
struct Stretch {
    const char* title;
    const char* bundleId;
    const char* name;
    std::function<bool()> bringToFront;
    int dwellMs;
};

// Runs the stretches in order and returns the activities they should leave: each from the moment
// its window came to the front to the moment the next one did. The last one's end is the
// caller's to set.
inline std::vector<ExpectedActivity> runSchedule(const std::vector<Stretch>& stretches) {
    std::vector<ExpectedActivity> expected;
    for (const Stretch& stretch : stretches) {
        Moment came{now(), 0.0};
        EXPECT_TRUE(stretch.bringToFront()) << stretch.title;
        came.after = now();
        if (!expected.empty()) {
            expected.back().to = came;
        }
        expected.push_back({stretch.title, stretch.bundleId, stretch.name, came, {}});
        QThread::msleep(stretch.dwellMs);
    }
    return expected;
}

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
        EXPECT_EQ(activity.title, QString::fromUtf8(title));
        EXPECT_EQ(activity.appBundleId, QString::fromLatin1(bundleId));
        EXPECT_EQ(activity.appName, QString::fromLatin1(name));
        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, from.before);
        EXPECT_LE(startAt, from.after + lateness + (i == 0 ? 1.5 : 0.0));
        EXPECT_GE(endAt, to.before);
        EXPECT_LE(endAt, to.after + lateness);
        // At most the seconds from its first sample to the next window's, rounded; fewer when
        // the user was away in between.
        EXPECT_LE(static_cast<double>(activity.duration), endAt - startAt + 0.5 + 0.1);
    }
}

// Every activity between two switches holds the time its window was in front to within a second
// (beyond how long the script's switches took), and together they hold it to within 2 %. The
// first and the last are left out: Kivo chose the first's start, and the last ends with Kivo,
// which it sees at once, while its start was seen up to a tick late.
inline void expectTimeInFront(const std::vector<Activity>& activities,
                              const std::vector<ExpectedActivity>& expected) {
    ASSERT_EQ(activities.size(), expected.size());
    double shownInAll = 0.0;
    std::int64_t recordedInAll = 0;
    QStringList errors;  // printed, for a look at how close a run came
    for (std::size_t i = 1; i + 1 < activities.size(); ++i) {
        const auto& [title, bundleId, name, from, to] = expected[i];
        const double shown = (to.before + to.after - from.before - from.after) / 2;
        errors.append(QString::number(static_cast<double>(activities[i].duration) - shown, 'f', 2));
        const double vagueness = (to.after - to.before + from.after - from.before) / 2;
        // A timer's tick may come a little early or late.
        constexpr double jitter = 0.2;
        EXPECT_NEAR(static_cast<double>(activities[i].duration), shown, 1.0 + vagueness + jitter)
            << title;
        shownInAll += shown;
        recordedInAll += activities[i].duration;
    }
    std::printf("recorded minus shown per span (s): %s; in all %lld of %.1f s\n",
                qPrintable(errors.join(u' ')), static_cast<long long>(recordedInAll), shownInAll);
    EXPECT_NEAR(static_cast<double>(recordedInAll), shownInAll, 0.02 * shownInAll);
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
