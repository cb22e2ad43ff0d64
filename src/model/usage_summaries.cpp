#include "model/usage_summaries.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "model/score_summary.h"

namespace kivo::usage_summaries {

namespace {

// Changing the stretches or the triggers' rules changes this text, so that stores summarised by
// other rules are summarised anew on open.
constexpr const char* versionKey = "usageSummaryVersion";
constexpr const char* version = "5;128,32,4;900";

struct SummarisedKind {
    const char* kind;
    const char* key;   // grouped with filterId
    const char* name;  // taken from a group's earliest total; empty when the kind has none
};

constexpr SummarisedKind kinds[] = {
    {"TagUsage", "projectId", ""},
    {"AppUsage", "appBundleId", "appName"},
    {"WebUsage", "domainName", ""},
};

constexpr const char* triggerEvents[] = {"insert",         "delete",  "update",
                                         "updateDuration", "replace", "replaceByUpdate"};

constexpr std::int64_t secondsPerDay = 86400;

std::string text(std::int64_t number) {
    return std::to_string(number);
}

bool hasName(const SummarisedKind& kind) {
    return std::string_view(kind.name).size() > 0;
}

// Which totals a summary holds: the live ones whose creation moment is a number from the epoch
// on. The others are never in a range of days.
std::string isSummarised(const std::string& row) {
    return row + ".isDeleted = 0 AND typeof(" + row + ".createdAt) IN ('integer', 'real') AND " +
           row + ".createdAt >= 0";
}

std::string stretchOf(const std::string& row, int days) {
    return "CAST(" + row + ".createdAt AS INTEGER) / " + text(days * secondsPerDay);
}

// The (days, stretch) of every summary row that holds `row`, none when it is not summarised. One
// statement then serves every stretch length: the triggers stay short, and SQLite parses every
// trigger of the schema before a store's first statement.
std::string stretchesOf(const std::string& row) {
    std::string lengths;
    for (int days : stretchDays) {
        lengths += (lengths.empty() ? "(" : ", (") + text(days) + ")";
    }
    return "SELECT column1 AS d, CAST(" + row + ".createdAt AS INTEGER) / (column1 * " +
           text(secondsPerDay) + ") AS s FROM (VALUES " + lengths + ") WHERE " + isSummarised(row);
}

std::string sameGroup(const SummarisedKind& kind, const std::string& row) {
    return " AND filterId = " + row + ".filterId AND " + kind.key + " = " + row + "." + kind.key;
}

// The summary rows of `row`'s group, one per stretch length.
std::string groupsOf(const SummarisedKind& kind, const std::string& row) {
    return " WHERE (days, stretch) IN (" + stretchesOf(row) + ")" + sameGroup(kind, row);
}

std::string addTotal(const SummarisedKind& kind, const std::string& row) {
    const std::string table = tableOf(kind.kind);
    const std::string name = hasName(kind) ? std::string(", ") + kind.name : "";
    const std::string rowName = hasName(kind) ? ", " + row + "." + kind.name : "";
    const std::string isEarlier = "(" + row + ".createdAt < firstCreatedAt OR (" + row +
                                  ".createdAt = firstCreatedAt AND " + row +
                                  ".rowid < firstRowid))";
    std::string sql = "INSERT OR IGNORE INTO " + table + " (days, stretch, filterId, " + kind.key +
                      ", duration, members, firstCreatedAt, firstRowid" + name + ") SELECT *, " +
                      row + ".filterId, " + row + "." + kind.key + ", 0, 0, " + row +
                      ".createdAt, " + row + ".rowid" + rowName + " FROM (" + stretchesOf(row) +
                      "); ";
    sql += "UPDATE " + table + " SET duration = duration + CAST(" + row +
           ".duration AS INTEGER), members = members + 1, firstCreatedAt = CASE WHEN " + isEarlier +
           " THEN " + row + ".createdAt ELSE firstCreatedAt END, firstRowid = CASE WHEN " +
           isEarlier + " THEN " + row + ".rowid ELSE firstRowid END";
    if (hasName(kind)) {
        // The earliest total names the group, also when its own name changes.
        sql += std::string(", ") + kind.name + " = CASE WHEN " + isEarlier + " OR " + row +
               ".rowid = firstRowid THEN " + row + "." + kind.name + " ELSE " + kind.name + " END";
    }
    sql += groupsOf(kind, row) + "; ";
    return sql;
}

std::string removeTotal(const SummarisedKind& kind, const std::string& row) {
    const std::string table = tableOf(kind.kind);
    std::string sql = "UPDATE " + table + " SET duration = duration - CAST(" + row +
                      ".duration AS INTEGER), members = members - 1" + groupsOf(kind, row) + "; ";
    sql += "DELETE FROM " + table + groupsOf(kind, row) + " AND members <= 0; ";
    // The group's earliest total left: its next one in store order takes over.
    const std::string span = table + ".days * " + text(secondsPerDay);
    const std::string name = hasName(kind) ? std::string(", ") + kind.name : "";
    sql += "UPDATE " + table + " SET (firstCreatedAt, firstRowid" + name +
           ") = (SELECT r.createdAt, r.rowid" +
           (hasName(kind) ? ", r." + std::string(kind.name) : "") + " FROM " + kind.kind +
           " AS r WHERE " + isSummarised("r") + " AND r.createdAt >= " + table + ".stretch * " +
           span + " AND r.createdAt < (" + table + ".stretch + 1) * " + span +
           " AND r.filterId = " + table + ".filterId AND r." + kind.key + " = " + table + "." +
           kind.key + " ORDER BY r.createdAt, r.rowid LIMIT 1)" + groupsOf(kind, row) +
           " AND firstRowid = " + row + ".rowid; ";
    return sql;
}

// Row 0 of a summary marks totals replaced behind the triggers' back: a tool's INSERT OR REPLACE
// (or UPDATE OR REPLACE) deletes the total it displaces without its delete trigger. The trigger
// that runs before such a write sees the total about to go and sets the mark; a statement that
// fails takes the mark back with it. Checking the mark on open costs one row, not a count of all.
constexpr const char* replacedMarkDays = "0";

std::string markReplaced(const SummarisedKind& kind) {
    return "UPDATE " + tableOf(kind.kind) + " SET members = 1 WHERE days = " + replacedMarkDays +
           "; ";
}

std::string triggerName(const SummarisedKind& kind, const char* event) {
    return tableOf(kind.kind) + "_" + event;
}

std::vector<std::string> triggerDefinitions(const SummarisedKind& kind) {
    // Recording only ever changes a total's duration; that alone moves no group's earliest total.
    std::string unchangedGroup =
        "old.rowid = new.rowid AND old.isDeleted IS new.isDeleted AND "
        "old.createdAt IS new.createdAt AND old.filterId IS new.filterId "
        "AND old." +
        std::string(kind.key) + " IS new." + kind.key;
    if (hasName(kind)) {
        unchangedGroup += std::string(" AND old.") + kind.name + " IS new." + kind.name;
    }
    // Recording does this on nearly every write, so it looks each stretch up by its key rather
    // than through a list, which costs more to run than the other triggers' shorter text saves.
    std::string durationOnly;
    for (int days : stretchDays) {
        durationOnly += "UPDATE " + tableOf(kind.kind) +
                        " SET duration = duration - CAST(old.duration AS INTEGER) + "
                        "CAST(new.duration AS INTEGER) WHERE days = " +
                        text(days) + " AND stretch = " + stretchOf("new", days) +
                        sameGroup(kind, "new") + "; ";
    }
    const std::string on = std::string(" ON ") + kind.kind;
    const std::string table = kind.kind;
    // A conflicting id or an explicitly given rowid is what REPLACE deletes to make room.
    const std::string displaces =
        "EXISTS (SELECT 1 FROM " + table + " AS r WHERE (r.id = new.id OR r.rowid = new.rowid)";
    return {
        "CREATE TRIGGER " + triggerName(kind, "insert") + " AFTER INSERT" + on + " BEGIN " +
            addTotal(kind, "new") + "END",
        "CREATE TRIGGER " + triggerName(kind, "delete") + " AFTER DELETE" + on + " BEGIN " +
            removeTotal(kind, "old") + "END",
        "CREATE TRIGGER " + triggerName(kind, "update") + " AFTER UPDATE" + on + " WHEN NOT (" +
            unchangedGroup + ") BEGIN " + removeTotal(kind, "old") + addTotal(kind, "new") + "END",
        "CREATE TRIGGER " + triggerName(kind, "updateDuration") + " AFTER UPDATE" + on + " WHEN " +
            unchangedGroup + " AND " + isSummarised("new") + " BEGIN " + durationOnly + "END",
        "CREATE TRIGGER " + triggerName(kind, "replace") + " BEFORE INSERT" + on + " WHEN " +
            displaces + ") BEGIN " + markReplaced(kind) + "END",
        "CREATE TRIGGER " + triggerName(kind, "replaceByUpdate") + " BEFORE UPDATE" + on +
            " WHEN (new.id IS NOT old.id OR new.rowid IS NOT old.rowid) AND " + displaces +
            " AND r.rowid <> old.rowid) BEGIN " + markReplaced(kind) + "END",
    };
}

std::string tableDefinition(const SummarisedKind& kind) {
    return "CREATE TABLE " + tableOf(kind.kind) +
           " (days INTEGER NOT NULL, stretch INTEGER NOT NULL, filterId TEXT NOT NULL, " +
           kind.key +
           " TEXT NOT NULL, duration INTEGER NOT NULL, members INTEGER NOT NULL, "
           "firstCreatedAt REAL NOT NULL, firstRowid INTEGER NOT NULL" +
           (hasName(kind) ? std::string(", ") + kind.name + " TEXT" : "") +
           ", PRIMARY KEY (days, stretch, filterId, " + kind.key + ")) WITHOUT ROWID";
}

// Every group of every stretch at once: its sum, its number of totals and its earliest total.
std::string fillFromRecords(const SummarisedKind& kind, int days) {
    const std::string name = hasName(kind) ? std::string(", ") + kind.name : "";
    return "INSERT INTO " + tableOf(kind.kind) + " (days, stretch, filterId, " + kind.key +
           ", duration, members, firstCreatedAt, firstRowid" + name + ") SELECT " + text(days) +
           ", stretch, filterId, " + kind.key + ", total, members, createdAt, firstRowid" + name +
           " FROM (SELECT " + stretchOf(kind.kind, days) + " AS stretch, filterId, " + kind.key +
           ", createdAt, rowid AS firstRowid" + name +
           ", SUM(CAST(duration AS INTEGER)) OVER byGroup AS total, COUNT(*) OVER byGroup AS "
           "members, ROW_NUMBER() OVER (byGroup ORDER BY createdAt, rowid) AS place FROM " +
           kind.kind + " WHERE " + isSummarised(kind.kind) + " WINDOW byGroup AS (PARTITION BY " +
           stretchOf(kind.kind, days) + ", filterId, " + kind.key + ")) WHERE place = 1";
}

// The same from the summaries of finer stretches that make up each of `days`: far fewer rows.
std::string fillFromFiner(const SummarisedKind& kind, int days, int finerDays) {
    const std::string name = hasName(kind) ? std::string(", ") + kind.name : "";
    const std::string coarse = "stretch / " + text(days / finerDays);
    return "INSERT INTO " + tableOf(kind.kind) + " (days, stretch, filterId, " + kind.key +
           ", duration, members, firstCreatedAt, firstRowid" + name + ") SELECT " + text(days) +
           ", coarse, filterId, " + kind.key + ", total, allMembers, firstCreatedAt, firstRowid" +
           name + " FROM (SELECT " + coarse + " AS coarse, filterId, " + kind.key +
           ", firstCreatedAt, firstRowid" + name +
           ", SUM(duration) OVER byGroup AS total, SUM(members) OVER byGroup AS allMembers, "
           "ROW_NUMBER() OVER (byGroup ORDER BY firstCreatedAt, firstRowid) AS place FROM " +
           tableOf(kind.kind) + " WHERE days = " + text(finerDays) +
           " WINDOW byGroup AS (PARTITION BY " + coarse + ", filterId, " + kind.key +
           ")) WHERE place = 1";
}

// Stretch numbers of [begin, end) whose stretches lie wholly within it, made exact where the
// division rounds.
std::pair<std::int64_t, std::int64_t> wholeStretches(double begin, double end, double span) {
    auto first = static_cast<std::int64_t>(std::ceil(begin / span));
    while (static_cast<double>(first) * span < begin) {
        ++first;
    }
    while (static_cast<double>(first - 1) * span >= begin) {
        --first;
    }
    auto last = static_cast<std::int64_t>(std::floor(end / span)) - 1;
    while (static_cast<double>(last + 1) * span > end) {
        --last;
    }
    while (static_cast<double>(last + 2) * span <= end) {
        ++last;
    }
    return {std::max<std::int64_t>(first, 0), last};
}

void cut(double begin, double end, std::size_t level, std::vector<RangePiece>& pieces) {
    if (!(begin < end)) {
        return;
    }
    if (level == std::size(stretchDays)) {
        pieces.push_back({0, begin, end, 0, 0});
        return;
    }
    const int days = stretchDays[level];
    const double span = static_cast<double>(days * secondsPerDay);
    const auto [first, last] = wholeStretches(begin, end, span);
    if (first > last) {
        cut(begin, end, level + 1, pieces);
        return;
    }
    cut(begin, static_cast<double>(first) * span, level + 1, pieces);
    pieces.push_back({days, 0.0, 0.0, first, last});
    cut(static_cast<double>(last + 1) * span, end, level + 1, pieces);
}

}  // namespace

SchemaNames schemaNames(SQLite::Database& database) {
    SQLite::Statement query(database, "SELECT type || ' ' || name FROM sqlite_schema");
    SchemaNames names;
    while (query.executeStep()) {
        names.insert(query.getColumn(0).getString());
    }
    return names;
}

bool schemaHas(const SchemaNames& names, const char* type, const std::string& name) {
    return names.contains(std::string(type) + " " + name);
}

std::string tableOf(const char* kind) {
    return std::string(kind) + "Summary";
}

bool areCurrent(SQLite::Database& database) {
    const SchemaNames names = schemaNames(database);
    if (!schemaHas(names, "table", "KivoMeta")) {
        return false;
    }
    SQLite::Statement stored(database, "SELECT value FROM KivoMeta WHERE key = ?");
    stored.bind(1, versionKey);
    if (!stored.executeStep() || stored.getColumn(0).getString() != version) {
        return false;
    }
    for (const auto& kind : kinds) {
        if (!schemaHas(names, "table", tableOf(kind.kind))) {
            return false;
        }
        for (const char* event : triggerEvents) {
            if (!schemaHas(names, "trigger", triggerName(kind, event))) {
                return false;
            }
        }
    }
    return score_summary::isInstalled(names);
}

bool noneReplaced(SQLite::Database& database) {
    for (const auto& kind : kinds) {
        SQLite::Statement mark(database, "SELECT members FROM " + tableOf(kind.kind) +
                                             " WHERE days = " + replacedMarkDays);
        if (!mark.executeStep() || mark.getColumn(0).getInt64() != 0) {
            return false;
        }
    }
    return true;
}

void rebuild(SQLite::Database& database) {
    for (const auto& kind : kinds) {
        for (const char* event : triggerEvents) {
            database.exec("DROP TRIGGER IF EXISTS " + triggerName(kind, event));
        }
        database.exec("DROP TABLE IF EXISTS " + tableOf(kind.kind));
        database.exec(tableDefinition(kind));
        database.exec("INSERT INTO " + tableOf(kind.kind) + " (days, stretch, filterId, " +
                      kind.key + ", duration, members, firstCreatedAt, firstRowid) VALUES (" +
                      replacedMarkDays + ", 0, '', '', 0, 0, 0, 0)");
        // Finest first, each coarser one from the one below it.
        constexpr std::size_t finest = std::size(stretchDays) - 1;
        database.exec(fillFromRecords(kind, stretchDays[finest]));
        for (std::size_t level = finest; level-- > 0;) {
            database.exec(fillFromFiner(kind, stretchDays[level], stretchDays[level + 1]));
        }
        for (const auto& trigger : triggerDefinitions(kind)) {
            database.exec(trigger);
        }
    }
    score_summary::rebuild(database);
    SQLite::Statement mark(database, "INSERT OR REPLACE INTO KivoMeta (key, value) VALUES (?, ?)");
    mark.bind(1, versionKey);
    mark.bind(2, version);
    mark.exec();
}

std::vector<RangePiece> piecesOf(double begin, double end) {
    std::vector<RangePiece> pieces;
    // Far beyond any calendar date, a stretch number would not fit its integer.
    constexpr double farthest = 1e15;
    cut(begin, end,
        std::abs(begin) < farthest && std::abs(end) < farthest ? 0 : std::size(stretchDays),
        pieces);
    return pieces;
}

}  // namespace kivo::usage_summaries
