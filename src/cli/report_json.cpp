#include "cli/report_json.h"

#include <algorithm>

#include "cli/json_writer.h"
#include "cli/report_contents.h"
#include "reports/percentage.h"
#include "tree/duration_label.h"

namespace kivo {

// Every object's keys are written in sorted order, as a JSON object of Qt keeps them.
namespace {

QString idText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QString dateText(QDate date) {
    return date.toString(Qt::ISODate);
}

void writeTree(JsonWriter& json, const TreeSnapshot& tree) {
    json.beginObject();
    json.key("duration").value(tree.durationTotal);
    json.key("enableFilters").beginArray();
    for (const auto& id : tree.enableFilters) {
        json.value(idText(id));
    }
    json.endArray();
    json.key("isShowArchivedProject").value(tree.isShowArchivedProject);
    json.key("label").value(formatDurationLabel(tree.durationTotal));
    json.key("name").value(tree.root.name);
    json.key("projects").beginArray();
    for (const auto& project : tree.projects) {
        json.beginObject();
        json.key("duration").value(project.duration);
        json.key("filters").beginArray();
        for (const auto& filter : project.filters) {
            json.beginObject();
            json.key("duration").value(filter.duration);
            json.key("id").value(idText(filter.id));
            json.key("isToggled").value(filter.isToggled);
            json.key("label").value(formatDurationLabel(filter.duration));
            json.key("name").value(filter.name);
            json.endObject();
        }
        json.endArray();
        json.key("id").value(idText(project.id));
        json.key("isArchived").value(project.isArchived);
        json.key("isExpanded").value(project.isExpanded);
        json.key("isToggled").value(project.isToggled);
        json.key("label").value(formatDurationLabel(project.duration));
        json.key("name").value(project.name);
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

// A row's duration, label and percentage, written among its own fields in key order.
struct RowShare {
    std::int64_t duration;
    QString percentage;
};

void writeDuration(JsonWriter& json, const RowShare& share) {
    json.key("duration").value(share.duration);
}

void writeLabelAndPercentage(JsonWriter& json, const RowShare& share) {
    json.key("label").value(formatDurationLabel(share.duration));
    json.key("percentage").value(share.percentage);
}

void writeRow(JsonWriter& json, const AppDisplayItem& row, const RowShare& share) {
    json.key("appBundleId").value(row.appBundleId);
    json.key("appName").value(row.appName);
    writeDuration(json, share);
    json.key("filterId").value(idText(row.filterId));
    writeLabelAndPercentage(json, share);
}

void writeRow(JsonWriter& json, const WebDisplayItem& row, const RowShare& share) {
    json.key("domainName").value(row.domainName);
    writeDuration(json, share);
    writeLabelAndPercentage(json, share);
}

void writeRow(JsonWriter& json, const TagDisplayItem& row, const RowShare& share) {
    writeDuration(json, share);
    json.key("filterId").value(idText(row.filterId));
    writeLabelAndPercentage(json, share);
    json.key("projectName").value(row.projectName);
    json.key("tagName").value(row.tagName);
}

void writeRow(JsonWriter& json, const ProjectDisplayItem& row, const RowShare& share) {
    writeDuration(json, share);
    writeLabelAndPercentage(json, share);
    json.key("projectId").value(idText(row.projectId));
    json.key("projectName").value(row.projectName);
}

template <class Row>
void writeUsage(JsonWriter& json, const UsageReport<Row>& report) {
    const auto writeRows = [&](const std::vector<Row>& dataSet) {
        json.beginArray();
        for (const auto& row : dataSet) {
            json.beginObject();
            writeRow(json, row, {row.duration, percentageText(row.duration, report.durationTotal)});
            json.endObject();
        }
        json.endArray();
    };
    json.beginObject();
    json.key("chartDataSet");
    writeRows(report.chartDataSet);
    json.key("durationTotal").value(report.durationTotal);
    json.key("tableDataSet");
    writeRows(report.tableDataSet);
    json.endObject();
}

void writeBars(JsonWriter& json, const std::vector<BarChartData>& bars) {
    json.beginArray();
    for (const auto& bar : bars) {
        json.beginObject();
        json.key("annotation").value(bar.annotation);
        json.key("name").value(bar.name);
        json.key("projectName").value(bar.projectName);
        json.key("value").value(bar.value);
        json.endObject();
    }
    json.endArray();
}

void writeProductivity(JsonWriter& json, const ReportContents& contents) {
    json.beginObject();
    json.key("bars");
    writeBars(json, contents.productivityBars);
    json.key("days").beginArray();
    for (const auto& day : contents.dayScores) {
        json.beginObject();
        json.key("date").value(dateText(day.date));
        json.key("duration").value(day.duration);
        json.key("label").value(formatDurationLabel(day.duration));
        json.key("value").value(day.score);
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

void writeProjectBars(JsonWriter& json, const ProjectBarChart& chart) {
    json.beginObject();
    json.key("dataSet");
    writeBars(json, chart.dataSet);
    json.key("durationPerDay").beginObject();
    QStringList days = chart.durationPerDay.keys();
    std::sort(days.begin(), days.end());
    for (const auto& day : days) {
        json.key(day).value(chart.durationPerDay.value(day));
    }
    json.endObject();
    json.key("durationPeriodMaxHour").value(chart.durationPeriodMaxHour);
    json.endObject();
}

}  // namespace

QByteArray reportJson(const ReportContents& contents) {
    JsonWriter json;
    json.beginObject();
    json.key("applications");
    writeUsage(json, contents.applications);
    json.key("productivity");
    writeProductivity(json, contents);
    json.key("projectBars");
    writeProjectBars(json, contents.projectBars);
    json.key("projects");
    writeUsage(json, contents.projects);
    json.key("range").beginObject();
    json.key("days").value(contents.days);
    json.key("from").value(dateText(contents.from));
    json.key("to").value(dateText(contents.to));
    json.key("today").value(dateText(contents.today));
    json.endObject();
    json.key("tags");
    writeUsage(json, contents.tags);
    json.key("tree");
    writeTree(json, contents.tree);
    json.key("websites");
    writeUsage(json, contents.websites);
    json.endObject();
    return json.finish();
}

}  // namespace kivo
