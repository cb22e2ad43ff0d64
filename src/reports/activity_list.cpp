#include "reports/activity_list.h"

#include <QDateTime>
#include <QHash>
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr double secondsPerDay = 24 * secondsPerHour;

bool isSelected(const QStringList& selections, const QString& key) {
    return selections.isEmpty() || selections.contains(key);
}

bool isSelected(const QStringList& selections, const QUuid& key) {
    return selections.isEmpty() ||
           std::any_of(selections.begin(), selections.end(),
                       [&key](const QString& text) { return QUuid::fromString(text) == key; });
}

// The offset of local time from UTC, asked of the time zone once per quarter hour of the
// range: zones change their offsets only at such boundaries, and asking per activity would cost
// more than all the rest of the listing.
class LocalOffsets {
public:
    double localSeconds(double epochSeconds) {
        const auto quarter = static_cast<std::int64_t>(std::floor(epochSeconds / 900.0));
        if (quarter != quarter_) {
            quarter_ = quarter;
            offset_ = QDateTime::fromSecsSinceEpoch(quarter * 900).offsetFromUtc();
        }
        return epochSeconds + offset_;
    }

private:
    std::int64_t quarter_ = std::numeric_limits<std::int64_t>::min();
    int offset_ = 0;
};

// Spreads the activity's seconds over the hours of the day from its start on. Whole days (a
// record that claims more than a day) count in every hour alike.
void addToHistogram(std::array<double, 24>& minutesPerHour, LocalOffsets& offsets,
                    const Activity& activity) {
    if (activity.duration <= 0) {
        return;
    }
    const double local = offsets.localSeconds(toEpochSeconds(activity.startAt));
    const double secondOfDay = local - std::floor(local / secondsPerDay) * secondsPerDay;
    auto hour = static_cast<int>(secondOfDay / secondsPerHour) % 24;
    double intoHour = secondOfDay - hour * secondsPerHour;
    double left = static_cast<double>(activity.duration);
    const double wholeDays = std::floor(left / secondsPerDay);
    if (wholeDays > 0) {
        for (double& minutes : minutesPerHour) {
            minutes += wholeDays * 60.0;
        }
        left -= wholeDays * secondsPerDay;
    }
    while (left > 0) {
        const double taken = std::min(left, secondsPerHour - intoHour);
        minutesPerHour[static_cast<std::size_t>(hour)] += taken / 60.0;
        left -= taken;
        intoHour = 0;
        hour = (hour + 1) % 24;
    }
}

struct GroupKey {
    QString appBundleId;
    QString title;
    QString url;
    QUuid filterId;

    friend bool operator==(const GroupKey&, const GroupKey&) = default;
};

size_t qHash(const GroupKey& key, size_t seed = 0) {
    return qHashMulti(seed, key.appBundleId, key.title, key.url, key.filterId);
}

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>{}(text);
    }
};

// Hands out one shared value per distinct stored text: a month repeats the same applications,
// tags, titles and addresses thousands of times, and converting each anew was most of the cost
// of reading them.
template <class Value, class Convert>
class Interned {
public:
    explicit Interned(Convert convert) : convert_(convert) {}

    const Value& operator()(std::string_view text) {
        auto found = values_.find(text);
        if (found == values_.end()) {
            found = values_.emplace(std::string(text), convert_(text)).first;
        }
        return found->second;
    }

private:
    Convert convert_;
    std::unordered_map<std::string, Value, TextHash, std::equal_to<>> values_;
};

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QUuid uuidOf(std::string_view text) {
    return QUuid::fromString(QLatin1StringView(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace

std::vector<Activity> activitiesStartedWithin(RecordStore& store, QDate first, QDate last) {
    std::vector<Activity> activities;
    if (last < first) {
        return activities;
    }
    const DayRange days = localDays(first, last);
    Interned<QString, QString (*)(std::string_view)> text(&textOf);
    Interned<QUuid, QUuid (*)(std::string_view)> uuid(&uuidOf);
    store.read(
        "SELECT id, projectId, filterId, appName, appBundleId, title, url, domainName, duration, "
        "startAt, endAt FROM Activity WHERE isDeleted = 0 AND startAt >= ? AND startAt < ? "
        "ORDER BY startAt",
        {days.begin, days.end}, [&](const RowCells& row) {
            Activity& activity = activities.emplace_back();
            activity.id = uuidOf(row.text(0));
            activity.projectId = uuid(row.text(1));
            activity.filterId = uuid(row.text(2));
            activity.appName = text(row.text(3));
            activity.appBundleId = text(row.text(4));
            activity.title = text(row.text(5));
            activity.url = text(row.text(6));
            activity.domainName = text(row.text(7));
            activity.duration = row.integer(8);
            activity.startAt = fromEpochSeconds(row.real(9));
            activity.endAt = fromEpochSeconds(row.real(10));
        });
    return activities;
}

bool isActivityShown(const Activity& activity, const ActivityListQuery& query) {
    if (static_cast<double>(activity.duration) < query.minimumDuration ||
        !query.countedFilters.contains(activity.filterId) ||
        !isSelected(query.applicationSelections, activity.appBundleId) ||
        !isSelected(query.websiteSelections, activity.domainName) ||
        !isSelected(query.filterSelections, activity.filterId) ||
        !isSelected(query.projectSelections, activity.projectId)) {
        return false;
    }
    return query.searchText.isEmpty() ||
           activity.title.contains(query.searchText, Qt::CaseInsensitive) ||
           activity.url.contains(query.searchText, Qt::CaseInsensitive);
}

ActivityList groupActivities(const std::vector<Activity>& activities,
                             const ActivityListQuery& query) {
    ActivityList list;
    QHash<GroupKey, std::size_t> groupOf;
    groupOf.reserve(static_cast<qsizetype>(activities.size()));
    LocalOffsets offsets;
    for (const Activity& activity : activities) {
        if (!isActivityShown(activity, query)) {
            continue;
        }
        const GroupKey key{activity.appBundleId, activity.title, activity.url, activity.filterId};
        auto found = groupOf.find(key);
        if (found == groupOf.end()) {
            found = groupOf.insert(key, list.groups.size());
            list.groups.push_back({activity.appName,
                                   activity.appBundleId,
                                   activity.title,
                                   activity.url,
                                   activity.domainName,
                                   activity.projectId,
                                   activity.filterId,
                                   0,
                                   {}});
        }
        ActivityGroup& group = list.groups[found.value()];
        group.duration = checkedAdd(group.duration, activity.duration);
        group.entries.push_back({activity.id, activity.startAt, activity.endAt, activity.duration});
        list.durationTotal = checkedAdd(list.durationTotal, activity.duration);
        addToHistogram(list.minutesPerHour, offsets, activity);
    }
    std::stable_sort(
        list.groups.begin(), list.groups.end(),
        [](const ActivityGroup& a, const ActivityGroup& b) { return a.duration > b.duration; });
    return list;
}

ActivityList listActivities(RecordStore& store, const ActivityListQuery& query) {
    return groupActivities(activitiesStartedWithin(store, query.minDate, query.maxDate), query);
}

Filter filterPrefilledFrom(const ActivityGroup& group, QUuid projectId, Instant now) {
    auto filter = newRecord<Filter>(now);
    filter.projectId = projectId;
    filter.appName = group.appName;
    filter.appBundleId = group.appBundleId;
    if (!group.domainName.isEmpty()) {
        filter.matchExpressionOfUrl = group.domainName;
        filter.tagName = group.domainName;
    } else {
        filter.matchExpressionOfTitle = group.title;
        filter.tagName = group.title;
    }
    return filter;
}

}  // namespace kivo
