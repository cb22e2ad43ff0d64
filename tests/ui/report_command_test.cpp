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
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

QByteArray digestOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
               : QByteArray();
}

QString idText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

// Work (Code rated 100, Mail rated 50) and the archived Hobby (Guitar): today 4000 counted
// seconds and 500 archived ones, yesterday 600.
class ReportCommand : public testing::Test {
protected:
    ReportCommand() {
        auto store = home.openStore();
        test::RecordFixture records(*store, localMoment(today, 8));
        work = records.project(u"Work"_qs);
        hobby = records.project(u"Hobby"_qs, true);
        code = records.filter(work, u"Code"_qs, 100);
        mail = records.filter(work, u"Mail"_qs, 50);
        guitar = records.filter(hobby, u"Guitar"_qs, 0);
        const Instant morning = localMoment(today, 9);
        for (const auto& [filter, seconds] : {std::pair(code, 3000), {mail, 1000}, {guitar, 500}}) {
            records.tagUsage(filter, seconds, morning);
            records.appUsage(filter, u"org."_qs + filter.tagName, seconds, morning);
        }
        records.tagUsage(code, 600, localMoment(today.addDays(-1), 9));
        records.webUsage(mail, u"example.org"_qs, 1000, morning);
        records.save();
    }

    // Runs `kivo report` in a child whose data and settings live in the private home.
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

    test::TempHome home;
    QDate today = localDateOf(SystemClock().now());
    Project work, hobby;
    Filter code, mail, guitar;
};

TEST_F(ReportCommand, JsonOfTodayWithTheTreeBuiltFromTheRecords) {
    const QByteArray storeBefore = digestOf(home.storePath());
    const QJsonObject report = json();
    EXPECT_EQ(report.keys(),
              (QStringList{u"applications"_qs, u"productivity"_qs, u"projectBars"_qs,
                           u"projects"_qs, u"range"_qs, u"tags"_qs, u"tree"_qs, u"websites"_qs}));
    EXPECT_EQ(report[u"range"][u"from"].toString(), today.toString(Qt::ISODate));

    const QJsonObject tree = report[u"tree"].toObject();
    EXPECT_EQ(tree[u"duration"].toInteger(), 4000);
    EXPECT_EQ(tree[u"label"].toString(), u" 1h 6m ");
    EXPECT_EQ(tree[u"enableFilters"].toArray(), (QJsonArray{idText(code.id), idText(mail.id)}));
    EXPECT_EQ(tree[u"projects"][1][u"duration"].toInteger(), 500);
    EXPECT_EQ(tree[u"projects"][0][u"filters"][1][u"label"].toString(), u" 16m ");

    const QJsonObject apps = report[u"applications"].toObject();
    EXPECT_EQ(apps[u"durationTotal"].toInteger(), 4000);
    EXPECT_EQ(apps[u"tableDataSet"].toArray().size(), 2);
    EXPECT_EQ(apps[u"chartDataSet"][0][u"appName"].toString(), u"org.Code");
    EXPECT_EQ(apps[u"chartDataSet"][0][u"percentage"].toString(), u"75%");
    EXPECT_EQ(apps[u"tableDataSet"][1][u"filterId"].toString(), idText(mail.id));
    EXPECT_EQ(report[u"websites"][u"tableDataSet"][0][u"domainName"].toString(), u"example.org");
    EXPECT_EQ(report[u"tags"][u"tableDataSet"][1][u"tagName"].toString(), u"Mail");
    EXPECT_EQ(report[u"projects"][u"tableDataSet"][0][u"projectName"].toString(), u"Work");

    const QJsonObject productivity = report[u"productivity"].toObject();
    EXPECT_EQ(productivity[u"days"][0][u"value"].toInteger(), 87);
    const QJsonArray bars = productivity[u"bars"].toArray();
    ASSERT_EQ(bars.size(), 7);
    EXPECT_EQ(bars[6][u"name"].toString(), dayLabel(today));
    EXPECT_EQ(bars[5][u"annotation"].toInteger(), 100);

    const QJsonObject projectBars = report[u"projectBars"].toObject();
    ASSERT_EQ(projectBars[u"dataSet"].toArray().size(), 7);
    EXPECT_EQ(projectBars[u"dataSet"][6][u"annotation"].toInteger(), 4000);
    EXPECT_EQ(projectBars[u"durationPerDay"][dayLabel(today)].toInteger(), 4000);
    EXPECT_EQ(projectBars[u"durationPeriodMaxHour"].toInteger(), 1);

    EXPECT_EQ(digestOf(home.storePath()), storeBefore);
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
    EXPECT_EQ(report[u"productivity"][u"bars"].toArray().size(), 3);
}

