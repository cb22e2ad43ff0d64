#pragma once

#include <string>
#include <vector>

#include "model/usage_summaries.h"

namespace SQLite {
class Database;
}  // namespace SQLite

// Sums of the tag totals (TagUsage) per quarter of an hour and project, weighted by the ratings of
// their filters: what a day's productivity score needs, in a few rows per day instead of one per
// filter. The ratings the sums were made with are kept beside them (TagScoreRating); triggers on
// TagUsage and Filter keep both in the transaction of every write, whoever writes.
namespace kivo::score_summary {

// A quarter of an hour in UTC: every time zone's midnight falls on one, so a local day is a run
// of whole quarters.
inline constexpr int quarterSeconds = 900;

inline constexpr const char* sumsTable = "TagScoreSummary";
inline constexpr const char* ratingsTable = "TagScoreRating";

// Whether the tables and all their triggers are there.
bool isInstalled(const usage_summaries::SchemaNames& schemaNames);

// Drops whatever is there, makes the tables anew from the records and installs the triggers. Runs
// inside the caller's transaction.
void rebuild(SQLite::Database& database);

// The text ids of the filters whose rating differs from the one the sums hold, and of those the
// sums hold a rating for that are gone.
std::string ratedOtherwiseSql();

// Filters whose rating differs from the one the sums were made with (a tool that wrote Filter with
// the triggers dropped, say), by text id. Empty when the sums fit today's ratings.
std::vector<std::string> filtersRatedOtherwise(SQLite::Database& database);

// Moves the sums of those filters' totals to their current ratings. Runs inside the caller's
// transaction.
void adoptCurrentRatings(SQLite::Database& database, const std::vector<std::string>& filterIds);

}  // namespace kivo::score_summary
