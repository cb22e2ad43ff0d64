#include "model/activity_moves.h"

#include <QDate>
#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

// SQLite refuses statements with too many parameters; ids are looked up in slices.
constexpr std::size_t idsPerQuery = 500;

using AppKey = std::pair<QUuid, QString>;  // filter, bundle id
using WebKey = std::pair<QUuid, QString>;  // filter, domain
using TagKey = std::pair<QUuid, QUuid>;    // project, filter

// The seconds every total of one day gains (or loses, when negative).
struct DayChanges {
    Instant earliestStart{};
    std::map<TagKey, std::int64_t> tags;
    std::map<AppKey, std::int64_t> apps;
    std::map<AppKey, QString> appNames;
    std::map<WebKey, std::int64_t> webs;
};

void count(std::map<QDate, DayChanges>& days, const Activity& activity, std::int64_t sign) {
    const QDate date = localDateOf(activity.startAt);
    auto [found, isNew] = days.try_emplace(date);
    DayChanges& day = found->second;
    if (isNew || activity.startAt < day.earliestStart) {
        day.earliestStart = activity.startAt;
    }
    const std::int64_t seconds = sign * activity.duration;
    auto& tag = day.tags[{activity.projectId, activity.filterId}];
    tag = checkedAdd(tag, seconds);
    auto& app = day.apps[{activity.filterId, activity.appBundleId}];
    app = checkedAdd(app, seconds);
    day.appNames.try_emplace({activity.filterId, activity.appBundleId}, activity.appName);
    auto& web = day.webs[{activity.filterId, activity.domainName}];
    web = checkedAdd(web, seconds);
}

// Applies one kind's changes to the day's live totals. A total that would go below zero (a store
// already out of step) stops at zero; a day without a total of a gaining key gets one, dated
// within that day so that the day's queries find it.
template <class Total, class Key, class KeyOf, class SetKey>
void changeTotals(RecordStore& store, const DayRange& day, Instant dated,
                  const std::map<Key, std::int64_t>& changes, Instant now, KeyOf keyOf,
                  SetKey setKey) {
    auto totals = store.fetch<Total>(liveCreatedWithin(day));
    for (const auto& [key, seconds] : changes) {
        if (seconds == 0) {
            continue;
        }
        const auto found = std::find_if(totals.begin(), totals.end(),
                                        [&](const Total& total) { return keyOf(total) == key; });
        if (found != totals.end()) {
            found->duration = std::max<std::int64_t>(0, checkedAdd(found->duration, seconds));
            found->updatedAt = now;
            store.update(*found);
        } else if (seconds > 0) {
            auto total = newRecord<Total>(dated);
            total.duration = seconds;
            setKey(total, key);
            store.insert(total);
            totals.push_back(total);
        }
    }
}

void changeDay(RecordStore& store, QDate date, const DayChanges& changes, Instant now) {
    const DayRange day = localDay(date);
    const Instant dated = day.contains(now) ? now : changes.earliestStart;
    changeTotals<TagUsage>(
        store, day, dated, changes.tags, now,
        [](const TagUsage& total) {
            return TagKey{total.projectId, total.filterId};
        },
        [](TagUsage& total, const TagKey& key) {
            total.projectId = key.first;
            total.filterId = key.second;
        });
    changeTotals<AppUsage>(
        store, day, dated, changes.apps, now,
        [](const AppUsage& total) {
            return AppKey{total.filterId, total.appBundleId};
        },
        [&](AppUsage& total, const AppKey& key) {
            total.filterId = key.first;
            total.appBundleId = key.second;
            total.appName = changes.appNames.at(key);
        });
    changeTotals<WebUsage>(
        store, day, dated, changes.webs, now,
        [](const WebUsage& total) {
            return WebKey{total.filterId, total.domainName};
        },
        [](WebUsage& total, const WebKey& key) {
            total.filterId = key.first;
            total.domainName = key.second;
        });
}

}  // namespace

void applyActivityChanges(RecordStore& store, const std::vector<ActivityChange>& changes,
                          Instant now) {
    std::map<QDate, DayChanges> days;
    for (const ActivityChange& change : changes) {
        if (!change.before.isDeleted) {
            count(days, change.before, -1);
        }
        if (!change.after.isDeleted) {
            count(days, change.after, 1);
        }
    }
    try {
        for (const ActivityChange& change : changes) {
            Activity after = change.after;
            after.updatedAt = now;
            store.update(after);
        }
        for (const auto& [date, dayChanges] : days) {
            changeDay(store, date, dayChanges, now);
        }
        store.save();
    } catch (...) {
        store.rollback();
        throw;
    }
}

std::vector<Activity> liveActivitiesById(RecordStore& store, const std::vector<QUuid>& ids) {
    std::vector<Activity> activities;
    for (std::size_t from = 0; from < ids.size(); from += idsPerQuery) {
        const std::size_t to = std::min(ids.size(), from + idsPerQuery);
        Query query{"isDeleted = 0 AND id IN (", {}, {}};
        for (std::size_t index = from; index < to; ++index) {
            query.where += index == from ? "?" : ", ?";
            query.bindings.emplace_back(ids[index]);
        }
        query.where += ")";
        auto slice = store.fetch<Activity>(query);
        activities.insert(activities.end(), std::make_move_iterator(slice.begin()),
                          std::make_move_iterator(slice.end()));
    }
    return activities;
}

void assignActivities(RecordStore& store, const std::vector<QUuid>& ids, QUuid projectId,
                      QUuid filterId, Instant now) {
    std::vector<ActivityChange> changes;
    for (Activity& activity : liveActivitiesById(store, ids)) {
        if (activity.projectId == projectId && activity.filterId == filterId) {
            continue;
        }
        Activity after = activity;
        after.projectId = projectId;
        after.filterId = filterId;
        changes.push_back({std::move(activity), std::move(after)});
    }
    applyActivityChanges(store, changes, now);
}

void deleteActivities(RecordStore& store, const std::vector<QUuid>& ids, Instant now) {
    std::vector<ActivityChange> changes;
    for (Activity& activity : liveActivitiesById(store, ids)) {
        Activity after = activity;
        after.isDeleted = true;
        changes.push_back({std::move(activity), std::move(after)});
    }
    applyActivityChanges(store, changes, now);
}

}  // namespace kivo
