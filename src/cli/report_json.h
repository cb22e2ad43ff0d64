#pragma once

#include <QByteArray>

namespace kivo {

struct ReportContents;

// One JSON object with "range", "tree", "applications", "websites", "tags", "projects",
// "productivity" and "projectBars". Durations are whole seconds; "label" is the duration as the
// sidebar shows it and "percentage" a row's share as its table shows it. Row and bar ids are
// left out: they are made afresh for every report.
QByteArray reportJson(const ReportContents& contents);

}  // namespace kivo
