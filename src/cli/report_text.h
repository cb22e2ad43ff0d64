#pragma once

#include <QString>

namespace kivo {

struct ReportContents;

// The report for a person at a terminal: the tree, the four reports with their charts, the
// day scores and the daily bars, each as a table of aligned columns.
QString reportText(const ReportContents& contents);

}  // namespace kivo
