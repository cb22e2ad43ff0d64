#pragma once

#include <QUuid>
#include <vector>

#include "model/instant.h"
#include "model/records.h"

namespace kivo {

class RecordStore;

// One activity as stored and as it is to become (another tag, cut-down texts, deleted).
struct ActivityChange {
    Activity before;
    Activity after;
};

// Writes the changed activities and moves their seconds between the daily totals of the days
// they started on, so that every touched day's TagUsage, AppUsage and WebUsage stay the sums of
// its live activities. All of it is one transaction: on failure nothing is changed and the
// StoreError is passed on.
void applyActivityChanges(RecordStore& store, const std::vector<ActivityChange>& changes,
                          Instant now);

// The live activities among `ids`, in the store's order; unknown or deleted ids are skipped.
std::vector<Activity> liveActivitiesById(RecordStore& store, const std::vector<QUuid>& ids);

// Gives the activities to the tag `filterId` of the project `projectId`.
void assignActivities(RecordStore& store, const std::vector<QUuid>& ids, QUuid projectId,
                      QUuid filterId, Instant now);

// Marks the activities deleted and takes their seconds out of the totals.
void deleteActivities(RecordStore& store, const std::vector<QUuid>& ids, Instant now);

}  // namespace kivo
