#include "cli/report_command.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cstdio>

#include "model/local_day.h"
#include "reports/chart_days.h"
#include "support/child_process.h"
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The sample projects: today 4000 counted seconds and 500 archived ones, yesterday 600.
class ReportCommand : public testing::Test {
protected:
    ReportCommand() {
        const Instant morning = localMoment(today, 9);
        for (const auto& [filter, seconds] :
             {std::pair(s.code, 3000), {s.mail, 1000}, {s.guitar, 500}}) {
            records.tagUsage(filter, seconds, morning);
            records.appUsage(filter, u"org."_qs + filter.tagName, seconds, morning);
        }
        records.tagUsage(s.code, 600, localMoment(today.addDays(-1), 9));
        records.webUsage(s.mail, u"example.org"_qs, 1000, morning);
        records.save();
        store.reset();  // the report opens the store itself
    }

    // Runs `kivo report` in a child whose data and settings live in the private home.
    test::ChildResult run(const QStringList& options) const {
        return test::runInChild([&] {
            qputenv("XDG_DATA_HOME", QFile::encodeName(home.path() + u"/data"));
            qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + u"/config"));
            std::vector<QByteArray> words;
            std::vector<char*> argv;
            for (const auto& word : QStringList{u"kivo"_qs, u"report"_qs} + options) {
                argv.push_back(words.emplace_back(word.toLocal8Bit()).data());
            }
            return runReportCommand(static_cast<int>(argv.size()), argv.data());
        });
    }

    QJsonObject json(const QStringList& options = {}) const {
        const auto result = run(QStringList{u"--json"_qs} + options);
        EXPECT_EQ(result.exitCode, 0);
        return QJsonDocument::fromJson(QByteArray::fromStdString(result.output)).object();
    }

    test::TempHome home;
    QDate today = localDateOf(SystemClock().now());
    std::unique_ptr<RecordStore> store = home.openStore();
    test::RecordFixture records{*store, localMoment(today, 8)};
    test::SampleProjects s{records};
};

TEST_F(ReportCommand, JsonOfTheRangeWithTheTreeFromTheRecordsOrTheSavedLayout) {
    const QByteArray storeBefore = contentsOf(home.storePath());
    const QJsonObject report = json();
    EXPECT_EQ(report.keys().join(u' '),
              u"applications productivity projectBars projects range tags tree websites");
    EXPECT_EQ(report[u"tree"][u"duration"].toInteger(), 4000);
    EXPECT_EQ(report[u"tree"][u"label"].toString(), u" 1h 6m ");
    EXPECT_EQ(report[u"tree"][u"enableFilters"].toArray().size(), 3);
    EXPECT_EQ(report[u"tree"][u"projects"][1][u"duration"].toInteger(), 500);  // archived
    EXPECT_EQ(report[u"applications"][u"chartDataSet"][0][u"percentage"].toString(), u"75%");
    EXPECT_EQ(report[u"websites"][u"tableDataSet"][0][u"domainName"].toString(), u"example.org");
    EXPECT_EQ(report[u"tags"][u"tableDataSet"][1][u"tagName"].toString(), u"Mail");
    EXPECT_EQ(report[u"projects"][u"tableDataSet"][0][u"projectName"].toString(), u"Work");
    const QJsonObject productivity = report[u"productivity"].toObject();
    EXPECT_EQ(productivity[u"days"][0][u"value"].toInteger(), 87);
    EXPECT_EQ(productivity[u"bars"][6][u"name"].toString(), dayLabel(today));
    EXPECT_EQ(productivity[u"bars"][5][u"annotation"].toInteger(), 100);
    EXPECT_EQ(report[u"projectBars"][u"dataSet"].toArray().size(), 14);  // 2 projects, 7 days
    EXPECT_EQ(report[u"projectBars"][u"durationPerDay"][dayLabel(today)].toInteger(), 4000);
    EXPECT_EQ(contentsOf(home.storePath()), storeBefore);
    EXPECT_FALSE(QFile::exists(home.settingsPath()));

    const QString yesterday = today.addDays(-1).toString(Qt::ISODate);
    const QJsonObject range = json({u"--from"_qs, yesterday, u"--days"_qs, u"3"_qs});
    EXPECT_EQ(range[u"tree"][u"duration"].toInteger(), 4600);
    EXPECT_EQ(range[u"productivity"][u"days"].toArray().size(), 2);
    EXPECT_EQ(range[u"productivity"][u"bars"].toArray().size(), 3);
    EXPECT_EQ(json({u"--to"_qs, yesterday})[u"tree"][u"duration"].toInteger(), 600);

    home.openSettings()->setSavedProjectTree(encodeSavedTree(
        {{s.work.id, u"Work"_qs, 0, false, false, true, {{s.code.id, u"Code"_qs, 0, true}}}}));
    const QByteArray settingsBefore = contentsOf(home.settingsPath());
    const QJsonObject saved = json();
    EXPECT_EQ(saved[u"tree"][u"enableFilters"].toArray(),
              QJsonArray{s.code.id.toString(QUuid::WithoutBraces).toUpper()});
    EXPECT_EQ(saved[u"tags"][u"tableDataSet"][0][u"percentage"].toString(), u"100%");
    EXPECT_EQ(contentsOf(home.settingsPath()), settingsBefore);
}

