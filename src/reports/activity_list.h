#pragma once

#include <QDate>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <array>
#include <cstdint>
#include <vector>

#include "model/instant.h"
#include "model/live_activities.h"
#include "model/records.h"

namespace kivo {

class RecordStore;

// Which recorded activities the list shows: those of a range of local days (by their start),
// of the counted filters, narrowed by the report tables' selections (an empty list narrows
// nothing; several lists must all hold), by a case-insensitive text found in the title or the
// address, and long enough to be worth showing.
struct ActivityListQuery {
    QDate minDate;
    QDate maxDate;
    QSet<QUuid> countedFilters;
    QStringList applicationSelections;  // bundle ids
    QStringList websiteSelections;      // domains
    QStringList filterSelections;       // filter ids
    QStringList projectSelections;      // project ids
    QString searchText;
    double minimumDuration = 1.0;  // seconds; shorter activities are left out
    // Shown with the stored ones as if written; they have no record to change yet.
    LiveActivities live;
};

struct ActivityEntry {
    QUuid id;
    Instant startAt{};
    Instant endAt{};
    std::int64_t duration = 0;
};

// The activities of one application, title and address under one tag. A capture that several
// tags accepted was stored once per tag, so the tag is part of the group: each row has one tag
// and its time is counted once.
struct ActivityGroup {
    QString appName;
    QString appBundleId;
    QString title;
    QString url;
    QString domainName;
    QUuid projectId;
    QUuid filterId;
    std::int64_t duration = 0;
    std::vector<ActivityEntry> entries;  // earliest first
};

struct ActivityList {
    std::vector<ActivityGroup> groups;  // longest first; equal ones by first appearance
    // Minutes of the shown activities per hour of the local day, over the whole range.
    std::array<double, 24> minutesPerHour{};
    std::int64_t durationTotal = 0;
};

// The live activities that started within the query's local days and that it shows, grouped,
// with the query's unwritten ones among them in order of their start.
ActivityList listActivities(RecordStore& store, const ActivityListQuery& query);

// A new tag made from a row: the row's application, and its domain as the address keyword for a
// web page or else its title as the title keyword, named after that keyword. Not yet stored.
Filter filterPrefilledFrom(const ActivityGroup& group, QUuid projectId, Instant now);

}  // namespace kivo
