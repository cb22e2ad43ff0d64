#include "reports/activity_list.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr double secondsPerDay = 24 * secondsPerHour;

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
void addToHistogram(std::array<double, 24>& minutesPerHour, LocalOffsets& offsets, Instant startAt,
                    std::int64_t duration) {
    if (duration <= 0) {
        return;
    }
    const double local = offsets.localSeconds(toEpochSeconds(startAt));
    const double secondOfDay = local - std::floor(local / secondsPerDay) * secondsPerDay;
    auto hour = static_cast<int>(secondOfDay / secondsPerHour) % 24;
    double intoHour = secondOfDay - hour * secondsPerHour;
    double left = static_cast<double>(duration);
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

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>{}(text);
    }
};

template <class Value>
struct QtHash {
    std::size_t operator()(const Value& value) const { return qHash(value); }
};

// Hands out one shared value per distinct stored text: a range repeats the same applications,
// tags, titles and addresses thousands of times, and converting each anew was most of the cost
// of reading them. Texts that convert to equal values (an id in capitals, a title whose broken
// bytes decode alike) share one value too, and every value keeps its address for the whole
// read, so values can be compared and hashed by address.
template <class Value, class Convert>
class Interned {
public:
    explicit Interned(Convert convert) : convert_(convert) {}

    const Value& operator()(std::string_view text) {
        auto found = byText_.find(text);
        if (found == byText_.end()) {
            const Value& value = *values_.insert(convert_(text)).first;
            found = byText_.emplace(std::string(text), &value).first;
        }
        return *found->second;
    }

private:
    Convert convert_;
    std::unordered_set<Value, QtHash<Value>> values_;
    std::unordered_map<std::string, const Value*, TextHash, std::equal_to<>> byText_;
};

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QSet<QUuid> uuidsOf(const QStringList& texts) {
    QSet<QUuid> uuids;
    for (const QString& text : texts) {
        uuids.insert(QUuid::fromString(text));
    }
    return uuids;
}

template <class Key>
bool isSelected(const QSet<Key>& selections, const Key& key) {
    return selections.isEmpty() || selections.contains(key);
}

// The shared values of one group's application, title, address and tag.
struct GroupKey {
    const QString* appBundleId;
    const QString* title;
    const QString* url;
    const QUuid* filterId;

    friend bool operator==(const GroupKey&, const GroupKey&) = default;
};

// Addresses of neighbouring values differ in few bits: they need Qt's mixing hash, or equal
// buckets pile up.
struct GroupKeyHash {
    std::size_t operator()(const GroupKey& key) const {
        return qHashMulti(
            0, reinterpret_cast<quintptr>(key.appBundleId), reinterpret_cast<quintptr>(key.title),
            reinterpret_cast<quintptr>(key.url), reinterpret_cast<quintptr>(key.filterId));
    }
};

// Groups the activities row by row as the store hands them over, earliest first, so that a
// long range never holds more than its groups and their entries.
class ActivityGrouper {
public:
    explicit ActivityGrouper(const ActivityListQuery& query)
        : query_(query),
          applications_(query.applicationSelections.begin(), query.applicationSelections.end()),
          websites_(query.websiteSelections.begin(), query.websiteSelections.end()),
          filters_(uuidsOf(query.filterSelections)),
          projects_(uuidsOf(query.projectSelections)) {}

    // Columns: id, projectId, filterId, appName, appBundleId, title, url, domainName, duration,
    // startAt, endAt.
    void add(const RowCells& row) {
        addFields({row.text(0), row.text(1), row.text(2), row.text(3), row.text(4), row.text(5),
                   row.text(6), row.text(7), row.integer(8), row.real(9), row.real(10)});
    }

    void add(const Activity& activity) {
        const QByteArray id = activity.id.toByteArray(QUuid::WithoutBraces);
        const QByteArray projectId = activity.projectId.toByteArray(QUuid::WithoutBraces);
        const QByteArray filterId = activity.filterId.toByteArray(QUuid::WithoutBraces);
        const QByteArray appName = activity.appName.toUtf8();
        const QByteArray appBundleId = activity.appBundleId.toUtf8();
        const QByteArray title = activity.title.toUtf8();
        const QByteArray url = activity.url.toUtf8();
        const QByteArray domainName = activity.domainName.toUtf8();
        addFields({view(id), view(projectId), view(filterId), view(appName), view(appBundleId),
                   view(title), view(url), view(domainName), activity.duration,
                   toEpochSeconds(activity.startAt), toEpochSeconds(activity.endAt)});
    }

