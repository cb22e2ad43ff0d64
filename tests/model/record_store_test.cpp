#include "model/record_store.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(RecordStore, RefusesWhatItCannotOpen) {
    TempHome home;
    home.openStore();
    SQLite::Database(home.storePath().toStdString(), SQLite::OPEN_READWRITE)
        .exec("UPDATE KivoMeta SET value = '1.10.0' WHERE key = 'schemaVersion'");
    EXPECT_THROW(home.openStore(), StoreError);

    TempHome other;
    EXPECT_THROW(RecordStore::open(other.storePath(), RecordStore::Mode::ReadOnly), StoreError);
    QDir().mkpath(QFileInfo(other.storePath()).path());
    QFile garbage(other.storePath());
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
    garbage.write(QByteArray(4096, 'x'));
    garbage.close();
    EXPECT_THROW(other.openStore(), StoreError);
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

TEST(RecordTexts, ChoiceFieldsShowTheirPickerTexts) {
    EXPECT_EQ(logicalOperatorText(0), QStringLiteral("AND"));
    EXPECT_EQ(logicalOperatorText(1), QStringLiteral("OR"));
    EXPECT_EQ(ratingText(100), QStringLiteral("100%"));
    EXPECT_EQ(ratingText(30), QStringLiteral("30%"));
}

}  // namespace
}  // namespace kivo
