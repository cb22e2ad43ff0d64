#include "model/record_store.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <cstring>

#include "model/score_summary.h"
#include "model/usage_summaries.h"

namespace kivo {

namespace {

struct KindSchema {
    std::string kind;
    std::vector<std::pair<std::string, std::string>> columns;  // name, SQL declaration
    std::string insertSql;
    std::string updateSql;
    std::string columnList;
};

template <class Field>
const char* columnDeclaration() {
    if constexpr (std::is_same_v<Field, OptionalText>) {
        return "TEXT";
    } else if constexpr (std::is_same_v<Field, QString> || std::is_same_v<Field, QUuid>) {
        return "TEXT NOT NULL";
    } else if constexpr (std::is_same_v<Field, Instant>) {
        return "REAL NOT NULL";
    } else {
        static_assert(std::is_same_v<Field, bool> || std::is_same_v<Field, std::int64_t>);
        return "INTEGER NOT NULL";
    }
}

std::string joined(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const auto& part : parts) {
        if (!text.empty()) {
            text += separator;
        }
        text += part;
    }
    return text;
}

template <class Record>
KindSchema schemaOf() {
    KindSchema schema{Record::kind, {}, {}, {}, {}};
    Record record;
    Record::forEachField(record, [&schema](const char* name, auto& field) {
        schema.columns.emplace_back(name, columnDeclaration<std::decay_t<decltype(field)>>());
    });
    std::vector<std::string> names;
    std::vector<std::string> assignments;
    for (const auto& [name, declaration] : schema.columns) {
        names.push_back(name);
        assignments.push_back(name + " = ?");
    }
    schema.columnList = joined(names, ", ");
    const std::string placeholders = joined(std::vector<std::string>(names.size(), "?"), ", ");
    schema.insertSql =
        "INSERT INTO " + schema.kind + " (" + schema.columnList + ") VALUES (" + placeholders + ")";
    schema.updateSql =
        "UPDATE " + schema.kind + " SET " + joined(assignments, ", ") + " WHERE id = ?";
    return schema;
}

// In the order the store declares its kinds.
const std::vector<KindSchema>& schemas() {
    static const std::vector<KindSchema> all{schemaOf<Project>(),  schemaOf<Filter>(),
                                             schemaOf<Activity>(), schemaOf<TagUsage>(),
                                             schemaOf<AppUsage>(), schemaOf<WebUsage>()};
    return all;
}

const KindSchema& schemaFor(const char* kind) {
    const auto& all = schemas();
    const auto found = std::find_if(
        all.begin(), all.end(), [kind](const KindSchema& schema) { return schema.kind == kind; });
    return *found;
}

std::string tableDefinition(const KindSchema& schema) {
    std::vector<std::string> columns;
    for (const auto& [name, declaration] : schema.columns) {
        columns.push_back(name + " " + declaration + (name == "id" ? " PRIMARY KEY" : ""));
    }
    return "CREATE TABLE IF NOT EXISTS " + schema.kind + " (" + joined(columns, ", ") + ")";
}

constexpr const char* indexDefinitions[] = {
    "CREATE INDEX IF NOT EXISTS TagUsage_createdAt ON TagUsage (createdAt)",
    "CREATE INDEX IF NOT EXISTS AppUsage_createdAt ON AppUsage (createdAt)",
    "CREATE INDEX IF NOT EXISTS WebUsage_createdAt ON WebUsage (createdAt)",
    "CREATE INDEX IF NOT EXISTS Activity_startAt ON Activity (startAt)",
    // The reports read a range of daily totals through these alone, never touching the rows.
    "CREATE INDEX IF NOT EXISTS TagUsage_report ON TagUsage "
    "(createdAt, isDeleted, filterId, projectId, duration)",
    "CREATE INDEX IF NOT EXISTS AppUsage_report ON AppUsage "
    "(createdAt, isDeleted, filterId, appBundleId, appName, duration)",
    "CREATE INDEX IF NOT EXISTS WebUsage_report ON WebUsage "
    "(createdAt, isDeleted, filterId, domainName, duration)",
};

std::string uuidText(const QUuid& uuid) {
    return uuid.toString(QUuid::WithoutBraces).toUpper().toStdString();
}

// Compares dotted version texts numerically, part by part.
int compareVersions(const std::string& left, const std::string& right) {
    const auto parts = [](const std::string& text) {
        std::vector<long> numbers;
        for (const auto& part : QString::fromStdString(text).split(u'.')) {
            numbers.push_back(part.toLong());
        }
        return numbers;
    };
    const auto a = parts(left);
    const auto b = parts(right);
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end())   ? -1
           : std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end()) ? 1
                                                                                  : 0;
}