    ActivityList finish() && {
        std::stable_sort(
            list_.groups.begin(), list_.groups.end(),
            [](const ActivityGroup& a, const ActivityGroup& b) { return a.duration > b.duration; });
        return std::move(list_);
    }

private:
    // One activity's columns, as the store hands them over or as a live one reads.
    struct Fields {
        std::string_view id;
        std::string_view projectId;
        std::string_view filterId;
        std::string_view appName;
        std::string_view appBundleId;
        std::string_view title;
        std::string_view url;
        std::string_view domainName;
        std::int64_t duration;
        double startAt;
        double endAt;
    };

    static std::string_view view(const QByteArray& bytes) {
        return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
    }

    void addFields(const Fields& row) {
        const std::int64_t duration = row.duration;
        if (static_cast<double>(duration) < query_.minimumDuration) {
            return;
        }
        const QUuid& filterId = uuid_(row.filterId);
        const QString& appBundleId = text_(row.appBundleId);
        const QString& domainName = text_(row.domainName);
        const QUuid& projectId = uuid_(row.projectId);
        if (!query_.countedFilters.contains(filterId) || !isSelected(applications_, appBundleId) ||
            !isSelected(websites_, domainName) || !isSelected(filters_, filterId) ||
            !isSelected(projects_, projectId)) {
            return;
        }
        const QString& title = text_(row.title);
        const QString& url = text_(row.url);
        if (!query_.searchText.isEmpty() &&
            !title.contains(query_.searchText, Qt::CaseInsensitive) &&
            !url.contains(query_.searchText, Qt::CaseInsensitive)) {
            return;
        }
        const auto [found, isNew] = groupOf_.try_emplace(
            GroupKey{&appBundleId, &title, &url, &filterId}, list_.groups.size());
        if (isNew) {
            list_.groups.push_back({text_(row.appName),
                                    appBundleId,
                                    title,
                                    url,
                                    domainName,
                                    projectId,
                                    filterId,
                                    0,
                                    {}});
        }
        ActivityGroup& group = list_.groups[found->second];
        const Instant startAt = fromEpochSeconds(row.startAt);
        group.duration = checkedAdd(group.duration, duration);
        group.entries.push_back({uuidOf(row.id), startAt, fromEpochSeconds(row.endAt), duration});
        list_.durationTotal = checkedAdd(list_.durationTotal, duration);
        addToHistogram(list_.minutesPerHour, offsets_, startAt, duration);
    }

    const ActivityListQuery& query_;
    QSet<QString> applications_;
    QSet<QString> websites_;
    QSet<QUuid> filters_;
    QSet<QUuid> projects_;
    Interned<QString, QString (*)(std::string_view)> text_{&textOf};
    Interned<QUuid, QUuid (*)(std::string_view)> uuid_{&uuidOf};
    std::unordered_map<GroupKey, std::size_t, GroupKeyHash> groupOf_;
    LocalOffsets offsets_;
    ActivityList list_;
};

}  // namespace

ActivityList listActivities(RecordStore& store, const ActivityListQuery& query) {
    if (query.maxDate < query.minDate) {
        return {};
    }
    const DayRange days = localDays(query.minDate, query.maxDate);
    std::vector<const Activity*> live;
    for (const Activity& activity : query.live.activities) {
        if (days.contains(activity.startAt)) {
            live.push_back(&activity);
        }
    }
    std::stable_sort(live.begin(), live.end(),
                     [](const Activity* a, const Activity* b) { return a->startAt < b->startAt; });
    // A live activity goes in among the stored ones by its start, after those of the same start,
    // as it will be read once written.
    auto nextLive = live.begin();
    ActivityGrouper grouper(query);
    store.read(
        "SELECT id, projectId, filterId, appName, appBundleId, title, url, domainName, duration, "
        "startAt, endAt FROM Activity WHERE isDeleted = 0 AND startAt >= ? AND startAt < ? "
        "ORDER BY startAt",
        {days.begin, days.end}, [&](const RowCells& row) {
            for (; nextLive != live.end() && (*nextLive)->startAt < fromEpochSeconds(row.real(9));
                 ++nextLive) {
                grouper.add(**nextLive);
            }
            grouper.add(row);
        });
    for (; nextLive != live.end(); ++nextLive) {
        grouper.add(**nextLive);
    }
    return std::move(grouper).finish();
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
