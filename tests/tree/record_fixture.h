#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <cstdint>

#include "model/instant.h"
#include "model/record_store.h"
#include "model/records.h"

namespace kivo::test {

// The local moment `hour`:`minute` of `date`.
inline Instant localMoment(QDate date, int hour, int minute = 0) {
    return fromEpochSeconds(
        static_cast<double>(QDateTime(date, QTime(hour, minute)).toSecsSinceEpoch()));
}

// Writes the projects, filters and daily totals a test needs, all saved in one batch by save().
class RecordFixture {
public:
    RecordFixture(RecordStore& store, Instant now) : store_(store), now_(now) {}

    Project project(const QString& name, bool isArchived = false) {
        auto record = newRecord<Project>(now_);
        record.projectName = name;
        record.isArchived = isArchived;
        store_.insert(record);
        return record;
    }

    Filter filter(const Project& owner, const QString& tagName, std::int64_t rating = 0) {
        auto record = newRecord<Filter>(now_);
        record.projectId = owner.id;
        record.tagName = tagName;
        record.rating = rating;
        store_.insert(record);
        return record;
    }

    template <class Record>
    void remove(Record record) {
        record.isDeleted = true;
        store_.update(record);
    }

    void tagUsage(const Filter& owner, std::int64_t duration, Instant createdAt) {
        auto record = newRecord<TagUsage>(createdAt);
        record.projectId = owner.projectId;
        record.filterId = owner.id;
        record.duration = duration;
        store_.insert(record);
    }

    void appUsage(const Filter& owner, const QString& appName, const QString& appBundleId,
                  std::int64_t duration, Instant createdAt) {
        auto record = newRecord<AppUsage>(createdAt);
        record.filterId = owner.id;
        record.appName = appName;
        record.appBundleId = appBundleId;
        record.duration = duration;
        store_.insert(record);
    }

    void webUsage(const Filter& owner, const QString& domainName, std::int64_t duration,
                  Instant createdAt) {
        auto record = newRecord<WebUsage>(createdAt);
        record.filterId = owner.id;
        record.domainName = domainName;
        record.duration = duration;
        store_.insert(record);
    }

    void save() { store_.save(); }

private:
    RecordStore& store_;
    Instant now_;
};

}  // namespace kivo::test
