#include "model/usage_summaries.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <random>

#include "model/day_score_sums.h"
#include "model/record_store.h"
#include "support/temp_home.h"

namespace kivo {
namespace {

using test::TempHome;

constexpr double day = 86400.0;
constexpr const char* summaryTables[] = {"TagUsageSummary", "AppUsageSummary", "WebUsageSummary",
                                         "TagScoreSummary", "TagScoreRating"};

TEST(RangePieces, CoverTheRangeOnceWithWholeStretchesInsideIt) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> moment(-40 * day, 3000 * day);
    std::vector<std::pair<double, double>> ranges{
        {0.0, day},                    // shorter than any stretch
        {20'000 * day, 20'400 * day},  // whole stretches at both ends
        {20'000 * day + 3600.5, 20'365 * day - 0.25},
        {-10 * day, 70 * day},  // from before the epoch
        {5 * day, 5 * day},     // empty
    };
    for (int i = 0; i < 200; ++i) {
        const double a = moment(random);
        ranges.emplace_back(a, a + moment(random) / 4);
    }
    for (const auto& [begin, end] : ranges) {
        SCOPED_TRACE(std::to_string(begin) + " " + std::to_string(end));
        double reached = begin;
        double direct = 0.0;
        for (const auto& piece : usage_summaries::piecesOf(begin, end)) {
            if (piece.days == 0) {
                EXPECT_EQ(piece.begin, reached);
                EXPECT_LT(piece.begin, piece.end);
                direct += piece.end - piece.begin;
                reached = piece.end;
                continue;
            }
            const double span = piece.days * day;
            EXPECT_LE(piece.firstStretch, piece.lastStretch);
            EXPECT_GE(piece.firstStretch, 0);
            EXPECT_EQ(static_cast<double>(piece.firstStretch) * span, reached);
            reached = static_cast<double>(piece.lastStretch + 1) * span;
        }
        EXPECT_EQ(reached, std::max(begin, end));
        // Only what lies before the epoch and less than a finest stretch at each edge is read
        // from the records.
        const double finest =
            usage_summaries::stretchDays[std::size(usage_summaries::stretchDays) - 1] * day;
        EXPECT_LT(direct, 2 * finest + std::max(0.0, -begin));
    }
}

using Snapshot = std::vector<std::vector<std::string>>;

Snapshot summaries(SQLite::Database& database) {
    Snapshot rows;
    for (const char* table : summaryTables) {
        SQLite::Statement query(database, std::string("SELECT * FROM ") + table);
        while (query.executeStep()) {
            std::vector<std::string> row{table};
            for (int column = 0; column < query.getColumnCount(); ++column) {
                row.push_back(query.getColumn(column).getString());
            }
            rows.push_back(std::move(row));
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

// What the summaries would hold if they were made from the records now.
Snapshot rebuilt(SQLite::Database& database) {
    SQLite::Transaction transaction(database);
    usage_summaries::rebuild(database);
    return summaries(database);  // rolled back with the transaction
}

// Totals over four months, at stretch edges, sharing moments, deleted, then changed the ways the
// activity list and other tools change them.
class RandomTotals {
public:
    explicit RandomTotals(unsigned seed) : random_(seed) {}

    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }
    Instant moment() {
        const double edge = 20'000 * day + static_cast<double>(pick(30)) * 4 * day;
        const double hour = static_cast<double>(pick(120 * 24)) * 3600;
        return fromEpochSeconds(pick(3) == 0 ? edge - 0.5 * static_cast<double>(pick(2))
                                             : 20'000 * day + hour);
    }
    QUuid filter() { return filters_[pick(filters_.size())]; }
    QSet<QUuid> projects() const { return {filters_[0], filters_[1]}; }

    // All filters but the last, which stays without a rating, as a deleted filter's totals may.
    void rateFilters(RecordStore& store) {
        for (std::size_t i = 0; i + 1 < filters_.size(); ++i) {
            auto filter = newRecord<Filter>(moment());
            filter.id = filters_[i];
            filter.rating = static_cast<std::int64_t>(pick(21)) * 10 - 100;
            store.insert(filter);
        }
    }

    void insertSome(RecordStore& store, int count) {
        for (int i = 0; i < count; ++i) {
            auto tag = made<TagUsage>();
            tag.projectId = filters_[pick(2)];
            auto app = made<AppUsage>();
            app.appBundleId = u"org.app%1"_qs.arg(pick(4));
            app.appName = app.appBundleId + u" v"_qs + QString::number(pick(3));
            auto web = made<WebUsage>();
            web.domainName = u"site%1.example"_qs.arg(pick(5));
            store.insert(tags_.emplace_back(tag));
            store.insert(apps_.emplace_back(app));
            store.insert(webs_.emplace_back(web));
        }
    }

    void editSome(RecordStore& store, int count) {
        for (int i = 0; i < count; ++i) {
            auto& tag = tags_[pick(tags_.size())];
            auto& app = apps_[pick(apps_.size())];
            auto& web = webs_[pick(webs_.size())];
            const std::size_t change = pick(4);
            tag.isDeleted = change == 0 ? !tag.isDeleted : tag.isDeleted;
            app.appName = change == 0 ? u"renamed %1"_qs.arg(i) : app.appName;
            tag.createdAt = change == 1 ? moment() : tag.createdAt;
            app.appBundleId = change == 1 ? u"org.app%1"_qs.arg(pick(4)) : app.appBundleId;
            web.filterId = change == 1 ? filter() : web.filterId;
            tag.projectId = change == 2 ? filters_[pick(2)] : tag.projectId;
            web.createdAt = change == 2 ? moment() : web.createdAt;
            tag.duration += change == 3 ? static_cast<std::int64_t>(pick(100)) : 0;
            app.duration += change == 3 ? static_cast<std::int64_t>(pick(100)) : 0;
            store.update(tag);
            store.update(app);
            store.update(web);
        }
    }

private:
    template <class Record>
    Record made() {
        auto record = newRecord<Record>(moment());
        record.filterId = filter();
        record.duration = static_cast<std::int64_t>(pick(4000));
        record.isDeleted = pick(10) == 0;
        return record;
    }

    std::mt19937 random_;
    std::vector<QUuid> filters_{QUuid::createUuid(), QUuid::createUuid(), QUuid::createUuid(),
                                QUuid::createUuid(), QUuid::createUuid()};
    std::vector<TagUsage> tags_;
    std::vector<AppUsage> apps_;
    std::vector<WebUsage> webs_;
};

TEST(UsageSummaries, KeptByTheTriggersEqualOnesMadeFromTheRecords) {
    for (unsigned seed : {1u, 2u, 3u}) {
        TempHome home;
        RandomTotals totals(seed);
        {
            auto store = home.openStore();
            totals.rateFilters(*store);
            for (int round = 0; round < 4; ++round) {
                totals.insertSome(*store, 60);
                store->save();
                totals.editSome(*store, 80);
                store->save();
            }
        }
        SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        // Other tools remove totals outright and change them in bulk.
        database.exec("DELETE FROM AppUsage WHERE rowid % 7 = 0");
        database.exec("UPDATE WebUsage SET duration = duration + 5 WHERE rowid % 3 = 0");
        database.exec("UPDATE TagUsage SET createdAt = createdAt + 86400 WHERE rowid % 5 = 0");
        // Filters rated anew, replaced whole, removed, and given to totals that had none.
        database.exec("UPDATE Filter SET rating = rating + 30 WHERE rowid % 2 = 0");
        database.exec("CREATE TEMP TABLE Replaced AS SELECT * FROM Filter WHERE rowid = 1");
        database.exec("UPDATE Replaced SET rating = -rating - 10");
        database.exec("INSERT OR REPLACE INTO Filter SELECT * FROM Replaced");
        database.exec("DELETE FROM Filter WHERE rowid = 3");
        database.exec(
            "UPDATE Replaced SET id = (SELECT filterId FROM TagUsage WHERE filterId NOT "
            "IN (SELECT id FROM Filter) LIMIT 1), rating = 60");
        database.exec("INSERT INTO Filter SELECT * FROM Replaced");
        const Snapshot kept = summaries(database);
        EXPECT_GT(kept.size(), 300u) << seed;
        EXPECT_EQ(kept, rebuilt(database)) << seed;
    }
}

// Whatever made them stale, a writable open makes them anew, and until then a read-only open
// reads the totals themselves (the reports' tests compare the two readings).
TEST(UsageSummaries, StaleOnesAreMadeAnewOnOpenAndNotReadBeforeThat) {
    TempHome home;
    RandomTotals totals(11);
    {
        auto store = home.openStore();
        totals.insertSome(*store, 150);
        store->save();
    }
    const std::vector<std::function<void(SQLite::Database&)>> staleness{
        // An older Kivo's store: no summaries at all.
        [](SQLite::Database& db) {
            for (const char* table : summaryTables) {
                db.exec(std::string("DROP TABLE ") + table);
            }
            db.exec("DELETE FROM KivoMeta WHERE key <> 'schemaVersion'");
        },
        // A tool that dropped one trigger and then changed totals.
        [](SQLite::Database& db) {
            db.exec("DROP TRIGGER AppUsageSummary_updateDuration");
            db.exec("UPDATE AppUsage SET duration = duration * 2");
        },
        // Summaries by other rules.
        [](SQLite::Database& db) {
            db.exec("UPDATE KivoMeta SET value = 'other' WHERE key = 'usageSummaryVersion'");
        },
        // A tool that replaces totals: the old ones go without their delete triggers.
        [](SQLite::Database& db) {
            const std::string columns = "projectId, filterId, createdAt, updatedAt, isDeleted";
            db.exec("INSERT OR REPLACE INTO TagUsage (id, duration, " + columns +
                    ") SELECT id, duration + 1, " + columns + " FROM TagUsage WHERE rowid % 4 = 0");
        },
        // The same through an explicitly given rowid, under a new id.
        [](SQLite::Database& db) {
            const std::string columns =
                "duration, filterId, domainName, createdAt, updatedAt, "
                "isDeleted";
            db.exec("INSERT OR REPLACE INTO WebUsage (rowid, id, " + columns + ") SELECT 5, " +
                    "'moved', " + columns + " FROM WebUsage WHERE rowid = 3");
        },
        // And through an update that takes another total's id.
        [](SQLite::Database& db) {
            db.exec(
                "UPDATE OR REPLACE AppUsage SET id = (SELECT id FROM AppUsage WHERE rowid = 2) "
                "WHERE rowid = 7");
        },
    };
    for (std::size_t i = 0; i < staleness.size(); ++i) {
        SCOPED_TRACE(i);
        {
            SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
            staleness[i](database);
        }
        EXPECT_FALSE(
            RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly)->hasUsageSummaries());
        EXPECT_TRUE(home.openStore()->hasUsageSummaries());
        EXPECT_TRUE(
            RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly)->hasUsageSummaries());
        SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        const Snapshot kept = summaries(database);
        EXPECT_GT(kept.size(), 100u);
        EXPECT_EQ(kept, rebuilt(database));
    }
}

// A store of 150 rated random totals of each kind.
void fillWithRatedTotals(const TempHome& home, RandomTotals& totals) {
    auto store = home.openStore();
    totals.rateFilters(*store);
    totals.insertSome(*store, 150);
    store->save();
}

QHash<QUuid, std::int64_t> ratingsOf(RecordStore& store) {
    QHash<QUuid, std::int64_t> byFilter;
    for (const auto& filter : store.fetch<Filter>()) {
        byFilter.insert(filter.id, filter.rating);
    }
    return byFilter;
}

// The days RandomTotals fills.
const QDate firstScored = QDate(1970, 1, 1).addDays(20'000);
const QDate lastScored = firstScored.addDays(120);

// A tool that rated filters with the triggers away leaves sums made with other ratings: they are
// not read until a writable open has moved them to the current ratings.
TEST(UsageSummaries, SumsOfOtherRatingsAreNotReadAndAreMovedOnOpen) {
    TempHome home;
    RandomTotals totals(5);
    fillWithRatedTotals(home, totals);
    {
        SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        SQLite::Statement definition(
            database, "SELECT sql FROM sqlite_schema WHERE name = 'TagScoreSummary_filterRate'");
        ASSERT_TRUE(definition.executeStep());
        const std::string trigger = definition.getColumn(0).getString();
        database.exec("DROP TRIGGER TagScoreSummary_filterRate");
        database.exec("UPDATE Filter SET rating = rating + 10");
        database.exec(trigger);
    }
    {
        auto readOnly = RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly);
        ASSERT_TRUE(readOnly->hasUsageSummaries());
        EXPECT_TRUE(dayScoreSums(*readOnly, firstScored, lastScored, totals.projects(),
                                 ratingsOf(*readOnly))
                        .empty());
    }
    home.openStore();
    auto readOnly = RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly);
    const auto sums =
        dayScoreSums(*readOnly, firstScored, lastScored, totals.projects(), ratingsOf(*readOnly));
    ASSERT_EQ(sums.size(), 121u);
    EXPECT_GT(std::count_if(sums.begin(), sums.end(),
                            [](const DayScoreSums& day) { return day.isKnown && day.members > 0; }),
              20);
    SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
    EXPECT_EQ(summaries(database), rebuilt(database));
}

TEST(UsageSummaries, ADaySumThatIsNoLongerAnIntegerIsLeftToTheRecords) {
    TempHome home;
    RandomTotals totals(6);
    fillWithRatedTotals(home, totals);
    const auto daySums = [&] {
        auto readOnly = RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly);
        return dayScoreSums(*readOnly, firstScored, lastScored, totals.projects(),
                            ratingsOf(*readOnly));
    };
    const auto before = daySums();
    {
        // Another tool writes fractions into the sums; each reads back as the same integer.
        SQLite::Database database(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        database.exec("UPDATE TagScoreSummary SET ratedDuration = ratedDuration + 0.25");
    }
    const auto after = daySums();
    ASSERT_EQ(after.size(), before.size());
    int counted = 0;
    for (std::size_t day = 0; day < after.size(); ++day) {
        const bool hasTotals = before[day].members > 0;
        counted += before[day].isKnown && hasTotals;
        EXPECT_EQ(after[day].isKnown, before[day].isKnown && !hasTotals) << "day " << day;
    }
    EXPECT_GT(counted, 20);
}

}  // namespace
}  // namespace kivo
