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

template <class Record>
Record sample();

template <>
Project sample<Project>() {
    auto r = newRecord<Project>(t0);
    r.projectName = QStringLiteral("Thesis ✍");
    r.isArchived = true;
    r.extraColumn3 = QStringLiteral("kept");
    return r;
}

template <>
Filter sample<Filter>() {
    auto r = newRecord<Filter>(t0);
    r.tagName = QStringLiteral("Writing");
    r.appName = QStringLiteral("Text Editor");
    r.appBundleId = QStringLiteral("org.gnome.TextEditor");
    r.matchExpressionOfTitle = QStringLiteral("^Chapter \\d+");
    r.isTitleRegexOn = true;
    r.matchExpressionOfUrl = QStringLiteral("example");
    r.logicalOperator = 1;
    r.rating = 70;
    r.isPreprocessUrlOn = true;
    r.regexOfPreprocessUrl = QStringLiteral("[^?]+");
    return r;
}

template <>
Activity sample<Activity>() {
    auto r = newRecord<Activity>(t0);
    r.appName = QStringLiteral("Chromium");
    r.appBundleId = QStringLiteral("chromium");
    r.title = QStringLiteral("Tab \"quoted\" 'and' \n newline");
    r.url = QStringLiteral("https://example.org/a?b=c");
    r.domainName = QStringLiteral("example.org");
    r.duration = 9'000'000'000;
    r.startAt = t0 - Seconds{9.5};
    r.endAt = t0;
    return r;
}

template <>
TagUsage sample<TagUsage>() {
    auto r = newRecord<TagUsage>(t0);
    r.duration = 42;
    return r;
}

template <>
AppUsage sample<AppUsage>() {
    auto r = newRecord<AppUsage>(t0);
    r.duration = 7;
    r.appName = QStringLiteral("XTerm");
    r.appBundleId = QStringLiteral("debian-xterm");
    return r;
}

template <>
WebUsage sample<WebUsage>() {
    auto r = newRecord<WebUsage>(t0);
    r.duration = 3;
    r.domainName = QStringLiteral("example.org");
    return r;
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
    for (const auto& extra : {record.extraColumn1, record.extraColumn2, record.extraColumn3,
                              record.extraColumn4, record.extraColumn5}) {
        EXPECT_FALSE(extra.has_value());
    }
}

TYPED_TEST(RecordKindTest, RoundTripsEveryFieldAcrossReopening) {
    TempHome home;
    const auto record = sample<TypeParam>();
    {
        auto store = home.openStore();
        store->insert(record);
        store->save();
    }
    const auto fetched = home.openStore()->template fetch<TypeParam>();
    ASSERT_EQ(fetched.size(), 1u);
    EXPECT_EQ(fetched.front(), record);
}

TYPED_TEST(RecordKindTest, SoftDeleteKeepsTheRecordButHidesItFromLiveQueries) {
    TempHome home;
    auto store = home.openStore();
    auto kept = sample<TypeParam>();
    auto deleted = sample<TypeParam>();
    store->insert(kept);
    store->insert(deleted);
    deleted.isDeleted = true;
    store->update(deleted);
    store->save();

    const auto all = store->template fetch<TypeParam>();
    ASSERT_EQ(all.size(), 2u);
    const auto liveOnes = store->template fetch<TypeParam>(live());
    ASSERT_EQ(liveOnes.size(), 1u);
    EXPECT_EQ(liveOnes.front().id, kept.id);
}

