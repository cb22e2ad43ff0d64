#include "ui/report_command.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

#include "model/local_day.h"
#include "reports/chart_days.h"
#include "support/child_process.h"
#include "support/temp_home.h"
#include "tree/record_fixture.h"
#include "tree/saved_tree_document.h"

namespace kivo {
namespace {

using test::localMoment;
using test::RecordFixture;
using test::TempHome;

QByteArray fileDigest(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// Work (Code rated 100, Mail rated 50) and the archived Hobby (Guitar): today 4000 counted
// seconds and 500 archived ones, yesterday 600.
class ReportCommand : public testing::Test {
protected:
    ReportCommand() {
        auto store = home.openStore();
        RecordFixture records(*store, localMoment(today, 8));
        work = records.project(QStringLiteral("Work"));
        hobby = records.project(QStringLiteral("Hobby"), true);
        code = records.filter(work, QStringLiteral("Code"), 100);
        mail = records.filter(work, QStringLiteral("Mail"), 50);
        guitar = records.filter(hobby, QStringLiteral("Guitar"), 0);
        const Instant morning = localMoment(today, 9);
        records.tagUsage(code, 3000, morning);
        records.tagUsage(mail, 1000, morning);
        records.tagUsage(guitar, 500, morning);
        records.tagUsage(code, 600, localMoment(today.addDays(-1), 9));
        records.appUsage(code, u"Editor"_qs, u"org.editor"_qs, 3000, morning);
        records.appUsage(mail, u"Mail"_qs, u"org.mail"_qs, 1000, morning);
        records.appUsage(guitar, u"Tuner"_qs, u"org.tuner"_qs, 500, morning);
        records.webUsage(mail, u"example.org"_qs, 1000, morning);
        records.save();
    }

    test::ChildResult run(const QStringList& options) const {
        return test::runInChild([&] {
            std::freopen("/dev/null", "w", stderr);
            qputenv("XDG_DATA_HOME", QFile::encodeName(home.path() + u"/data"));
            qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + u"/config"));
            std::vector<QByteArray> words{"kivo", "report"};
            for (const auto& option : options) {
                words.push_back(option.toLocal8Bit());
            }
            std::vector<char*> argv;
            for (auto& word : words) {
                argv.push_back(word.data());
            }
            return runReportCommand(static_cast<int>(argv.size()), argv.data());
        });
    }

    QJsonObject json(const QStringList& options = {}) const {
        const auto result = run(QStringList{u"--json"_qs} + options);
        EXPECT_EQ(result.exitCode, 0);
        return QJsonDocument::fromJson(QByteArray::fromStdString(result.output)).object();
    }