TEST_F(ReportCommand, SavedSelectionDecidesWhatCountsAndStaysUntouched) {
    home.openSettings()->setSavedProjectTree(encodeSavedTree(
        {{hobby.id, u"Hobby"_qs, 0, true, true, true, {{guitar.id, u"Guitar"_qs, 0, true}}},
         {work.id,
          u"Work"_qs,
          0,
          false,
          false,
          true,
          {{code.id, u"Code"_qs, 0, true}, {mail.id, u"Mail"_qs, 0, false}}}}));
    const QByteArray settingsBefore = digestOf(home.settingsPath());
    const QJsonObject report = json();
    EXPECT_EQ(report[u"tree"][u"enableFilters"].toArray(), QJsonArray{idText(code.id)});
    EXPECT_EQ(report[u"tree"][u"projects"][1][u"filters"][1][u"duration"].toInteger(), 1000);
    EXPECT_EQ(report[u"tags"][u"tableDataSet"][0][u"percentage"].toString(), u"100%");
    EXPECT_EQ(report[u"websites"][u"durationTotal"].toInteger(), 1);
    EXPECT_EQ(report[u"productivity"][u"days"][0][u"value"].toInteger(), 87);
    EXPECT_EQ(digestOf(home.settingsPath()), settingsBefore);
}

TEST_F(ReportCommand, TextShowsTheTreeInAlignedColumns) {
    const auto result = run({});
    ASSERT_EQ(result.exitCode, 0);
    const QStringList lines = QString::fromStdString(result.output).split(u'\n');
    const auto header = std::find_if(lines.begin(), lines.end(), [](const QString& line) {
        return line.contains(u"Project / tag");
    });
    ASSERT_LT(header + 5, lines.end());
    const qsizetype secondsEnd = header->indexOf(u"Seconds") + 7;
    const std::vector<std::pair<const char*, const char*>> rows{
        {"Root", "4000"}, {"Work", "4000"}, {"Code", "3000"}, {"Mail", "1000"}, {"Hobby", "500"}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const QString& line = header[static_cast<qsizetype>(i) + 1];
        const QString seconds = QString::fromUtf8(rows[i].second);
        EXPECT_TRUE(line.trimmed().startsWith(QString::fromUtf8(rows[i].first)));
        EXPECT_EQ(line.mid(secondsEnd - seconds.size(), seconds.size()), seconds)
            << line.toStdString();
    }
}

TEST_F(ReportCommand, MissingStoreIsAnEmptyReport) {
    ASSERT_TRUE(QFile::remove(home.storePath()));
    const QJsonObject report = json();
    EXPECT_TRUE(report[u"tree"][u"projects"].toArray().isEmpty());
    EXPECT_EQ(report[u"productivity"][u"days"][0][u"value"].toInteger(), 0);
    EXPECT_FALSE(QFile::exists(home.storePath()));
}

TEST_F(ReportCommand, UnopenableStoreAndBadArgumentsFail) {
    const auto badArguments = run({u"--days"_qs, u"-2"_qs});
    EXPECT_EQ(badArguments.exitCode, 2);
    EXPECT_TRUE(badArguments.output.empty());

    QFile file(home.storePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QByteArray(4096, 'x'));
    file.close();
    const auto result = run({});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_EQ(result.output.rfind("Could not create ModelContainer: ", 0), 0u) << result.output;
}

}  // namespace
}  // namespace kivo
