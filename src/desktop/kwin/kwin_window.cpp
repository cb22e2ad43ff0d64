#include "desktop/kwin/kwin_window.h"

#include <cmath>
#include <limits>

namespace kivo {

namespace {

// A text field of the report; byte arrays (KWin's resource names) are read as UTF-8.
std::optional<QString> textOf(const QVariantMap& report, QLatin1String key) {
    const QVariant value = report.value(key);
    switch (value.typeId()) {
        case QMetaType::QString:
            return value.toString();
        case QMetaType::QByteArray:
            return QString::fromUtf8(value.toByteArray());
        default:
            return std::nullopt;
    }
}

std::int64_t processIdOf(const QVariantMap& report) {
    const QVariant value = report.value(QLatin1String("pid"));
    switch (value.typeId()) {
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
            break;
        default:
            return 0;
    }
    // JavaScript numbers arrive as doubles; anything that is no process id counts as none.
    const double number = value.toDouble();
    if (!std::isfinite(number) || number < 1.0 ||
        number > double(std::numeric_limits<std::int32_t>::max()) || number != std::floor(number)) {
        return 0;
    }
    return static_cast<std::int64_t>(number);
}

}  // namespace

std::optional<KWinWindow> kwinWindowFromReport(const QVariantMap& report) {
    auto caption = textOf(report, QLatin1String("caption"));
    if (!caption) {
        return std::nullopt;
    }
    return KWinWindow{*std::move(caption),
                      textOf(report, QLatin1String("resourceClass")).value_or(QString()),
                      textOf(report, QLatin1String("resourceName")).value_or(QString()),
                      textOf(report, QLatin1String("desktopFileName")).value_or(QString()),
                      processIdOf(report),
                      textOf(report, QLatin1String("internalId")).value_or(QString())};
}

}  // namespace kivo