void bindValue(SQLite::Statement& statement, int index, const SqlValue& value) {
    std::visit(
        [&](const auto& v) {
            using Value = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<Value, std::monostate>) {
                statement.bind(index);
            } else if constexpr (std::is_same_v<Value, bool>) {
                statement.bind(index, v ? 1 : 0);
            } else if constexpr (std::is_same_v<Value, QString>) {
                statement.bind(index, v.toStdString());
            } else if constexpr (std::is_same_v<Value, QUuid>) {
                statement.bind(index, uuidText(v));
            } else if constexpr (std::is_same_v<Value, Instant>) {
                statement.bind(index, toEpochSeconds(v));
            } else {
                statement.bind(index, v);
            }
        },
        value);
}

// Reads the stored 36-character form directly; reports read tens of thousands of ids at a time
// and the general parser was the largest cost of a fetch. Anything else goes to that parser.
QUuid uuidFromText(const char* text) {
    static constexpr int byteOffsets[16] = {0,  2,  4,  6,  9,  11, 14, 16,
                                            19, 21, 24, 26, 28, 30, 32, 34};
    const auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    };
    if (std::strlen(text) != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-') {
        return QUuid::fromString(QLatin1StringView(text));
    }
    std::array<char, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int high = nibble(text[byteOffsets[i]]);
        const int low = nibble(text[byteOffsets[i] + 1]);
        if (high < 0 || low < 0) {
            return QUuid::fromString(QLatin1StringView(text));
        }
        bytes[i] = static_cast<char>(high << 4 | low);
    }
    return QUuid::fromRfc4122(QByteArrayView(bytes.data(), bytes.size()));
}

class StatementRowReader final : public RowReader {
public:
    explicit StatementRowReader(SQLite::Statement& statement) : statement_(statement) {}

    void read(int column, QUuid& value) const override {
        value = uuidFromText(statement_.getColumn(column).getText());
    }
    void read(int column, QString& value) const override {
        const auto cell = statement_.getColumn(column);
        value = QString::fromUtf8(static_cast<const char*>(cell.getBlob()), cell.getBytes());
    }
    void read(int column, OptionalText& value) const override {
        if (statement_.getColumn(column).isNull()) {
            value.reset();
        } else {
            value.emplace();
            read(column, *value);
        }
    }
    void read(int column, bool& value) const override {
        value = statement_.getColumn(column).getInt64() != 0;
    }
    void read(int column, std::int64_t& value) const override {
        value = statement_.getColumn(column).getInt64();
    }
    void read(int column, Instant& value) const override {
        value = fromEpochSeconds(statement_.getColumn(column).getDouble());
    }

private:
    SQLite::Statement& statement_;
};

void prepareFolder(const QString& path) {
    const QString folder = QFileInfo(path).absolutePath();
    if (QDir(folder).exists()) {
        return;
    }
    if (!QDir().mkpath(folder)) {
        throw StoreError("cannot create the folder " + folder.toStdString());
    }
    ::chmod(QFile::encodeName(folder).constData(), 0700);
}

// Creates the file with owner-only permissions before SQLite touches it; SQLite gives its
// journal files the permissions of the store file.
void prepareFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw StoreError(std::string(std::strerror(errno)) + ": " + path.toStdString());
    }
    ::close(descriptor);
}