TEST_F(ReportCommand, UsageErrorsAndMissingOrUnopenableStores) {
    for (const QString& bad :
         {u"--from"_qs, u"--from 2026-02-30"_qs, u"--from 2026-2-3"_qs, u"--to 21.11.2026"_qs,
          u"--from 2999-01-01"_qs, u"--from 2020-01-10 --to 2020-01-09"_qs, u"--days -1"_qs,
          u"--days seven"_qs, u"--days 99999"_qs, u"--weeks 2"_qs}) {
        const auto result = run(bad.split(u' '));
        EXPECT_EQ(result.exitCode, 2) << bad.toStdString();
        EXPECT_TRUE(result.output.empty());
        EXPECT_EQ(result.errors.rfind("usage: kivo report", 0), 0u) << result.errors;
    }

    ASSERT_TRUE(QFile::remove(home.storePath()));
    const QJsonObject empty = json();
    EXPECT_TRUE(empty[u"tree"][u"projects"].toArray().isEmpty());
    EXPECT_EQ(empty[u"productivity"][u"days"][0][u"value"].toInteger(), 0);
    EXPECT_FALSE(QFile::exists(home.storePath()));

    QFile file(home.storePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    for (const auto& options : {QStringList(), QStringList{u"--json"_qs}}) {
        const auto unopenable = run(options);
        EXPECT_NE(unopenable.exitCode, 0);
        EXPECT_TRUE(unopenable.output.empty()) << "standard output is the report or nothing";
        EXPECT_EQ(unopenable.errors.rfind("Could not create ModelContainer: ", 0), 0u)
            << unopenable.errors;
    }
}

TEST_F(ReportCommand, StoreMadeUnusableGivesAnEmptyReportOrOneLineAndNeverAnAbort) {
    const QByteArray sample = contentsOf(home.storePath());
    const char* allTables =
        "DROP TABLE Project; DROP TABLE Filter; DROP TABLE Activity; DROP TABLE TagUsage; "
        "DROP TABLE AppUsage; DROP TABLE WebUsage;";
    const struct {
        const char* change;  // nullptr: the file is emptied to zero bytes
        const char* error;   // nullptr: an empty report
    } cases[] = {
        {allTables, nullptr},
        {nullptr, nullptr},
        {"DROP TABLE Filter", "Could not create ModelContainer: the store lacks its tables Filter"},
        {"DROP TABLE KivoMeta", "Could not create ModelContainer: the file is not a Kivo store"},
        {"UPDATE KivoMeta SET value = '2.0.0'", "newer than this version of Kivo reads"},
    };
    for (const auto& [change, error] : cases) {
        SCOPED_TRACE(change ? change : "zero bytes");
        QFile file(home.storePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(change ? sample : QByteArray());
        file.close();
        if (change) {
            SQLite::Database(home.storePath().toStdString(), SQLite::OPEN_READWRITE).exec(change);
        }
        const QByteArray before = contentsOf(home.storePath());
        const auto result = run({u"--json"_qs});
        EXPECT_EQ(result.signal, 0);
        if (error == nullptr) {
            EXPECT_EQ(result.exitCode, 0) << result.errors;
            const auto report = QJsonDocument::fromJson(QByteArray::fromStdString(result.output));
            EXPECT_TRUE(report[u"tree"][u"projects"].toArray().isEmpty());
        } else {
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_TRUE(result.output.empty());
            EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1);
            EXPECT_THAT(result.errors, testing::HasSubstr(error));
        }
        EXPECT_EQ(contentsOf(home.storePath()), before);
    }
}

}  // namespace
}  // namespace kivo
