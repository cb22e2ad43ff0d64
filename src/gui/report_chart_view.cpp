#include "gui/report_chart_view.h"

#include <QBarCategoryAxis>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QHorizontalBarSeries>
#include <QLegend>
#include <QPieSeries>
#include <QPieSlice>
#include <QResizeEvent>
#include <QValueAxis>

#include "gui/chart_style.h"
#include "reports/percentage.h"

namespace kivo {

namespace {

constexpr int legendBesideWidth = 520;

QString chartName(ReportKind kind) {
    switch (kind) {
        case ReportKind::applications:
            return QStringLiteral("ApplicationChart");
        case ReportKind::websites:
            return QStringLiteral("WebsiteChart");
        case ReportKind::tags:
            return QStringLiteral("FilterChart");
        case ReportKind::projects:
            return QStringLiteral("ProjectChart");
    }
    return {};
}

// A chart label: the tag with its project, the others by name; the pool reads "Misc.".
QString chartLabel(ReportKind kind, const ReportRow& row) {
    if (kind == ReportKind::tags && !row.project.isEmpty() && row.project != row.name) {
        return QStringLiteral("%1 (%2)").arg(row.name, row.project);
    }
    return shownName(kind, row);
}

}  // namespace

ReportChartView::ReportChartView(ReportKind kind, QWidget* parent)
    : ChartPanel(parent), kind_(kind) {
    setObjectName(chartName(kind));
    setAccessibleName(chartName(kind));
}

void ReportChartView::setRows(const std::vector<ReportRow>& rows, std::int64_t durationTotal,
                              bool isPieChart) {
    if (rows.empty()) {
        showEmptyText();
    } else if (isPieChart) {
        showPie(rows, durationTotal);
    } else {
        showBars(rows);
    }
}

void ReportChartView::showPie(const std::vector<ReportRow>& rows, std::int64_t durationTotal) {
    auto* chart = new QChart;
    styleChart(*chart);
    auto* series = new QPieSeries;
    series->setHoleSize(0.45);
    series->setPieSize(0.85);
    const auto& colors = seriesColors();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ReportRow& row = rows[i];
        auto* slice =
            series->append(QStringLiteral("%1  %2").arg(
                               chartLabel(kind_, row), percentageText(row.duration, durationTotal)),
                           static_cast<double>(row.duration));
        slice->setColor(colors[static_cast<int>(i % static_cast<std::size_t>(colors.size()))]);
        // Thin gaps between slices; a single slice needs none.
        slice->setBorderColor(rows.size() > 1 ? chart->backgroundBrush().color() : slice->color());
    }
    chart->addSeries(series);
    chart->legend()->setShowToolTips(true);
    QFont legendFont = chart->legend()->font();
    legendFont.setPointSizeF(legendFont.pointSizeF() * 0.9);
    chart->legend()->setFont(legendFont);
    showChart(chart);
    placeLegend();
}

void ReportChartView::resizeEvent(QResizeEvent* event) {
    ChartPanel::resizeEvent(event);
    placeLegend();
}

void ReportChartView::placeLegend() {
    if (QChart* chart = chartView().chart(); chart != nullptr && chart->legend()->isVisible()) {
        chart->legend()->setAlignment(width() >= legendBesideWidth ? Qt::AlignRight
                                                                   : Qt::AlignBottom);
    }
}

void ReportChartView::showBars(const std::vector<ReportRow>& rows) {
    auto* chart = new QChart;
    styleChart(*chart);
    auto* set = new QBarSet(QStringLiteral("Hours"));
    set->setColor(seriesColors().front());
    set->setBorderColor(seriesColors().front());
    QStringList categories;
    double largest = 0.0;
    // Bars grow upwards from the first category: the largest row goes last to stand on top.
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        const double hours = static_cast<double>(row->duration) / 3600.0;
        set->append(hours);
        largest = std::max(largest, hours);
        QString label = chartLabel(kind_, *row);
        if (label.size() > 28) {
            label = label.left(27) + QChar(0x2026);
        }
        categories.append(label);
    }
    auto* series = new QHorizontalBarSeries;
    series->append(set);
    series->setBarWidth(0.6);
    chart->addSeries(series);
    auto* names = new QBarCategoryAxis;
    names->setGridLineVisible(false);
    names->append(categories);
    chart->addAxis(names, Qt::AlignLeft);
    series->attachAxis(names);
    auto* hours = new QValueAxis;
    hours->setRange(0.0, largest > 0.0 ? largest * 1.05 : 1.0);
    hours->setTickCount(5);
    hours->applyNiceNumbers();
    hours->setLabelFormat(QStringLiteral("%g h"));
    chart->addAxis(hours, Qt::AlignBottom);
    series->attachAxis(hours);
    chart->legend()->hide();
    showChart(chart);
}

}  // namespace kivo
