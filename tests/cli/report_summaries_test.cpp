#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <random>

#include "cli/report_arguments.h"
#include "cli/report_contents.h"
#include "cli/report_json.h"
#include "model/local_day.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

// The "Misc." rows carry fresh random ids; everything else must be the same.
QJsonValue withoutPoolIds(const QJsonValue& value) {
    if (value.isArray()) {
        QJsonArray items;
        for (const auto& item : value.toArray()) {
            items.append(withoutPoolIds(item));
        }
        return items;
    }
    if (!value.isObject()) {
        return value;
    }
    QJsonObject object = value.toObject();
    const QString misc = QStringLiteral("Misc.");
    if (object.value(u"appName"_qs) == misc || object.value(u"projectName"_qs) == misc) {
        object.remove(u"filterId"_qs);
        object.remove(u"projectId"_qs);
    }
    for (auto field = object.begin(); field != object.end(); ++field) {
        *field = withoutPoolIds(*field);
    }
    return object;
}

// A day, a month and a year of a store with fourteen months of totals: many small groups, names
// that change within a group, deleted totals and totals at the edges of days.
TEST(ReportSummaries, JsonIsTheSameReadFromSummariesOrFromTheRecords) {
    const QDate today(2026, 6, 30);
    test::TreeHarness h("Europe/Berlin", today);
    std::mt19937 random(17);
    const auto pick = [&random](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    const std::vector<Filter> filters{h.s.code, h.s.mail, h.s.guitar, h.s.cook};
    for (QDate day = today.addDays(-430); day <= today; day = day.addDays(1)) {
        for (int i = 0; i < 12; ++i) {
            const Filter& filter = filters[static_cast<std::size_t>(pick(4))];
            const Instant at = pick(10) == 0 ? localDay(day).begin : localMoment(day, pick(24));
            const int seconds = pick(3) == 0 ? pick(60) : pick(7200);
            h.records.tagUsage(filter, seconds, at);
            const QString bundle = u"org.app%1"_qs.arg(pick(30));
            h.records.appUsage(filter, bundle, seconds, at, bundle + u" v%1"_qs.arg(pick(3)));
            h.records.webUsage(filter, u"site%1.example"_qs.arg(pick(60)), seconds, at);
        }
    }
    h.records.save();
    ASSERT_TRUE(h.store->hasUsageSummaries());

    const auto reports = [&](RecordStore& store) {
        QStringList texts;
        for (int daysBack : {0, 29, 364}) {
            ReportArguments arguments;
            arguments.from = today.addDays(-daysBack);
            arguments.to = today;
            arguments.isJson = true;
            const QByteArray written =
                reportJson(collectReport(store, *h.settings, h.clock, arguments));
            const QJsonDocument json = QJsonDocument::fromJson(written);
            // Written as Qt writes a document: the same keys in the same order, the same form.
            EXPECT_EQ(json.toJson(), written) << daysBack;
            texts << QString::fromUtf8(
                QJsonDocument(withoutPoolIds(json.object()).toObject()).toJson());
        }
        return texts;
    };
    const QStringList summarised = reports(*h.store);
    ASSERT_TRUE(summarised.back().contains(u"Misc."_qs));

    // The same records without summaries, read-only: every total is read itself.
    const QString copyPath = h.home.path() + u"/copy.sqlite"_qs;
    {
        SQLite::Database original(h.home.storePath().toStdString(), SQLite::OPEN_READONLY);
        original.exec("VACUUM INTO '" + copyPath.toStdString() + "'");
        SQLite::Database copy(copyPath.toStdString(), SQLite::OPEN_READWRITE);
        for (const char* table : {"TagUsageSummary", "AppUsageSummary", "WebUsageSummary"}) {
            copy.exec(std::string("DROP TABLE ") + table);
        }
    }
    const auto direct = RecordStore::open(copyPath, RecordStore::Mode::ReadOnly);
    ASSERT_FALSE(direct->hasUsageSummaries());
    EXPECT_EQ(reports(*direct), summarised);
}

}  // namespace
}  // namespace kivo
