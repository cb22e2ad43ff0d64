#pragma once

#include <QDate>
#include <QString>
#include <QUuid>
#include <cstdint>
#include <vector>

namespace kivo {

class RecordStore;
struct LiveActivities;
struct ReportSelection;

// The four usage reports of the detail area.
enum class ReportKind { applications, websites, tags, projects };

// One report row as the tables and charts draw it, whatever the report's own row type.
struct ReportRow {
    QUuid id;
    // What the activity list narrows to when the row is selected: the bundle id, the domain, or
    // the filter or project id as text.
    QString key;
    QString name;     // application name, domain, tag, project
    QString project;  // the tag's project; empty in the other reports
    std::int64_t duration = 0;
};

struct ReportRows {
    std::vector<ReportRow> table;
    std::vector<ReportRow> chart;
    std::int64_t durationTotal = 1;
};

// Runs the report of `kind` for the days from `minDate` to `maxDate`, the live activities
// counted as if written.
ReportRows computeReportRows(ReportKind kind, RecordStore& store, const ReportSelection& selection,
                             QDate minDate, QDate maxDate, const LiveActivities& live);

// The name a row is shown with: an empty domain reads "(no website)".
QString shownName(ReportKind kind, const ReportRow& row);

}  // namespace kivo