std::string temporaryTableDefinition(const KindSchema& schema) {
    std::string definition = tableDefinition(schema);
    definition.replace(0, std::strlen("CREATE TABLE"), "CREATE TEMP TABLE");
    return definition;
}

// The record kinds whose tables the file lacks. Throws StoreError when the file is not a Kivo
// store: it holds tables but no KivoMeta, or KivoMeta names no version or a newer one. A file
// without any table (new, or zero bytes long) is an empty store.
std::vector<std::string> missingKinds(SQLite::Database& database) {
    std::vector<std::string> tables;
    SQLite::Statement query(database,
                            "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT "
                            "LIKE 'sqlite\\_%' ESCAPE '\\'");
    while (query.executeStep()) {
        tables.push_back(query.getColumn(0).getString());
    }
    const auto has = [&tables](const std::string& name) {
        return std::find(tables.begin(), tables.end(), name) != tables.end();
    };
    if (!tables.empty()) {
        if (!has("KivoMeta")) {
            throw StoreError("the file is not a Kivo store (it holds other tables)");
        }
        SQLite::Statement version(database,
                                  "SELECT value FROM KivoMeta WHERE key = 'schemaVersion'");
        if (!version.executeStep()) {
            throw StoreError("the store has no schema version");
        }
        const std::string stored = version.getColumn(0).getString();
        if (compareVersions(stored, RecordStore::schemaVersion) > 0) {
            throw StoreError("the store has schema version " + stored +
                             ", newer than this version of Kivo reads (" +
                             RecordStore::schemaVersion + ")");
        }
    }
    std::vector<std::string> missing;
    for (const auto& schema : schemas()) {
        if (!has(schema.kind)) {
            missing.push_back(schema.kind);
        }
    }
    return missing;
}

}  // namespace

Query live() {
    return {"isDeleted = 0", {}, {}};
}

Query liveCreatedWithin(const DayRange& range) {
    return {"isDeleted = 0 AND createdAt >= ? AND createdAt < ?", {range.begin, range.end}, {}};
}

QString RecordStore::defaultPath() {
    QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    if (dataHome.isEmpty() || QDir::isRelativePath(dataHome)) {
        dataHome = QDir::homePath() + u"/.local/share";
    }
    return dataHome + u"/Kivo/kivo.sqlite";
}

QString RecordStore::path() const {
    return QString::fromStdString(database_->getFilename());
}

std::unique_ptr<RecordStore> RecordStore::open(const QString& path, Mode mode) {
    try {
        int flags = SQLite::OPEN_READONLY;
        if (mode == Mode::ReadWrite) {
            prepareFolder(path);
            prepareFile(path);
            flags = SQLite::OPEN_READWRITE;
        }
        // One thread owns the connection, so SQLite's own locking would only cost time.
        auto database = std::make_unique<SQLite::Database>(
            path.toStdString(), flags | SQLite::OPEN_NOMUTEX, defaultBusyTimeout);
        // Nothing is written before the file is known to be Kivo's, so that a file that is not
        // (or is a newer Kivo's) is left exactly as it was.
        const auto missing = missingKinds(*database);
        if (mode == Mode::ReadWrite) {
            database->exec("PRAGMA journal_mode = WAL");
            database->exec("PRAGMA synchronous = FULL");
            SQLite::Transaction transaction(*database, SQLite::TransactionBehavior::IMMEDIATE);
            database->exec(
                "CREATE TABLE IF NOT EXISTS KivoMeta (key TEXT PRIMARY KEY, value TEXT NOT NULL)");
            database->exec(
                "INSERT OR IGNORE INTO KivoMeta (key, value) VALUES ('schemaVersion', '" +
                std::string(schemaVersion) + "')");
            for (const auto& schema : schemas()) {
                database->exec(tableDefinition(schema));
            }
            for (const char* index : indexDefinitions) {
                database->exec(index);
            }
            // A store from an older Kivo, or one whose summaries another tool dropped, is
            // summarised once here; from then on the triggers keep it so.
            if (!usage_summaries::areCurrent(*database) ||
                !usage_summaries::noneReplaced(*database)) {
                usage_summaries::rebuild(*database);
            }
            // Ratings changed behind the triggers' back are taken over before anything is read.
            const auto ratedOtherwise = score_summary::filtersRatedOtherwise(*database);
            if (!ratedOtherwise.empty()) {
                score_summary::adoptCurrentRatings(*database, ratedOtherwise);
            }
            transaction.commit();
        } else if (missing.size() == schemas().size()) {
            // A store the tracker has not filled yet reads as one without records.
            for (const auto& schema : schemas()) {
                database->exec(temporaryTableDefinition(schema));
            }
        } else if (!missing.empty()) {
            // Some kinds without the others would make totals point at rules that are not there.
            throw StoreError("the store lacks its tables " + joined(missing, ", "));
        }
        const bool hasUsageSummaries =
            mode == Mode::ReadWrite || (missing.empty() && usage_summaries::areCurrent(*database) &&
                                        usage_summaries::noneReplaced(*database));
        return std::unique_ptr<RecordStore>(
            new RecordStore(std::move(database), hasUsageSummaries));
    } catch (const SQLite::Exception& error) {
        throw StoreError(error.what());
    }
}

