#include "model/record_store.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "model/open_store.h"
#include "support/child_process.h"
#include "support/temp_home.h"

namespace kivo {
namespace {

using test::TempHome;

const Instant t0 = fromEpochSeconds(1'700'000'000.25);

// A live record whose every field differs from its default, with text that needs escaping.
template <class Record>
Record filledRecord() {
    auto record = newRecord<Record>(t0);
    int n = 0;
    Record::forEachField(record, [&n](const char* name, auto& field) {
        using Field = std::decay_t<decltype(field)>;
        ++n;
        if constexpr (std::is_same_v<Field, QString> || std::is_same_v<Field, OptionalText>) {
            field = QString::fromUtf8(name) + u" \"quoted\" 'x' \n ✍";
        } else if constexpr (std::is_same_v<Field, std::int64_t>) {
            field = 9'000'000'000 + n;
        } else if constexpr (std::is_same_v<Field, Instant>) {
            field = t0 + Seconds{n + 0.125};
        } else if constexpr (std::is_same_v<Field, bool>) {
            field = std::string_view(name) != "isDeleted";
        }
    });
    return record;
}

template <class Record>
class RecordKindTest : public testing::Test {};

using RecordKinds = testing::Types<Project, Filter, Activity, TagUsage, AppUsage, WebUsage>;
TYPED_TEST_SUITE(RecordKindTest, RecordKinds);

TYPED_TEST(RecordKindTest, NewRecordHasTheDeclaredDefaults) {
    const auto record = newRecord<TypeParam>(t0);
    EXPECT_FALSE(record.id.isNull());
    EXPECT_NE(record.id, newRecord<TypeParam>(t0).id);
    EXPECT_FALSE(record.isDeleted);
    EXPECT_EQ(record.createdAt, t0);
    EXPECT_EQ(record.createdAt, record.updatedAt);
    EXPECT_FALSE(record.extraColumn1 || record.extraColumn2 || record.extraColumn3 ||
                 record.extraColumn4 || record.extraColumn5);
}

TYPED_TEST(RecordKindTest, RoundTripsEveryFieldAndHidesSoftDeletedOnes) {
    TempHome home;
    const auto kept = filledRecord<TypeParam>();
    auto deleted = filledRecord<TypeParam>();
    {
        auto store = home.openStore();
        store->insert(kept);
        store->insert(deleted);
        deleted.isDeleted = true;
        store->update(deleted);
        store->save();
    }
    auto store = home.openStore();
    EXPECT_EQ(store->template fetch<TypeParam>(), (std::vector{kept, deleted}));
    EXPECT_EQ(store->template fetch<TypeParam>(live()), std::vector{kept});
}

TEST(RecordStore, TablesHaveTheFixedFormOtherToolsRead) {
    TempHome home;
    auto store = home.openStore();
    auto project = newRecord<Project>(t0);
    project.isArchived = true;
    store->insert(project);
    store->save();

    SQLite::Database db(home.storePath().toStdString());
    SQLite::Statement columns(db, "SELECT name || ' ' || type FROM pragma_table_info('Project')");
    std::vector<std::string> declared;
    while (columns.executeStep()) {
        declared.push_back(columns.getColumn(0).getString());
    }
    EXPECT_EQ(declared, (std::vector<std::string>{
                            "id TEXT", "projectName TEXT", "isArchived INTEGER",
                            "isNameChangeOnly INTEGER", "isDeleted INTEGER", "createdAt REAL",
                            "updatedAt REAL", "extraColumn1 TEXT", "extraColumn2 TEXT",
                            "extraColumn3 TEXT", "extraColumn4 TEXT", "extraColumn5 TEXT"}));

    SQLite::Statement row(db, "SELECT id, createdAt, isArchived, extraColumn1 FROM Project");
    ASSERT_TRUE(row.executeStep());
    EXPECT_EQ(row.getColumn(0).getString(),
              project.id.toString(QUuid::WithoutBraces).toUpper().toStdString());
    EXPECT_DOUBLE_EQ(row.getColumn(1).getDouble(), 1'700'000'000.25);
    EXPECT_EQ(row.getColumn(2).getInt(), 1);
    EXPECT_TRUE(row.getColumn(3).isNull());

    for (const char* table : {"Filter", "Activity", "TagUsage", "AppUsage", "WebUsage"}) {
        EXPECT_TRUE(db.tableExists(table)) << table;
    }
    EXPECT_EQ(db.execAndGet("SELECT value FROM KivoMeta WHERE key = 'schemaVersion'").getString(),
              "1.0.0");
    EXPECT_EQ(db.execAndGet("PRAGMA journal_mode").getString(), "wal");

    struct stat folder {};
    struct stat file {};
    ASSERT_EQ(::stat(QFile::encodeName(QFileInfo(home.storePath()).path()).constData(), &folder),
              0);
    ASSERT_EQ(::stat(QFile::encodeName(home.storePath()).constData(), &file), 0);
    EXPECT_EQ(folder.st_mode & 0777, 0700u);
    EXPECT_EQ(file.st_mode & 0777, 0600u);
}

TEST(RecordStore, BatchesLandWholeOrNotAtAll) {
    TempHome home;
    const auto saved = filledRecord<Project>();
    {
        auto store = home.openStore();
        store->insert(saved);
        store->save();

        // A failed write must not spoil the batch that follows it.
        store->insert(filledRecord<Project>());
        EXPECT_THROW(store->insert(saved), StoreError);  // the same id again
        store->rollback();
        store->insert(filledRecord<Project>());
        store->save();

        store->insert(filledRecord<Project>());  // never saved
        EXPECT_TRUE(store->hasChanges());
    }
    EXPECT_EQ(home.openStore()->fetch<Project>().size(), 2u);
}

TEST(RecordStore, RangeQueryIsHalfOpenAndSkipsDeleted) {
    TempHome home;
    auto store = home.openStore();
    for (double offset : {-0.001, 0.0, 50.0, 99.999, 100.0}) {
        auto usage = newRecord<AppUsage>(t0 + Seconds{offset});
        usage.duration = static_cast<std::int64_t>(offset * 1000);
        usage.isDeleted = offset == 50.0;
        store->insert(usage);
    }
    store->save();
    auto query = liveCreatedWithin({t0, t0 + Seconds{100}});
    query.orderBy = "duration DESC";
    std::vector<std::int64_t> durations;
    for (const auto& usage : store->fetch<AppUsage>(query)) {
        durations.push_back(usage.duration);
    }
    EXPECT_EQ(durations, (std::vector<std::int64_t>{99'999, 0}));
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A file at the store's place as something else left it: `sql` run on a fresh SQLite file, or
// the bytes themselves.
void leaveFile(const TempHome& home, const char* sql, const QByteArray& bytes = {}) {
    QDir().mkpath(QFileInfo(home.storePath()).path());
    if (sql != nullptr) {
        SQLite::Database(home.storePath().toStdString(),
                         SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
            .exec(sql);
        return;
    }
    QFile file(home.storePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(RecordStore, RecognisesItsOwnFilesAndLeavesOthersByteForByte) {
    const char* ownMeta =
        "CREATE TABLE KivoMeta (key TEXT PRIMARY KEY, value TEXT NOT NULL);"
        "INSERT INTO KivoMeta VALUES ('schemaVersion', '1.0.0');";
    const struct {
        const char* name;
        std::string sql;  // empty: the bytes below
        QByteArray bytes;
        const char* writeError;  // nullptr: the tracker opens it and adds its tables
        const char* readError;   // nullptr: it reads as a store, empty when it has no tables
    } cases[] = {
        {"zero bytes", "", "", nullptr, nullptr},
        {"meta without record tables", ownMeta, {}, nullptr, nullptr},
        {"meta with some record tables",
         std::string(ownMeta) + "CREATE TABLE Project (id TEXT);",
         {},
         nullptr,
         "lacks its tables Filter, Activity, TagUsage, AppUsage, WebUsage"},
        {"another program's database",
         "CREATE TABLE notes (text TEXT); INSERT INTO notes "
         "VALUES ('mine');",
         {},
         "not a Kivo store",
         "not a Kivo store"},
        {"a newer Kivo's store",
         "CREATE TABLE KivoMeta (key TEXT PRIMARY KEY, value TEXT NOT NULL);"
         "INSERT INTO KivoMeta VALUES ('schemaVersion', '1.10.0');",
         {},
         "newer",
         "newer"},
        {"meta without a version",
         "CREATE TABLE KivoMeta (key TEXT, value TEXT);",
         {},
         "no schema version",
         "no schema version"},
        {"not a database", "", QByteArray(4096, 'x'), "not a database", "not a database"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempHome home;
        leaveFile(home, c.sql.empty() ? nullptr : c.sql.c_str(), c.bytes);
        const QByteArray before = contentsOf(home.storePath());
        const auto opened = [&](RecordStore::Mode mode, const char* error) {
            try {
                const auto store = RecordStore::open(home.storePath(), mode);
                EXPECT_EQ(error, nullptr);
                EXPECT_TRUE(store->fetch<Filter>().empty());
            } catch (const StoreError& refused) {
                EXPECT_NE(error, nullptr) << refused.what();
                EXPECT_THAT(refused.what(), testing::HasSubstr(error ? error : ""));
            }
        };
        opened(RecordStore::Mode::ReadOnly, c.readError);
        EXPECT_EQ(contentsOf(home.storePath()), before) << "reading changes nothing";
        opened(RecordStore::Mode::ReadWrite, c.writeError);
        if (c.writeError != nullptr) {
            EXPECT_EQ(contentsOf(home.storePath()), before);
            EXPECT_FALSE(QFile::exists(home.storePath() + u"-wal"));
        } else {
            EXPECT_EQ(SQLite::Database(home.storePath().toStdString())
                          .execAndGet("SELECT count(*) FROM sqlite_schema WHERE name = 'WebUsage'")
                          .getInt(),
                      1);
        }
    }
    TempHome none;
    EXPECT_THROW(RecordStore::open(none.storePath(), RecordStore::Mode::ReadOnly), StoreError);
}

TEST(RecordStore, UnopenableStoreEndsTheProcessWithTheFatalMessage) {
    TempHome home;
    QDir().mkpath(home.storePath());  // a folder where the file should be
    const auto result = test::runInChild([&] {
        openStoreOrExit(home.storePath());
        return 0;
    });
    EXPECT_NE(result.exitCode, 0);
    EXPECT_EQ(result.output.rfind("Could not create ModelContainer: ", 0), 0u) << result.output;
    EXPECT_GT(result.output.size(), std::string("Could not create ModelContainer: ").size() + 1);
}

TEST(StoreLock, OneRecorderPerStoreUntilItLetsGo) {
    TempHome home;
    const auto lockedElsewhere = [&] {
        return test::runInChild([&] {
                   return StoreLock::tryAcquire(home.storePath()) ? 0 : 3;
               }).exitCode == 3;
    };
    auto held = StoreLock::tryAcquire(home.storePath());
    ASSERT_TRUE(held);
    EXPECT_TRUE(lockedElsewhere());
    EXPECT_FALSE(StoreLock::tryAcquire(home.storePath())) << "within one process too";

    const auto second = test::runInChild([&] {
        const auto lock = lockStoreOrExit(home.storePath());
        openStoreOrExit(home.storePath());
        return 0;
    });
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.errors,
              "kivo: Kivo is already recording into " + home.storePath().toStdString() + "\n");
    EXPECT_FALSE(QFile::exists(home.storePath())) << "nothing written";

    held.reset();
    EXPECT_FALSE(lockedElsewhere());
}

TEST(RecordTexts, ChoiceFieldsShowTheirPickerTexts) {
    EXPECT_EQ(logicalOperatorText(0), QStringLiteral("AND"));
    EXPECT_EQ(logicalOperatorText(1), QStringLiteral("OR"));
    EXPECT_EQ(ratingText(100), QStringLiteral("100%"));
    EXPECT_EQ(ratingText(30), QStringLiteral("30%"));
}

}  // namespace
}  // namespace kivo
