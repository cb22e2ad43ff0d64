#include "cli/report_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "cli/report_contents.h"
#include "reports/percentage.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

QString idText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QString dateText(QDate date) {
    return date.toString(Qt::ISODate);
}

QJsonValue integer(std::int64_t value) {
    return QJsonValue(static_cast<qint64>(value));
}

QJsonObject durationFields(std::int64_t duration) {
    return {{QStringLiteral("duration"), integer(duration)},
            {QStringLiteral("label"), formatDurationLabel(duration)}};
}

QJsonObject with(QJsonObject object, const QJsonObject& more) {
    for (auto it = more.begin(); it != more.end(); ++it) {
        object.insert(it.key(), it.value());
    }
    return object;
}

QJsonObject treeJson(const TreeSnapshot& tree) {
    QJsonArray projects;
    for (const auto& project : tree.projects) {
        QJsonArray filters;
        for (const auto& filter : project.filters) {
            filters.append(with(durationFields(filter.duration),
                                {{QStringLiteral("id"), idText(filter.id)},
                                 {QStringLiteral("name"), filter.name},
                                 {QStringLiteral("isToggled"), filter.isToggled}}));
        }
        projects.append(with(durationFields(project.duration),
                             {{QStringLiteral("id"), idText(project.id)},
                              {QStringLiteral("name"), project.name},
                              {QStringLiteral("isExpanded"), project.isExpanded},
                              {QStringLiteral("isArchived"), project.isArchived},
                              {QStringLiteral("isToggled"), project.isToggled},
                              {QStringLiteral("filters"), filters}}));
    }
    QJsonArray enableFilters;
    for (const auto& id : tree.enableFilters) {
        enableFilters.append(idText(id));
    }
    return with(durationFields(tree.durationTotal),
                {{QStringLiteral("name"), tree.root.name},
                 {QStringLiteral("isShowArchivedProject"), tree.isShowArchivedProject},
                 {QStringLiteral("enableFilters"), enableFilters},
                 {QStringLiteral("projects"), projects}});
}

QJsonObject rowFields(const AppDisplayItem& row) {
    return {{QStringLiteral("appName"), row.appName},
            {QStringLiteral("appBundleId"), row.appBundleId},
            {QStringLiteral("filterId"), idText(row.filterId)}};
}

QJsonObject rowFields(const WebDisplayItem& row) {
    return {{QStringLiteral("domainName"), row.domainName}};
}

QJsonObject rowFields(const TagDisplayItem& row) {
    return {{QStringLiteral("projectName"), row.projectName},
            {QStringLiteral("tagName"), row.tagName},
            {QStringLiteral("filterId"), idText(row.filterId)}};
}

QJsonObject rowFields(const ProjectDisplayItem& row) {
    return {{QStringLiteral("projectName"), row.projectName},
            {QStringLiteral("projectId"), idText(row.projectId)}};
}

template <class Row>
QJsonObject usageJson(const UsageReport<Row>& report) {
    const auto rows = [&report](const std::vector<Row>& dataSet) {
        QJsonArray array;
        for (const auto& row : dataSet) {
            QJsonObject object = with(durationFields(row.duration), rowFields(row));
            object.insert(QStringLiteral("percentage"),
                          percentageText(row.duration, report.durationTotal));
            array.append(object);
        }
        return array;
    };
    return {{QStringLiteral("durationTotal"), integer(report.durationTotal)},
            {QStringLiteral("tableDataSet"), rows(report.tableDataSet)},
            {QStringLiteral("chartDataSet"), rows(report.chartDataSet)}};
}

QJsonObject barJson(const BarChartData& bar) {
    return {{QStringLiteral("name"), bar.name},
            {QStringLiteral("value"), bar.value},
            {QStringLiteral("annotation"), integer(bar.annotation)},
            {QStringLiteral("projectName"), bar.projectName}};
}

QJsonObject productivityJson(const ReportContents& contents) {
    QJsonArray days;
    for (const auto& day : contents.dayScores) {
        days.append(
            with(durationFields(day.duration), {{QStringLiteral("date"), dateText(day.date)},
                                                {QStringLiteral("value"), integer(day.score)}}));
    }
    QJsonArray bars;
    for (const auto& bar : contents.productivityBars) {
        bars.append(barJson(bar));
    }
    return {{QStringLiteral("days"), days}, {QStringLiteral("bars"), bars}};
}

QJsonObject projectBarsJson(const ProjectBarChart& chart) {
    QJsonArray dataSet;
    for (const auto& bar : chart.dataSet) {
        dataSet.append(barJson(bar));
    }
    QJsonObject durationPerDay;
    for (auto it = chart.durationPerDay.begin(); it != chart.durationPerDay.end(); ++it) {
        durationPerDay.insert(it.key(), integer(it.value()));
    }
    return {{QStringLiteral("dataSet"), dataSet},
            {QStringLiteral("durationPerDay"), durationPerDay},
            {QStringLiteral("durationPeriodMaxHour"), integer(chart.durationPeriodMaxHour)}};
}

}  // namespace

QByteArray reportJson(const ReportContents& contents) {
    const QJsonObject range{{QStringLiteral("from"), dateText(contents.from)},
                            {QStringLiteral("to"), dateText(contents.to)},
                            {QStringLiteral("today"), dateText(contents.today)},
                            {QStringLiteral("days"), contents.days}};
    const QJsonObject report{
        {QStringLiteral("range"), range},
        {QStringLiteral("tree"), treeJson(contents.tree)},
        {QStringLiteral("applications"), usageJson(contents.applications)},
        {QStringLiteral("websites"), usageJson(contents.websites)},
        {QStringLiteral("tags"), usageJson(contents.tags)},
        {QStringLiteral("projects"), usageJson(contents.projects)},
        {QStringLiteral("productivity"), productivityJson(contents)},
        {QStringLiteral("projectBars"), projectBarsJson(contents.projectBars)}};
    return QJsonDocument(report).toJson(QJsonDocument::Indented);
}

}  // namespace kivo