void RecordStore::setBusyTimeout(std::chrono::milliseconds timeout) {
    try {
        database_->setBusyTimeout(static_cast<int>(timeout.count()));
    } catch (const SQLite::Exception& error) {
        throw StoreError(error.what());
    }
}

RecordStore::RecordStore(std::unique_ptr<SQLite::Database> database, bool hasUsageSummaries)
    : database_(std::move(database)), hasUsageSummaries_(hasUsageSummaries) {}

RecordStore::~RecordStore() {
    // Statements must go before the connection that prepared them.
    statements_.clear();
    if (inBatch_) {
        rollback();
    }
}

const std::string& RecordStore::insertSql(const char* kind) {
    return schemaFor(kind).insertSql;
}
const std::string& RecordStore::updateSql(const char* kind) {
    return schemaFor(kind).updateSql;
}

SQLite::Statement& RecordStore::statement(const std::string& sql) {
    const auto found = std::find_if(statements_.begin(), statements_.end(),
                                    [&sql](const auto& entry) { return entry.first == sql; });
    if (found != statements_.end()) {
        // tryReset: a statement that failed last time must not throw that old error again.
        found->second->tryReset();
        found->second->clearBindings();
        return *found->second;
    }
    statements_.emplace_back(sql, std::make_unique<SQLite::Statement>(*database_, sql));
    return *statements_.back().second;
}

void RecordStore::beginBatchIfNeeded() {
    if (!inBatch_) {
        database_->exec("BEGIN IMMEDIATE");
        inBatch_ = true;
    }
}

void RecordStore::write(const std::string& sql, const std::vector<SqlValue>& values) {
    try {
        beginBatchIfNeeded();
        auto& prepared = statement(sql);
        for (std::size_t i = 0; i < values.size(); ++i) {
            bindValue(prepared, static_cast<int>(i + 1), values[i]);
        }
        prepared.exec();
    } catch (const SQLite::Exception& error) {
        throw StoreError(error.what());
    }
}

void RecordStore::select(const char* kind, const Query& query,
                         const std::function<void(const RowReader&)>& onRow) {
    const auto& schema = schemaFor(kind);
    std::string sql = "SELECT " + schema.columnList + " FROM " + schema.kind;
    if (!query.where.empty()) {
        sql += " WHERE " + query.where;
    }
    if (!query.orderBy.empty()) {
        sql += " ORDER BY " + query.orderBy;
    }
    try {
        auto& prepared = statement(sql);
        for (std::size_t i = 0; i < query.bindings.size(); ++i) {
            bindValue(prepared, static_cast<int>(i + 1), query.bindings[i]);
        }
        const StatementRowReader reader(prepared);
        while (prepared.executeStep()) {
            onRow(reader);
        }
        // Ends the statement's read snapshot at once, so that other connections may checkpoint.
        prepared.reset();
    } catch (const SQLite::Exception& error) {
        throw StoreError(error.what());
    }
}

