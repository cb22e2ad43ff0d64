#include "capture/capture_activities.h"

#include <QUrl>
#include <algorithm>

#include "classify/filter_match.h"
#include "model/checked_arithmetic.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

// Whom an activity is filed under, and the application name and identifier it carries.
struct Owner {
    QUuid projectId;
    QUuid filterId;
    QString appName;
    QString appBundleId;
};

// The host of the address; empty for no address, one that does not parse, or one without host.
QString domainOf(const std::optional<QString>& url) {
    if (!url || url->isEmpty()) {
        return {};
    }
    const QUrl parsed(*url, QUrl::StrictMode);
    return parsed.isValid() ? parsed.host() : QString();
}

Activity activityOf(const CaptureData& capture, const Owner& owner, const QString& domainName,
                    Instant now) {
    auto activity = newRecord<Activity>(now);
    activity.projectId = owner.projectId;
    activity.filterId = owner.filterId;
    activity.appName = owner.appName;
    activity.appBundleId = owner.appBundleId;
    activity.title = capture.title.value_or(QString());
    activity.url = capture.url.value_or(QString());
    activity.domainName = domainName;
    activity.duration = nearestWholeSeconds(capture.duration);
    activity.startAt = capture.createdAt;
    activity.endAt = capture.updatedAt;
    return activity;
}

template <class Record>
const Record* firstUnassigned(const std::vector<Record>& records) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [](const Record& record) { return record.isNameChangeOnly; });
    return found == records.end() ? nullptr : &*found;
}

}  // namespace

std::vector<Activity> activitiesOfEndedCaptures(const std::vector<CaptureData>& captures,
                                                RecordStore& store,
                                                const ApplicationSettings& settings, Instant now,
                                                const MatchBudget& budget) {
    std::vector<Activity> activities;
    if (std::none_of(captures.begin(), captures.end(),
                     [](const CaptureData& capture) { return capture.isEnd; })) {
        return activities;
    }
    const auto projects = store.fetch<Project>(live());
    const auto filters = store.fetch<Filter>(live());
    const Filter* unassignedFilter = firstUnassigned(filters);
    const bool hasUnassignedEntries = firstUnassigned(projects) && unassignedFilter;
    if (!hasUnassignedEntries) {
        printDiagnostic(QStringLiteral("Fatal error: no unassigned project/filter"));
    }

    const double minimumDuration = settings.minimumDurationToRecord();
    for (const CaptureData& ended : captures) {
        // Too short is dropped without trace; a duration that is no number goes on to be
        // refused as a fault.
        if (!ended.isEnd || ended.duration < minimumDuration) {
            continue;
        }
        CaptureData capture = ended;
        const QString domainName = domainOf(capture.url);
        bool isClaimed = false;
        std::size_t decided = 0;
        for (const Filter& filter : filters) {
            if (budget.isSpent()) {
                break;
            }
            const bool accepts = matchFilter(capture, filter, &budget);
            if (!accepts && budget.isSpent()) {
                break;  // cut short: counts as not matching, with the filters after it
            }
            ++decided;
            if (accepts) {
                isClaimed = true;
                activities.push_back(activityOf(
                    capture, {filter.projectId, filter.id, filter.appName, filter.appBundleId},
                    domainName, now));
            }
        }
        if (decided < filters.size()) {
            printDiagnostic(QStringLiteral("Matching ran out of its time for this tick: %1 of %2 "
                                           "filters count as not matching for a capture of %3")
                                .arg(filters.size() - decided)
                                .arg(filters.size())
                                .arg(capture.bundleId));
        }
        if (!isClaimed && hasUnassignedEntries) {
            activities.push_back(activityOf(
                capture,
                {unassignedFilter->projectId, unassignedFilter->id, capture.name, capture.bundleId},
                domainName, now));
        }
    }
    return activities;
}

}  // namespace kivo
