#include "five_year_store.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <cstdio>
#include <map>
#include <random>

#include "model/record_store.h"

namespace kivo::five_year_store {

namespace {

const QString storeFolder = QStringLiteral("/tmp/kivo_reports_bench");

// Five years of tracking ending on a fixed day, so that a cached store gives the same figures.
constexpr int projectCount = 20;
constexpr int filtersPerProject = 10;
constexpr int applicationCount = 40;
constexpr int browserCount = 4;  // the first applications are browsers
constexpr int domainCount = 100;
constexpr int activitiesPerDay = 821;  // about 1.5 million in five years
constexpr int daysPerBatch = 7;

struct Classification {
    std::vector<Filter> filters;
    std::vector<bool> isBrowser;
};

Classification insertClassification(RecordStore& store, Instant now) {
    Classification result;
    for (int p = 0; p < projectCount; ++p) {
        auto project = newRecord<Project>(now);
        project.projectName = QStringLiteral("Project %1").arg(p);
        project.isArchived = p == projectCount - 1;
        store.insert(project);
        for (int f = 0; f < filtersPerProject; ++f) {
            const int application = (p * filtersPerProject + f) % applicationCount;
            auto filter = newRecord<Filter>(now);
            filter.projectId = project.id;
            filter.tagName = QStringLiteral("Tag %1.%2").arg(p).arg(f);
            filter.appName = QStringLiteral("App %1").arg(application);
            filter.appBundleId = QStringLiteral("org.example.app%1").arg(application);
            filter.rating = (p + f) % 11 * 10;
            store.insert(filter);
            result.filters.push_back(filter);
            result.isBrowser.push_back(application < browserCount);
        }
    }
    store.save();
    return result;
}

// One day of activities and its totals per filter, per application and filter, and per domain
// and filter, as recording leaves them. An application belongs to each filter, so there are as
// many application totals as filter totals.
std::int64_t insertDay(RecordStore& store, const Classification& classification, QDate day,
                       std::mt19937_64& random, bool withActivities) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> seconds(1, 120);
    std::uniform_int_distribution<int> domain(0, domainCount - 1);
    std::map<std::size_t, std::int64_t> byFilter;
    std::map<std::pair<int, std::size_t>, std::int64_t> byDomain;
    int secondOfDay = 8 * 3600;
    for (int i = 0; i < activitiesPerDay; ++i) {
        // A few filters take most of the time, as in real use.
        const double u = unit(random);
        const auto index = static_cast<std::size_t>(u * u * classification.filters.size());
        const Filter& filter = classification.filters[index];
        auto activity = newRecord<Activity>(momentOf(day, secondOfDay));
        activity.projectId = filter.projectId;
        activity.filterId = filter.id;
        activity.appName = filter.appName;
        activity.appBundleId = filter.appBundleId;
        activity.title = QStringLiteral("Window %1").arg(i % 50);
        activity.duration = seconds(random);
        activity.startAt = momentOf(day, secondOfDay);
        secondOfDay += static_cast<int>(activity.duration);
        activity.endAt = momentOf(day, secondOfDay);
        activity.createdAt = activity.updatedAt = activity.endAt;
        const int site = domain(random);
        if (classification.isBrowser[index]) {
            activity.domainName = QStringLiteral("site%1.example").arg(site);
            activity.url = u"https://" + activity.domainName + u"/page";
            byDomain[{site, index}] += activity.duration;
        }
        if (withActivities) {
            store.insert(activity);
        }
        byFilter[index] += activity.duration;
    }
    const Instant noon = momentOf(day, 12 * 3600);
    for (const auto& [index, duration] : byFilter) {
        const Filter& filter = classification.filters[index];
        auto tagUsage = newRecord<TagUsage>(noon);
        tagUsage.projectId = filter.projectId;
        tagUsage.filterId = filter.id;
        tagUsage.duration = duration;
        store.insert(tagUsage);
        auto appUsage = newRecord<AppUsage>(noon);
        appUsage.filterId = filter.id;
        appUsage.appName = filter.appName;
        appUsage.appBundleId = filter.appBundleId;
        appUsage.duration = duration;
        store.insert(appUsage);
    }
    for (const auto& [key, duration] : byDomain) {
        auto webUsage = newRecord<WebUsage>(noon);
        webUsage.domainName = QStringLiteral("site%1.example").arg(key.first);
        webUsage.filterId = classification.filters[key.second].id;
        webUsage.duration = duration;
        store.insert(webUsage);
    }
    return static_cast<std::int64_t>(2 * byFilter.size() + byDomain.size());
}

// Builds a store once; later runs reuse the file. A half-written store is never taken for a
// whole one: it only gets its name when the last batch is saved.
void seedIfMissing(const QString& path, QDate first, bool withActivities) {
    if (QFile::exists(path)) {
        // A store cached by an older build gets this build's indexes and summaries now, as the
        // tracker's start would give them, rather than inside a measurement.
        RecordStore::open(path);
        return;
    }
    QDir().mkpath(storeFolder);
    const QString partialPath = path + u".partial";
    for (const char* suffix : {"", "-wal", "-shm"}) {
        QFile::remove(partialPath + QLatin1StringView(suffix));
    }
    QElapsedTimer timer;
    timer.start();
    std::int64_t totals = 0;
    std::int64_t activities = 0;
    {
        auto store = RecordStore::open(partialPath);
        const auto classification = insertClassification(*store, momentOf(first, 0));
        std::mt19937_64 random(20260630);
        int daysInBatch = 0;
        for (QDate day = first; day <= lastDay; day = day.addDays(1)) {
            totals += insertDay(*store, classification, day, random, withActivities);
            activities += withActivities ? activitiesPerDay : 0;
            if (++daysInBatch == daysPerBatch) {
                store->save();
                daysInBatch = 0;
            }
        }
        store->save();
    }
    QFile::rename(partialPath, path);
    std::fprintf(stderr, "seeded %lld activities and %lld daily totals in %.1f s\n",
                 static_cast<long long>(activities), static_cast<long long>(totals),
                 static_cast<double>(timer.elapsed()) / 1000.0);
}

}  // namespace

Instant momentOf(QDate day, int secondOfDay) {
    return fromEpochSeconds(static_cast<double>(day.startOfDay().toSecsSinceEpoch() + secondOfDay));
}

void seedStoreIfMissing() {
    seedIfMissing(storePath, firstDay, true);
}

QString totalsStorePath(int years) {
    return QStringLiteral("%1/totals-%2y.sqlite").arg(storeFolder).arg(years);
}

void seedTotalsStoreIfMissing(int years) {
    seedIfMissing(totalsStorePath(years), lastDay.addYears(-years).addDays(1), false);
}

}  // namespace kivo::five_year_store
