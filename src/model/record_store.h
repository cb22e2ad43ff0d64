#pragma once

#include <QString>
#include <QUuid>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "model/instant.h"
#include "model/local_day.h"
#include "model/records.h"

namespace SQLite {
class Database;
class Statement;
}  // namespace SQLite
struct sqlite3_stmt;

namespace kivo {

class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One value bound to a column or to a `?` of a query's condition.
using SqlValue = std::variant<std::monostate, std::int64_t, double, bool, QString, QUuid, Instant>;

// What a fetch asks for: an SQL condition over the kind's columns with `?` placeholders,
// and an SQL ordering. Both empty: every record in the store's own order.
struct Query {
    std::string where;
    std::vector<SqlValue> bindings;
    std::string orderBy;
};

// Records that are not deleted, in the store's order.
Query live();
// Records that are not deleted and whose `createdAt` lies in the range: the query behind every
// daily total and every report.
Query liveCreatedWithin(const DayRange& range);

// Reads the columns of the current row of a fetch, in column order.
class RowReader {
public:
    virtual ~RowReader() = default;
    virtual void read(int column, QUuid& value) const = 0;
    virtual void read(int column, QString& value) const = 0;
    virtual void read(int column, OptionalText& value) const = 0;
    virtual void read(int column, bool& value) const = 0;
    virtual void read(int column, std::int64_t& value) const = 0;
    virtual void read(int column, Instant& value) const = 0;
};

// The cells of the current row of a narrow read, by column index. A text stays valid until the
// next row.
class RowCells {
public:
    explicit RowCells(sqlite3_stmt* statement) : statement_(statement) {}

    std::string_view text(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    // Whether the column holds an integer; asked before reading it, which may convert it.
    bool isInteger(int column) const;

private:
    sqlite3_stmt* statement_;
};

// A record id from the text a narrow read hands out, read as a fetch reads it.
QUuid uuidOf(std::string_view text);

// The record store: one SQLite file with a table per record kind. Changes are gathered into a
// batch (one transaction) that save() commits as a whole; a batch not saved is rolled back.
class RecordStore {
public:
    enum class Mode { ReadWrite, ReadOnly };

    static constexpr const char* schemaVersion = "1.0.0";

    static constexpr int defaultBusyTimeout = 5000;  // milliseconds

    // Opens the store at `path`, creating it (folder 0700, file 0600) in ReadWrite mode. Throws
    // StoreError with the reason when the file cannot be opened, is not a Kivo store, or was
    // written by a newer schema; such a file is left untouched. Read-only, a store without any
    // record table reads as empty, and one that lacks some of them is refused.
    static std::unique_ptr<RecordStore> open(const QString& path, Mode mode = Mode::ReadWrite);

    // $XDG_DATA_HOME/Kivo/kivo.sqlite, by default ~/.local/share/Kivo/kivo.sqlite.
    static QString defaultPath();

    // The file this store was opened from, for another thread to open a connection of its own.
    QString path() const;

    ~RecordStore();
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;

    template <class Record>
    void insert(const Record& record) {
        write(insertSql(Record::kind), valuesOf(record));
    }

    // Writes every field of the stored record whose id equals `record.id`.
    template <class Record>
    void update(const Record& record) {
        auto values = valuesOf(record);
        values.push_back(record.id);
        write(updateSql(Record::kind), values);
    }

    template <class Record>
    std::vector<Record> fetch(const Query& query = {}) {
        std::vector<Record> records;
        select(Record::kind, query, [&records](const RowReader& row) {
            Record record;
            int column = 0;
            Record::forEachField(record,
                                 [&](const char*, auto& field) { row.read(column++, field); });
            records.push_back(std::move(record));
        });
        return records;
    }

    // How long a write waits for another connection's lock before it fails with StoreError.
    void setBusyTimeout(std::chrono::milliseconds timeout);

    // Runs a read of the caller's own (selected columns, aggregates) and hands over each row.
    // Reports read only the few columns they need, which is much cheaper than whole records.
    void read(const std::string& sql, const std::vector<SqlValue>& bindings,
              const std::function<void(const RowCells&)>& onRow);

    // Commits the open batch; does nothing when there is none. On failure the batch is rolled
    // back and StoreError says why.
    void save();
    void rollback();
    bool hasChanges() const { return inBatch_; }

    // Whether the daily totals' summaries agree with the records, so that reads may use them. A
    // writable store is brought up to date on open; a read-only one that is not is read directly.
    bool hasUsageSummaries() const { return hasUsageSummaries_; }

private:
    RecordStore(std::unique_ptr<SQLite::Database> database, bool hasUsageSummaries);

    template <class Record>
    static std::vector<SqlValue> valuesOf(const Record& record) {
        std::vector<SqlValue> values;
        Record::forEachField(record, [&values](const char*, const auto& field) {
            using Field = std::decay_t<decltype(field)>;
            if constexpr (std::is_same_v<Field, OptionalText>) {
                values.push_back(field ? SqlValue{*field} : SqlValue{});
            } else {
                values.push_back(field);
            }
        });
        return values;
    }

    static const std::string& insertSql(const char* kind);
    static const std::string& updateSql(const char* kind);
    void write(const std::string& sql, const std::vector<SqlValue>& values);
    void select(const char* kind, const Query& query,
                const std::function<void(const RowReader&)>& onRow);
    SQLite::Statement& statement(const std::string& sql);
    void beginBatchIfNeeded();

    std::unique_ptr<SQLite::Database> database_;
    std::vector<std::pair<std::string, std::unique_ptr<SQLite::Statement>>> statements_;
    // Narrow reads step through SQLite's own interface: its column accessors cost a fraction of
    // the wrapper's, which matters over a year of totals.
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };
    std::vector<std::pair<std::string, std::unique_ptr<sqlite3_stmt, Finalizer>>> reads_;
    bool inBatch_ = false;
    bool hasUsageSummaries_ = false;
};

}  // namespace kivo
