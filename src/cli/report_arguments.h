#pragma once

#include <QDate>
#include <QStringList>
#include <optional>

namespace kivo {

inline constexpr const char* reportUsage =
    "usage: kivo report [--from YYYY-MM-DD] [--to YYYY-MM-DD] [--days N] [--json]\n";

struct ReportArguments {
    QDate from;
    QDate to;
    int days = 7;  // the bar charts' days, ending today
    bool isJson = false;
    bool isHelp = false;
};

// The options after "report". Without dates the range is today; with --from alone it runs to
// today, with --to alone it is that one day. Nothing when an option is unknown, lacks its value,
// or has a value that is not a date or a day count, or when the range runs backwards.
std::optional<ReportArguments> parseReportArguments(const QStringList& options, QDate today);

}  // namespace kivo