    TempHome home;
    QDate today = localDateOf(SystemClock().now());
    Project work, hobby;
    Filter code, mail, guitar;
};

QString id(const QUuid& uuid) {
    return uuid.toString(QUuid::WithoutBraces).toUpper();
}

TEST_F(ReportCommand, JsonOfTodayWithTheTreeBuiltFromTheRecords) {
    const QByteArray storeBefore = fileDigest(home.storePath());
    const QJsonObject report = json();
    EXPECT_EQ(report.keys(),
              (QStringList{u"applications"_qs, u"productivity"_qs, u"projectBars"_qs,
                           u"projects"_qs, u"range"_qs, u"tags"_qs, u"tree"_qs, u"websites"_qs}));
    EXPECT_EQ(report[u"range"][u"from"].toString(), today.toString(Qt::ISODate));

    const QJsonObject tree = report[u"tree"].toObject();
    EXPECT_EQ(tree[u"name"].toString(), u"Root");
    EXPECT_EQ(tree[u"duration"].toInteger(), 4000);
    EXPECT_EQ(tree[u"label"].toString(), u" 1h 6m ");
    EXPECT_EQ(tree[u"enableFilters"].toArray(), (QJsonArray{id(code.id), id(mail.id)}));
    const QJsonArray projects = tree[u"projects"].toArray();
    ASSERT_EQ(projects.size(), 2);
    EXPECT_EQ(projects[1][u"name"].toString(), u"Hobby");
    EXPECT_EQ(projects[1][u"duration"].toInteger(), 500);
    EXPECT_EQ(projects[0][u"filters"][1][u"name"].toString(), u"Mail");
    EXPECT_EQ(projects[0][u"filters"][1][u"label"].toString(), u" 16m ");

    const QJsonObject apps = report[u"applications"].toObject();
    EXPECT_EQ(apps[u"durationTotal"].toInteger(), 4000);
    const QJsonArray appRows = apps[u"tableDataSet"].toArray();
    ASSERT_EQ(appRows.size(), 2);
    EXPECT_EQ(appRows[0][u"appName"].toString(), u"Editor");
    EXPECT_EQ(appRows[0][u"duration"].toInteger(), 3000);
    EXPECT_EQ(appRows[0][u"percentage"].toString(), u"75%");
    EXPECT_EQ(appRows[1][u"filterId"].toString(), id(mail.id));
    EXPECT_EQ(apps[u"chartDataSet"].toArray().size(), 2);

    EXPECT_EQ(report[u"websites"][u"tableDataSet"][0][u"domainName"].toString(), u"example.org");
    EXPECT_EQ(report[u"websites"][u"tableDataSet"][0][u"percentage"].toString(), u"100%");
    const QJsonObject tag = report[u"tags"][u"tableDataSet"][1].toObject();
    EXPECT_EQ(tag[u"tagName"].toString(), u"Mail");
    EXPECT_EQ(tag[u"projectName"].toString(), u"Work");
    EXPECT_EQ(report[u"projects"][u"tableDataSet"].toArray().size(), 1);

    const QJsonObject productivity = report[u"productivity"].toObject();
    ASSERT_EQ(productivity[u"days"].toArray().size(), 1);
    EXPECT_EQ(productivity[u"days"][0][u"value"].toInteger(), 87);
    const QJsonArray bars = productivity[u"bars"].toArray();
    ASSERT_EQ(bars.size(), 7);
    EXPECT_EQ(bars[6][u"name"].toString(), dayLabel(today));
    EXPECT_EQ(bars[6][u"annotation"].toInteger(), 87);
    EXPECT_EQ(bars[5][u"value"].toDouble(), 100.0);

    const QJsonObject projectBars = report[u"projectBars"].toObject();
    const QJsonArray segments = projectBars[u"dataSet"].toArray();
    ASSERT_EQ(segments.size(), 7);
    EXPECT_EQ(segments[6][u"projectName"].toString(), u"Work");
    EXPECT_EQ(segments[6][u"annotation"].toInteger(), 4000);
    EXPECT_EQ(projectBars[u"durationPerDay"][dayLabel(today)].toInteger(), 4000);
    EXPECT_EQ(projectBars[u"durationPeriodMaxHour"].toInteger(), 1);

    EXPECT_EQ(fileDigest(home.storePath()), storeBefore);
    EXPECT_FALSE(QFile::exists(home.settingsPath()));
}

TEST_F(ReportCommand, RangeAndDayCountOptions) {
    const QString yesterday = today.addDays(-1).toString(Qt::ISODate);
    const QJsonObject report = json({u"--from"_qs, yesterday, u"--days"_qs, u"3"_qs});
    EXPECT_EQ(report[u"tree"][u"duration"].toInteger(), 4600);
    const QJsonArray days = report[u"productivity"][u"days"].toArray();
    ASSERT_EQ(days.size(), 2);
    EXPECT_EQ(days[0][u"date"].toString(), yesterday);
    EXPECT_EQ(days[0][u"value"].toInteger(), 100);
    EXPECT_EQ(days[1][u"duration"].toInteger(), 4000);
    EXPECT_EQ(report[u"productivity"][u"bars"].toArray().size(), 3);
    EXPECT_EQ(report[u"tags"][u"tableDataSet"][0][u"duration"].toInteger(), 3600);
}

TEST_F(ReportCommand, SavedSelectionDecidesWhatCounts) {
    std::vector<ProjectTreeItem> saved{
        {hobby.id, u"Hobby"_qs, 0, true, true, true, {{guitar.id, u"Guitar"_qs, 0, true}}},
        {work.id,
         u"Work"_qs,
         0,
         false,
         false,
         true,
         {{code.id, u"Code"_qs, 0, true}, {mail.id, u"Mail"_qs, 0, false}}}};
    home.openSettings()->setSavedProjectTree(encodeSavedTree(saved));
    const QByteArray settingsBefore = fileDigest(home.settingsPath());

    const QJsonObject report = json();
    EXPECT_EQ(report[u"tree"][u"enableFilters"].toArray(), QJsonArray{id(code.id)});
    EXPECT_EQ(report[u"tree"][u"projects"][0][u"name"].toString(), u"Hobby");
    EXPECT_EQ(report[u"tree"][u"projects"][1][u"filters"][1][u"duration"].toInteger(), 1000);
    EXPECT_EQ(report[u"tags"][u"tableDataSet"].toArray().size(), 1);
    EXPECT_EQ(report[u"tags"][u"tableDataSet"][0][u"percentage"].toString(), u"100%");
    EXPECT_EQ(report[u"websites"][u"tableDataSet"].toArray().size(), 0);
    EXPECT_EQ(report[u"websites"][u"durationTotal"].toInteger(), 1);
    // The score counts by project, whatever tags are selected.
    EXPECT_EQ(report[u"productivity"][u"days"][0][u"value"].toInteger(), 87);
    EXPECT_EQ(fileDigest(home.settingsPath()), settingsBefore);
}

TEST_F(ReportCommand, TextIsAlignedInColumns) {
    const auto result = run({});
    ASSERT_EQ(result.exitCode, 0);
    const QStringList lines = QString::fromStdString(result.output).split(u'\n');
    const auto header = std::find_if(lines.begin(), lines.end(), [](const QString& line) {
        return line.contains(u"Project / tag");
    });
    ASSERT_NE(header, lines.end());
    const qsizetype secondsEnd = header->indexOf(u"Seconds") + 7;
    const QStringList rows{lines.begin() + (header - lines.begin()) + 1,
                           lines.begin() + (header - lines.begin()) + 6};
    const QStringList expectedNames{u"Root"_qs, u"Work"_qs, u"Code"_qs, u"Mail"_qs,
                                    u"Hobby (archived)"_qs};
    const QStringList expectedSeconds{u"4000"_qs, u"4000"_qs, u"3000"_qs, u"1000"_qs, u"500"_qs};
    for (qsizetype i = 0; i < rows.size(); ++i) {
        EXPECT_TRUE(rows[i].trimmed().startsWith(expectedNames[i])) << rows[i].toStdString();
        EXPECT_EQ(rows[i].mid(secondsEnd - expectedSeconds[i].size(), expectedSeconds[i].size()),
                  expectedSeconds[i])
            << rows[i].toStdString();
    }
    EXPECT_TRUE(result.output.find("Editor") != std::string::npos);
    EXPECT_TRUE(result.output.find("75%") != std::string::npos);
}

TEST_F(ReportCommand, MissingStoreIsAnEmptyReport) {
    ASSERT_TRUE(QFile::remove(home.storePath()));
    const QJsonObject report = json();
    EXPECT_TRUE(report[u"tree"][u"projects"].toArray().isEmpty());
    EXPECT_TRUE(report[u"applications"][u"tableDataSet"].toArray().isEmpty());
    EXPECT_EQ(report[u"productivity"][u"days"][0][u"value"].toInteger(), 0);
    EXPECT_FALSE(QFile::exists(home.storePath()));
}

TEST_F(ReportCommand, UnopenableStoreStopsWithTheStoreMessage) {
    QFile file(home.storePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QByteArray(4096, 'x'));
    file.close();
    const auto result = run({});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_EQ(result.output.rfind("Could not create ModelContainer: ", 0), 0u) << result.output;
}

TEST_F(ReportCommand, BadArgumentsExitWithTwoAndPrintNothing) {
    for (const QStringList& options :
         {QStringList{u"--days"_qs}, QStringList{u"--from"_qs, u"yesterday"_qs},
          QStringList{u"--verbose"_qs}}) {
        const auto result = run(options);
        EXPECT_EQ(result.exitCode, 2) << options.join(u' ').toStdString();
        EXPECT_TRUE(result.output.empty());
    }
}

}  // namespace
}  // namespace kivo
