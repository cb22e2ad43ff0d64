#include "cli/report_text.h"

#include <QSet>

#include "cli/report_contents.h"
#include "cli/report_text_table.h"
#include "reports/percentage.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

using Align = TextTable::Align;

constexpr QStringView indent = u"  ";
constexpr QStringView nestedIndent = u"    ";

QString timeText(std::int64_t seconds) {
    return formatDurationLabel(seconds).trimmed();
}

QString dateText(QDate date) {
    return date.toString(Qt::ISODate);
}

QString treeSection(const TreeSnapshot& tree) {
    const QSet<QUuid> counted(tree.enableFilters.begin(), tree.enableFilters.end());
    TextTable table({{QStringLiteral("Project / tag")},
                     {QStringLiteral("Time"), Align::Right},
                     {QStringLiteral("Seconds"), Align::Right},
                     {QStringLiteral("Counted")}});
    table.addRow(
        {tree.root.name, timeText(tree.durationTotal), QString::number(tree.durationTotal)});
    for (const auto& project : tree.projects) {
        const QString name = project.isArchived ? project.name + u" (archived)" : project.name;
        table.addRow(
            {indent + name, timeText(project.duration), QString::number(project.duration)});
        for (const auto& filter : project.filters) {
            table.addRow({nestedIndent + filter.name, timeText(filter.duration),
                          QString::number(filter.duration),
                          counted.contains(filter.id) ? QStringLiteral("yes") : QString()});
        }
    }
    return QStringLiteral("Projects and tags\n") + table.render(indent);
}

QStringList nameCells(const AppDisplayItem& row) {
    return {row.appName, row.appBundleId};
}
QStringList nameCells(const WebDisplayItem& row) {
    return {row.domainName};
}
QStringList nameCells(const TagDisplayItem& row) {
    return {row.tagName, row.projectName};
}
QStringList nameCells(const ProjectDisplayItem& row) {
    return {row.projectName};
}

template <class Row>
QString usageSection(const QString& title, const QStringList& nameHeaders,
                     const UsageReport<Row>& report) {
    const auto table = [&](const std::vector<Row>& rows) {
        std::vector<TextTable::Column> columns;
        for (const auto& header : nameHeaders) {
            columns.push_back({header});
        }
        columns.push_back({QStringLiteral("Time"), Align::Right});
        columns.push_back({QStringLiteral("Seconds"), Align::Right});
        columns.push_back({QStringLiteral("Share"), Align::Right});
        TextTable text(std::move(columns));
        for (const auto& row : rows) {
            text.addRow(nameCells(row) << timeText(row.duration) << QString::number(row.duration)
                                       << percentageText(row.duration, report.durationTotal));
        }
        return text.render(nestedIndent);
    };
    if (report.tableDataSet.empty()) {
        return title + u": nothing counted\n";
    }
    QString text = title + u": " + timeText(report.durationTotal) + u" (" +
                   QString::number(report.durationTotal) + u" s)\n" + indent + u"Table\n" +
                   table(report.tableDataSet) + indent + u"Chart\n";
    if (report.chartDataSet.empty()) {
        return text + nestedIndent + u"No chart data available.\n";
    }
    return text + table(report.chartDataSet);
}

QString productivitySection(const ReportContents& contents) {
    TextTable days({{QStringLiteral("Date")},
                    {QStringLiteral("Score"), Align::Right},
                    {QStringLiteral("Time"), Align::Right}});
    for (const auto& day : contents.dayScores) {
        days.addRow(
            {dateText(day.date), QString::number(day.score) + u'%', timeText(day.duration)});
    }
    TextTable bars({{QStringLiteral("Day")}, {QStringLiteral("Score"), Align::Right}});
    for (const auto& bar : contents.productivityBars) {
        bars.addRow({bar.name, QString::number(bar.annotation) + u'%'});
    }
    return QStringLiteral("Productivity\n") + days.render(indent) + u"\nProductivity, last " +
           QString::number(contents.days) + u" days\n" + bars.render(indent);
}

QString projectBarsSection(const ReportContents& contents) {
    TextTable table({{QStringLiteral("Day")},
                     {QStringLiteral("Project")},
                     {QStringLiteral("Hours"), Align::Right},
                     {QStringLiteral("Day total"), Align::Right}});
    for (const auto& bar : contents.projectBars.dataSet) {
        table.addRow({bar.name, bar.projectName, QString::number(bar.value, 'f', 2),
                      bar.annotation == 0 ? QString() : timeText(bar.annotation)});
    }
    return u"Projects, last " + QString::number(contents.days) + u" days (longest day " +
           QString::number(contents.projectBars.durationPeriodMaxHour) + u" h)\n" +
           table.render(indent);
}

}  // namespace

QString reportText(const ReportContents& contents) {
    QString text = u"Kivo report " + dateText(contents.from) + u" to " + dateText(contents.to) +
                   u" (today " + dateText(contents.today) + u")\n\n";
    text += treeSection(contents.tree) + u'\n';
    text += usageSection(QStringLiteral("Applications"),
                         {QStringLiteral("Application"), QStringLiteral("Bundle id")},
                         contents.applications) +
            u'\n';
    text +=
        usageSection(QStringLiteral("Websites"), {QStringLiteral("Domain")}, contents.websites) +
        u'\n';
    text += usageSection(QStringLiteral("Tags"), {QStringLiteral("Tag"), QStringLiteral("Project")},
                         contents.tags) +
            u'\n';
    text +=
        usageSection(QStringLiteral("Projects"), {QStringLiteral("Project")}, contents.projects) +
        u'\n';
    text += productivitySection(contents) + u'\n';
    text += projectBarsSection(contents);
    return text;
}

}  // namespace kivo
