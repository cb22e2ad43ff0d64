#include "model/score_summary.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include "model/usage_summaries.h"

namespace kivo::score_summary {

namespace {

const std::string sums = sumsTable;
const std::string ratings = ratingsTable;

// The same totals as the other summaries hold: live ones created at a number from the epoch on.
std::string isSummarised(const std::string& row) {
    return row + ".isDeleted = 0 AND typeof(" + row + ".createdAt) IN ('integer', 'real') AND " +
           row + ".createdAt >= 0";
}

std::string quarterOf(const std::string& row) {
    return "CAST(" + row + ".createdAt AS INTEGER) / " + std::to_string(quarterSeconds);
}

std::string durationOf(const std::string& row) {
    return "CAST(" + row + ".duration AS INTEGER)";
}

// A magnitude that never fails: ABS() stops the statement on the smallest integer, while negating
// it merely turns it into a real, which the readers take as "not exact".
std::string magnitude(const std::string& value) {
    return "MAX(" + value + ", -(" + value + "))";
}

// The rating the sums hold for a total's filter; NULL when its filter has none.
std::string sumsRatingOf(const std::string& row) {
    return "(SELECT rating FROM " + ratings + " WHERE filterId = " + row + ".filterId)";
}

std::string currentRatingOf(const std::string& filterId) {
    return "(SELECT CAST(rating AS INTEGER) FROM Filter WHERE id = " + filterId + ")";
}

std::string groupOf(const std::string& row) {
    return " WHERE quarter = " + quarterOf(row) + " AND projectId = " + row + ".projectId AND " +
           isSummarised(row) + "; ";
}

// Adds (`sign` "+") or takes away ("-") one total.
std::string changeBy(const std::string& row, const char* sign) {
    const std::string s = sign;
    const std::string duration = durationOf(row);
    const std::string rated = duration + " * IFNULL(" + sumsRatingOf(row) + ", 0)";
    return "UPDATE " + sums + " SET duration = duration " + s + " " + duration +
           ", ratedDuration = ratedDuration " + s + " " + rated + ", absDuration = absDuration " +
           s + " " + magnitude(duration) + ", absRated = absRated " + s + " " + magnitude(rated) +
           ", members = members " + s + " 1, unrated = unrated " + s + " (" + sumsRatingOf(row) +
           " IS NULL)" + groupOf(row);
}

std::string addTotal(const std::string& row) {
    return "INSERT OR IGNORE INTO " + sums +
           " (quarter, projectId, duration, ratedDuration, absDuration, absRated, members, "
           "unrated) SELECT " +
           quarterOf(row) + ", " + row + ".projectId, 0, 0, 0, 0, 0, 0 WHERE " + isSummarised(row) +
           "; " + changeBy(row, "+");
}

std::string removeTotal(const std::string& row) {
    return changeBy(row, "-") + "DELETE FROM " + sums +
           " WHERE members <= 0 AND quarter = " + quarterOf(row) + " AND projectId = " + row +
           ".projectId AND " + isSummarised(row) + "; ";
}

// Moves the totals of filter `filterId` (an SQL expression) from the rating the sums hold to the
// filter's current one, or to none when the filter is gone.
std::vector<std::string> adoptRatingOf(const std::string& filterId) {
    const std::string held =
        "(SELECT rating FROM " + ratings + " WHERE filterId = " + filterId + ")";
    const std::string current = currentRatingOf(filterId);
    const std::string ratingChange = "(IFNULL(" + current + ", 0) - IFNULL(" + held + ", 0))";
    const std::string magnitudeChange = "(" + magnitude("IFNULL(" + current + ", 0)") + " - " +
                                        magnitude("IFNULL(" + held + ", 0)") + ")";
    const std::string unratedChange = "((" + current + " IS NULL) - (" + held + " IS NULL))";
    return {
        "UPDATE " + sums + " SET ratedDuration = ratedDuration + f.duration * " + ratingChange +
            ", absRated = absRated + f.absDuration * " + magnitudeChange +
            ", unrated = unrated + f.members * " + unratedChange + " FROM (SELECT " +
            quarterOf("t") + " AS quarter, t.projectId AS projectId, SUM(" + durationOf("t") +
            ") AS duration, SUM(" + magnitude(durationOf("t")) +
            ") AS absDuration, COUNT(*) AS members FROM TagUsage AS t WHERE t.filterId = " +
            filterId + " AND " + isSummarised("t") + " GROUP BY 1, 2) AS f WHERE " + sums +
            ".quarter = f.quarter AND " + sums + ".projectId = f.projectId AND " + current +
            " IS NOT " + held,
        "DELETE FROM " + ratings + " WHERE filterId = " + filterId,
        "INSERT INTO " + ratings + " (filterId, rating) SELECT " + filterId + ", " + current +
            " WHERE " + current + " IS NOT NULL",
    };
}

std::string body(const std::vector<std::string>& statements) {
    std::string sql = "BEGIN ";
    for (const auto& statement : statements) {
        sql += statement + "; ";
    }
    return sql + "END";
}

struct Trigger {
    const char* name;
    std::string definition;
};

std::vector<Trigger> triggers() {
    // Recording only ever changes a total's duration, which leaves it in its group.
    const std::string sameGroup =
        "old.rowid = new.rowid AND old.isDeleted IS new.isDeleted AND old.createdAt IS "
        "new.createdAt AND old.projectId IS new.projectId AND old.filterId IS new.filterId";
    return {
        {"insert", "AFTER INSERT ON TagUsage BEGIN " + addTotal("new") + "END"},
        {"delete", "AFTER DELETE ON TagUsage BEGIN " + removeTotal("old") + "END"},
        {"update", "AFTER UPDATE ON TagUsage WHEN NOT (" + sameGroup + ") BEGIN " +
                       removeTotal("old") + addTotal("new") + "END"},
        {"updateDuration", "AFTER UPDATE ON TagUsage WHEN " + sameGroup + " BEGIN " +
                               changeBy("old", "-") + changeBy("new", "+") + "END"},
        {"filterInsert", "AFTER INSERT ON Filter " + body(adoptRatingOf("new.id"))},
        {"filterDelete", "AFTER DELETE ON Filter " + body(adoptRatingOf("old.id"))},
        {"filterRate",
         "AFTER UPDATE OF rating ON Filter WHEN old.id IS new.id AND old.rating IS NOT "
         "new.rating " +
             body(adoptRatingOf("new.id"))},
        {"filterRename", "AFTER UPDATE OF id ON Filter WHEN old.id IS NOT new.id " +
                             [] {
                                 auto statements = adoptRatingOf("old.id");
                                 for (auto& statement : adoptRatingOf("new.id")) {
                                     statements.push_back(std::move(statement));
                                 }
                                 return body(statements);
                             }()},
    };
}

std::string triggerName(const Trigger& trigger) {
    return sums + "_" + trigger.name;
}

}  // namespace

bool isInstalled(const usage_summaries::SchemaNames& schemaNames) {
    if (!usage_summaries::schemaHas(schemaNames, "table", sums) ||
        !usage_summaries::schemaHas(schemaNames, "table", ratings)) {
        return false;
    }
    for (const auto& trigger : triggers()) {
        if (!usage_summaries::schemaHas(schemaNames, "trigger", triggerName(trigger))) {
            return false;
        }
    }
    return true;
}

void rebuild(SQLite::Database& database) {
    for (const auto& trigger : triggers()) {
        database.exec("DROP TRIGGER IF EXISTS " + triggerName(trigger));
    }
    database.exec("DROP TABLE IF EXISTS " + sums);
    database.exec("DROP TABLE IF EXISTS " + ratings);
    database.exec("CREATE TABLE " + ratings +
                  " (filterId TEXT NOT NULL PRIMARY KEY, rating INTEGER NOT NULL) WITHOUT ROWID");
    database.exec("CREATE TABLE " + sums +
                  " (quarter INTEGER NOT NULL, projectId TEXT NOT NULL, duration INTEGER NOT "
                  "NULL, ratedDuration INTEGER NOT NULL, absDuration INTEGER NOT NULL, absRated "
                  "INTEGER NOT NULL, members INTEGER NOT NULL, unrated INTEGER NOT NULL, PRIMARY "
                  "KEY (quarter, projectId)) WITHOUT ROWID");
    database.exec("INSERT INTO " + ratings +
                  " (filterId, rating) SELECT id, CAST(rating AS INTEGER) FROM Filter WHERE "
                  "rating IS NOT NULL");
    const std::string duration = durationOf("t");
    const std::string rated = duration + " * IFNULL(r.rating, 0)";
    database.exec("INSERT INTO " + sums + " SELECT " + quarterOf("t") + ", t.projectId, SUM(" +
                  duration + "), SUM(" + rated + "), SUM(" + magnitude(duration) + "), SUM(" +
                  magnitude(rated) + "), COUNT(*), SUM(r.rating IS NULL) FROM TagUsage AS t " +
                  "LEFT JOIN " + ratings + " AS r ON r.filterId = t.filterId WHERE " +
                  isSummarised("t") + " GROUP BY 1, 2");
    for (const auto& trigger : triggers()) {
        database.exec("CREATE TRIGGER " + triggerName(trigger) + " " + trigger.definition);
    }
}

std::string ratedOtherwiseSql() {
    return "SELECT f.id FROM Filter AS f WHERE CAST(f.rating AS INTEGER) IS NOT (SELECT rating "
           "FROM " +
           ratings + " WHERE filterId = f.id) UNION SELECT filterId FROM " + ratings +
           " WHERE filterId NOT IN (SELECT id FROM Filter)";
}

std::vector<std::string> filtersRatedOtherwise(SQLite::Database& database) {
    SQLite::Statement query(database, ratedOtherwiseSql());
    std::vector<std::string> ids;
    while (query.executeStep()) {
        ids.push_back(query.getColumn(0).getString());
    }
    return ids;
}

void adoptCurrentRatings(SQLite::Database& database, const std::vector<std::string>& filterIds) {
    const auto statements = adoptRatingOf("?1");
    for (const auto& filterId : filterIds) {
        for (const auto& sql : statements) {
            SQLite::Statement statement(database, sql);
            statement.bind(1, filterId);
            statement.exec();
        }
    }
}

}  // namespace kivo::score_summary
