#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace SQLite {
class Database;
}  // namespace SQLite

// Sums of the daily totals (TagUsage, AppUsage, WebUsage) per stretch of several days, per filter
// and key, each with the earliest total of its group in store order. Triggers on the record tables
// keep them in the transaction of every write, whoever writes, so a long range reads a few hundred
// sums per stretch instead of every daily total.
namespace kivo::usage_summaries {

// The stretches, in days, coarsest first. A stretch number k of `days` covers the creation moments
// [k × days × 86400, (k + 1) × days × 86400) in seconds since the epoch: in UTC, so that sums do
// not depend on the time zone of whoever wrote them.
inline constexpr int stretchDays[] = {128, 32, 4};
static_assert(stretchDays[0] % stretchDays[1] == 0 && stretchDays[1] % stretchDays[2] == 0,
              "a stretch is made of whole finer ones");

// Whether the summaries and all their triggers are there, made by this version of the rules.
bool areCurrent(SQLite::Database& database);

// Whether no total has been replaced behind the triggers' back. A tool that replaces a total
// (INSERT OR REPLACE) deletes the old one without its delete trigger; a trigger that runs before
// the write marks the summaries, and this tells.
bool noneReplaced(SQLite::Database& database);

// Drops whatever summaries there are, makes them anew from the records and installs the triggers.
// Runs inside the caller's transaction.
void rebuild(SQLite::Database& database);

// A piece of a range of creation moments: either the records themselves, between `begin` and
// `end`, or the summaries of stretches `firstStretch` to `lastStretch` of `days` days.
struct RangePiece {
    int days = 0;  // 0: the records
    double begin = 0.0;
    double end = 0.0;
    std::int64_t firstStretch = 0;
    std::int64_t lastStretch = 0;

    friend bool operator==(const RangePiece&, const RangePiece&) = default;
};

// Cuts [begin, end) into whole stretches, coarsest first, and the records left at its edges.
std::vector<RangePiece> piecesOf(double begin, double end);

// The store's tables and triggers, each as its type, a space and its name ("table KivoMeta"):
// read in one statement, so that checking a few dozen of them costs no more than one.
using SchemaNames = std::set<std::string, std::less<>>;
SchemaNames schemaNames(SQLite::Database& database);
bool schemaHas(const SchemaNames& names, const char* type, const std::string& name);

// The summary table of a record kind.
std::string tableOf(const char* kind);

}  // namespace kivo::usage_summaries
