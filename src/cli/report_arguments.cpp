#include "cli/report_arguments.h"

namespace kivo {

namespace {

// One query per charted day; ten years is more than any chart shows.
constexpr int maximumChartDays = 3660;

std::optional<QDate> parseDate(const QString& text) {
    const QDate date = QDate::fromString(text, u"yyyy-MM-dd");
    return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<int> parseDayCount(const QString& text) {
    bool isNumber = false;
    const int days = text.toInt(&isNumber);
    if (!isNumber || days < 0 || days > maximumChartDays || text.startsWith(u'+')) {
        return std::nullopt;
    }
    return days;
}

}  // namespace

std::optional<ReportArguments> parseReportArguments(const QStringList& options, QDate today) {
    ReportArguments arguments;
    std::optional<QDate> from;
    std::optional<QDate> to;
    for (qsizetype i = 0; i < options.size(); ++i) {
        const QString& option = options[i];
        if (option == u"--json") {
            arguments.isJson = true;
            continue;
        }
        if (option == u"--help" || option == u"-h") {
            arguments.isHelp = true;
            continue;
        }
        if (i + 1 >= options.size()) {
            return std::nullopt;
        }
        const QString& value = options[++i];
        if (option == u"--from") {
            from = parseDate(value);
            if (!from) {
                return std::nullopt;
            }
        } else if (option == u"--to") {
            to = parseDate(value);
            if (!to) {
                return std::nullopt;
            }
        } else if (option == u"--days") {
            const auto days = parseDayCount(value);
            if (!days) {
                return std::nullopt;
            }
            arguments.days = *days;
        } else {
            return std::nullopt;
        }
    }
    arguments.to = to.value_or(today);
    arguments.from = from.value_or(arguments.to);
    if (arguments.from > arguments.to) {
        return std::nullopt;
    }
    return arguments;
}

}  // namespace kivo