std::string_view RowCells::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (text == nullptr) {
        return {};
    }
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::int64_t RowCells::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

double RowCells::real(int column) const {
    return sqlite3_column_double(statement_, column);
}

QUuid uuidOf(std::string_view text) {
    return QUuid::fromString(QLatin1StringView(text.data(), static_cast<qsizetype>(text.size())));
}

bool RowCells::isInteger(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_INTEGER;
}

void RecordStore::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

void RecordStore::read(const std::string& sql, const std::vector<SqlValue>& bindings,
                       const std::function<void(const RowCells&)>& onRow) {
    sqlite3* connection = database_->getHandle();
    const auto fail = [connection]() { throw StoreError(sqlite3_errmsg(connection)); };
    auto found = std::find_if(reads_.begin(), reads_.end(),
                              [&sql](const auto& entry) { return entry.first == sql; });
    if (found == reads_.end()) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v3(connection, sql.c_str(), static_cast<int>(sql.size()),
                               SQLITE_PREPARE_PERSISTENT, &prepared, nullptr) != SQLITE_OK) {
            sqlite3_finalize(prepared);
            fail();
        }
        reads_.emplace_back(sql, std::unique_ptr<sqlite3_stmt, Finalizer>(prepared));
        found = std::prev(reads_.end());
    }
    sqlite3_stmt* statement = found->second.get();
    // Resetting at the end, whatever happens, ends the read snapshot at once, so that other
    // connections may checkpoint.
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> resetAtEnd(statement,
                                                                           sqlite3_reset);
    sqlite3_clear_bindings(statement);
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        const int index = static_cast<int>(i + 1);
        const int bound = std::visit(
            [&](const auto& v) {
                using Value = std::decay_t<decltype(v)>;
                if constexpr (std::is_same_v<Value, std::monostate>) {
                    return sqlite3_bind_null(statement, index);
                } else if constexpr (std::is_same_v<Value, bool>) {
                    return sqlite3_bind_int(statement, index, v ? 1 : 0);
                } else if constexpr (std::is_same_v<Value, std::int64_t>) {
                    return sqlite3_bind_int64(statement, index, v);
                } else if constexpr (std::is_same_v<Value, double>) {
                    return sqlite3_bind_double(statement, index, v);
                } else if constexpr (std::is_same_v<Value, Instant>) {
                    return sqlite3_bind_double(statement, index, toEpochSeconds(v));
                } else {
                    std::string text;
                    if constexpr (std::is_same_v<Value, QUuid>) {
                        text = uuidText(v);
                    } else {
                        text = v.toStdString();
                    }
                    return sqlite3_bind_text(statement, index, text.c_str(),
                                             static_cast<int>(text.size()), SQLITE_TRANSIENT);
                }
            },
            bindings[i]);
        if (bound != SQLITE_OK) {
            fail();
        }
    }
    const RowCells cells(statement);
    for (;;) {
        const int stepped = sqlite3_step(statement);
        if (stepped == SQLITE_DONE) {
            return;
        }
        if (stepped != SQLITE_ROW) {
            fail();
        }
        onRow(cells);
    }
}

void RecordStore::save() {
    if (!inBatch_) {
        return;
    }
    try {
        database_->exec("COMMIT");
        inBatch_ = false;
    } catch (const SQLite::Exception& error) {
        rollback();
        throw StoreError(error.what());
    }
}

void RecordStore::rollback() {
    if (!inBatch_) {
        return;
    }
    inBatch_ = false;
    try {
        database_->exec("ROLLBACK");
    } catch (const SQLite::Exception&) {
        // A failed COMMIT may already have ended the transaction; nothing is left to undo.
    }
}

}  // namespace kivo
