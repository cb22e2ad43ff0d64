#pragma once

#include <QDateTime>
#include <memory>

#include "model/records.h"
#include "support/manual_clock.h"
#include "support/temp_home.h"
#include "tree/project_tree_view_model.h"

namespace kivo::test {

inline Instant localMoment(QDate date, int hour, int minute = 0) {
    return fromEpochSeconds(
        static_cast<double>(QDateTime(date, QTime(hour, minute)).toSecsSinceEpoch()));
}

// Writes the records a test needs into one batch; save() commits it.
class RecordFixture {
public:
    RecordFixture(RecordStore& store, Instant now) : store_(store), now_(now) {}

    Project project(const QString& name, bool isArchived = false) {
        auto record = newRecord<Project>(now_);
        record.projectName = name;
        record.isArchived = isArchived;
        return inserted(record);
    }
    Filter filter(const Project& owner, const QString& tagName, std::int64_t rating = 0) {
        auto record = newRecord<Filter>(now_);
        record.projectId = owner.id;
        record.tagName = tagName;
        record.rating = rating;
        return inserted(record);
    }
    template <class Record>
    void remove(Record record) {
        record.isDeleted = true;
        store_.update(record);
    }
    void tagUsage(const Filter& owner, std::int64_t duration, Instant at) {
        auto record = newRecord<TagUsage>(at);
        record.projectId = owner.projectId;
        record.filterId = owner.id;
        record.duration = duration;
        inserted(record);
    }
    void appUsage(const Filter& owner, const QString& bundleId, std::int64_t duration, Instant at,
                  const QString& appName = {}) {
        auto record = newRecord<AppUsage>(at);
        record.filterId = owner.id;
        record.appName = appName.isEmpty() ? bundleId : appName;
        record.appBundleId = bundleId;
        record.duration = duration;
        inserted(record);
    }
    void webUsage(const Filter& owner, const QString& domainName, std::int64_t duration,
                  Instant at) {
        auto record = newRecord<WebUsage>(at);
        record.filterId = owner.id;
        record.domainName = domainName;
        record.duration = duration;
        inserted(record);
    }
    void save() { store_.save(); }

private:
    template <class Record>
    Record inserted(const Record& record) {
        store_.insert(record);
        return record;
    }

    RecordStore& store_;
    Instant now_;
};

// Work (Code rated 100, Mail 50), the archived Hobby (Guitar 0) and Home (Cook -100), inserted
// interleaved.
struct SampleProjects {
    RecordFixture& r;
    Project work = r.project(u"Work"_qs), hobby = r.project(u"Hobby"_qs, true);
    Project home = r.project(u"Home"_qs);
    Filter code = r.filter(work, u"Code"_qs, 100), guitar = r.filter(hobby, u"Guitar"_qs);
    Filter mail = r.filter(work, u"Mail"_qs, 50), cook = r.filter(home, u"Cook"_qs, -100);
};

// A private home in `zone` with a store holding the sample projects, settings, a clock at noon
// of `today` and a tree model over them.
struct TreeHarness {
    TreeHarness(const char* zone, QDate today) : zone(zone), today(today) {}

    void buildTree() {
        records.save();
        tree.buildTreeFromRecords();
    }

    ScopedTimeZone zone;
    QDate today;
    ManualClock clock{localMoment(today, 12)};
    TempHome home;
    std::unique_ptr<RecordStore> store = home.openStore();
    std::unique_ptr<ApplicationSettings> settings = home.openSettings();
    RecordFixture records{*store, clock.now()};
    SampleProjects s{records};
    ProjectTreeViewModel tree{*store, *settings, clock};
};

}  // namespace kivo::test
