#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>

namespace kivo {

// One bar, or one segment of a stacked bar, of a daily chart.
struct BarChartData {
    QUuid id;
    QString name;  // the day, "M/d"
    double value = 0.0;
    std::int64_t annotation = 0;
    QString projectName;
};

}  // namespace kivo