TEST(RecordStore, TablesHaveTheFixedFormOtherToolsRead) {
    TempHome home;
    auto store = home.openStore();
    auto project = sample<Project>();
    store->insert(project);
    store->save();

    SQLite::Database db(home.storePath().toStdString());
    SQLite::Statement columns(
        db, "SELECT name, type, \"notnull\", pk FROM pragma_table_info('Project')");
    std::vector<std::string> names;
    std::vector<std::string> types;
    while (columns.executeStep()) {
        names.push_back(columns.getColumn(0).getString());
        types.push_back(columns.getColumn(1).getString());
    }
    const std::vector<std::string> expectedNames{
        "id",           "projectName",  "isArchived",   "isNameChangeOnly",
        "isDeleted",    "createdAt",    "updatedAt",    "extraColumn1",
        "extraColumn2", "extraColumn3", "extraColumn4", "extraColumn5"};
    EXPECT_EQ(names, expectedNames);
    EXPECT_EQ(types,
              (std::vector<std::string>{"TEXT", "TEXT", "INTEGER", "INTEGER", "INTEGER", "REAL",
                                        "REAL", "TEXT", "TEXT", "TEXT", "TEXT", "TEXT"}));

    SQLite::Statement row(db, "SELECT id, createdAt, isArchived, extraColumn1 FROM Project");
    ASSERT_TRUE(row.executeStep());
    const std::string id = row.getColumn(0).getString();
    EXPECT_EQ(id.size(), 36u);
    EXPECT_EQ(id, project.id.toString(QUuid::WithoutBraces).toUpper().toStdString());
    EXPECT_DOUBLE_EQ(row.getColumn(1).getDouble(), 1'700'000'000.25);
    EXPECT_EQ(row.getColumn(2).getInt(), 1);
    EXPECT_TRUE(row.getColumn(3).isNull());

    for (const char* table :
         {"Project", "Filter", "Activity", "TagUsage", "AppUsage", "WebUsage"}) {
        EXPECT_TRUE(db.tableExists(table)) << table;
    }
    EXPECT_EQ(db.execAndGet("SELECT value FROM KivoMeta WHERE key = 'schemaVersion'").getString(),
              "1.0.0");
    EXPECT_EQ(db.execAndGet("PRAGMA journal_mode").getString(), "wal");
}

TEST(RecordStore, FilesAreOwnerOnly) {
    TempHome home;
    home.openStore();
    struct stat folder {};
    struct stat file {};
    ASSERT_EQ(
        ::stat(QFile::encodeName(QFileInfo(home.storePath()).absolutePath()).constData(), &folder),
        0);
    ASSERT_EQ(::stat(QFile::encodeName(home.storePath()).constData(), &file), 0);
    EXPECT_EQ(folder.st_mode & 0777, 0700u);
    EXPECT_EQ(file.st_mode & 0777, 0600u);
}

TEST(RecordStore, UnsavedBatchIsRolledBackAndSavedOneStays) {
    TempHome home;
    auto saved = sample<TagUsage>();
    auto unsaved = sample<TagUsage>();
    {
        auto store = home.openStore();
        store->insert(saved);
        store->save();
        store->insert(unsaved);
        EXPECT_TRUE(store->hasChanges());
    }
    const auto fetched = home.openStore()->fetch<TagUsage>();
    ASSERT_EQ(fetched.size(), 1u);
    EXPECT_EQ(fetched.front().id, saved.id);
}

TEST(RecordStore, AFailedWriteDoesNotSpoilTheNextBatch) {
    TempHome home;
    auto store = home.openStore();
    const auto first = sample<Project>();
    store->insert(first);
    store->save();

    store->insert(sample<Project>());
    EXPECT_THROW(store->insert(first), StoreError);  // the same id again
    store->rollback();

    const auto next = sample<Project>();
    EXPECT_NO_THROW(store->insert(next));
    store->save();
    EXPECT_EQ(store->fetch<Project>().size(), 2u);
}

TEST(RecordStore, FetchFiltersByRangeAndOrders) {
    TempHome home;
    auto store = home.openStore();
    const DayRange range{t0, t0 + Seconds{100}};
    for (double offset : {-0.001, 0.0, 50.0, 99.999, 100.0}) {
        auto usage = sample<AppUsage>();
        usage.createdAt = t0 + Seconds{offset};
        usage.duration = static_cast<std::int64_t>(offset * 1000);
        store->insert(usage);
    }
    store->save();
    auto query = liveCreatedWithin(range);
    query.orderBy = "duration DESC";
    const auto fetched = store->fetch<AppUsage>(query);
    std::vector<std::int64_t> durations;
    for (const auto& usage : fetched) {
        durations.push_back(usage.duration);
    }
    EXPECT_EQ(durations, (std::vector<std::int64_t>{99'999, 50'000, 0}));
}

TEST(RecordStore, RefusesANewerSchemaAndAFileThatIsNotAStore) {
    TempHome home;
    home.openStore();
    {
        SQLite::Database db(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        db.exec("UPDATE KivoMeta SET value = '1.10.0' WHERE key = 'schemaVersion'");
    }
    EXPECT_THROW(home.openStore(), StoreError);

    TempHome other;
    QDir().mkpath(QFileInfo(other.storePath()).absolutePath());
    QFile garbage(other.storePath());
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
    garbage.write(QByteArray(4096, 'x'));
    garbage.close();
    EXPECT_THROW(other.openStore(), StoreError);
}

TEST(RecordStore, ReadOnlyOpeningOfAMissingStoreFails) {
    TempHome home;
    EXPECT_THROW(RecordStore::open(home.storePath(), RecordStore::Mode::ReadOnly), StoreError);
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

TEST(RecordStore, DefaultPathFollowsXdgDataHome) {
    const QByteArray previous = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/tmp/kivo-xdg");
    EXPECT_EQ(RecordStore::defaultPath(), QStringLiteral("/tmp/kivo-xdg/Kivo/kivo.sqlite"));
    qputenv("XDG_DATA_HOME", "");
    EXPECT_TRUE(RecordStore::defaultPath().endsWith(u"/.local/share/Kivo/kivo.sqlite"));
    qputenv("XDG_DATA_HOME", previous);
}

TEST(RecordTexts, ChoiceFieldsShowTheirPickerTexts) {
    EXPECT_EQ(logicalOperatorText(0), QStringLiteral("AND"));
    EXPECT_EQ(logicalOperatorText(1), QStringLiteral("OR"));
    EXPECT_EQ(ratingText(100), QStringLiteral("100%"));
    EXPECT_EQ(ratingText(30), QStringLiteral("30%"));
}

}  // namespace
}  // namespace kivo
