#include "gui/stats_charts.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QButtonGroup>
#include <QChart>
#include <QHBoxLayout>
#include <QLegend>
#include <QPercentBarSeries>
#include <QPushButton>
#include <QStackedBarSeries>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>

#include "gui/chart_style.h"
#include "reports/productivity_score.h"
#include "reports/project_bar_chart.h"
#include "tree/duration_label.h"

namespace kivo {

ProductivityBarChartView::ProductivityBarChartView(QWidget* parent) : ChartPanel(parent) {
    setObjectName(QStringLiteral("ProductivityBarChartView"));
    setAccessibleName(QStringLiteral("ProductivityBarChart"));
}

void ProductivityBarChartView::refresh(RecordStore& store, const ReportSelection& selection,
                                       QDate today, const LiveActivities& live) {
    const auto bars = productivityBars(store, selection, today, statsDaysAgo, live);
    std::vector<std::pair<QString, double>> shown;
    for (const auto& bar : bars) {
        shown.emplace_back(bar.name, bar.value);
    }
    if (shown == shownBars_) {
        return;
    }
    shownBars_ = std::move(shown);
    if (bars.empty()) {
        showEmptyText();
        return;
    }
    auto* chart = new QChart;
    styleChart(*chart);
    chart->setTitle(QStringLiteral("Productivity"));
    auto* set = new QBarSet(QStringLiteral("Productivity"));
    set->setColor(seriesColors().front());
    set->setBorderColor(seriesColors().front());
    QStringList days;
    double lowest = 0.0;
    for (const auto& bar : bars) {
        set->append(bar.value);
        days.append(bar.name);
        lowest = std::min(lowest, bar.value);
    }
    auto* series = new QBarSeries;
    series->append(set);
    series->setBarWidth(0.55);
    series->setLabelsVisible(true);
    series->setLabelsFormat(QStringLiteral("@value%"));
    series->setLabelsPosition(QAbstractBarSeries::LabelsInsideEnd);
    set->setLabelColor(Qt::white);
    chart->addSeries(series);
    auto* dayAxis = new QBarCategoryAxis;
    dayAxis->append(days);
    dayAxis->setGridLineVisible(false);
    chart->addAxis(dayAxis, Qt::AlignBottom);
    series->attachAxis(dayAxis);
    auto* scoreAxis = new QValueAxis;
    scoreAxis->setRange(lowest, 110.0);
    scoreAxis->setLabelFormat(QStringLiteral("%d%%"));
    scoreAxis->setTickCount(lowest < 0.0 ? 7 : 6);
    scoreAxis->setVisible(false);
    chart->addAxis(scoreAxis, Qt::AlignLeft);
    series->attachAxis(scoreAxis);
    chart->legend()->hide();
    showChart(chart);
}

ProjectBarChartView::ProjectBarChartView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ProjectBarChartView"));
    setAccessibleName(QStringLiteral("ProjectBarChart"));
    auto* picker = new QHBoxLayout;
    picker->setSpacing(0);
    picker->addStretch();
    auto* group = new QButtonGroup(this);
    const auto addChoice = [&](const QString& text, const QString& name) {
        auto* button = new QPushButton(text);
        button->setAccessibleName(name);
        button->setCheckable(true);
        button->setAutoDefault(false);
        button->setMinimumWidth(96);
        // A segmented control: the chosen half stands out in the highlight colour.
        button->setStyleSheet(QStringLiteral(
            "QPushButton { border: 1px solid palette(mid); padding: 3px 12px; "
            "background: palette(button); color: palette(button-text); }"
            "QPushButton:checked { background: palette(highlight); "
            "color: palette(highlighted-text); border-color: palette(highlight); }"));
        group->addButton(button);
        picker->addWidget(button);
        return button;
    };
    projectsButton_ = addChoice(QStringLiteral("Projects"), QStringLiteral("ProjectsGraphButton"));
    percentageButton_ =
        addChoice(QStringLiteral("Percentage"), QStringLiteral("PercentageGraphButton"));
    projectsButton_->setChecked(true);
    picker->addStretch();
    connect(percentageButton_, &QAbstractButton::toggled, this,
            &ProjectBarChartView::setIsPercentageGraph);

    panel_ = new ChartPanel;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(picker);
    layout->addWidget(panel_, 1);
}

void ProjectBarChartView::setIsPercentageGraph(bool value) {
    if (value == isPercentageGraph_) {
        return;
    }
    isPercentageGraph_ = value;
    (value ? percentageButton_ : projectsButton_)->setChecked(true);
    redraw();
}

void ProjectBarChartView::refresh(RecordStore& store, const ReportSelection& selection, QDate today,
                                  const LiveActivities& live) {
    const auto chart = computeProjectBarChart(store, selection, today, statsDaysAgo, live);
    std::vector<Segment> segments;
    std::vector<std::pair<QString, std::int64_t>> dayTotals;
    for (const auto& bar : chart.dataSet) {
        segments.push_back({bar.name, bar.projectName, bar.value});
        if (dayTotals.empty() || dayTotals.back().first != bar.name) {
            dayTotals.emplace_back(bar.name, 0);
        }
        dayTotals.back().second += bar.annotation;
    }
    if (isDrawn_ && segments == segments_ && dayTotals == dayTotals_) {
        return;
    }
    isDrawn_ = true;
    segments_ = std::move(segments);
    dayTotals_ = std::move(dayTotals);
    redraw();
}

void ProjectBarChartView::redraw() {
    if (segments_.empty()) {
        panel_->showEmptyText();
        return;
    }
    auto* chart = new QChart;
    styleChart(*chart);
    chart->setTitle(isPercentageGraph_ ? QStringLiteral("Share of each day")
                                       : QStringLiteral("Hours per day"));
    // One set per project, in the order the projects first appear; one value per day.
    std::vector<QBarSet*> sets;
    QStringList projects;
    for (const auto& segment : segments_) {
        if (!projects.contains(segment.project)) {
            projects.append(segment.project);
            auto* set = new QBarSet(segment.project);
            const auto& colors = seriesColors();
            set->setColor(colors[static_cast<int>(sets.size()) % colors.size()]);
            set->setBorderColor(set->color());
            sets.push_back(set);
        }
    }
    std::vector<std::vector<double>> values(sets.size(),
                                            std::vector<double>(dayTotals_.size(), 0.0));
    for (const auto& segment : segments_) {
        const auto day = std::find_if(dayTotals_.begin(), dayTotals_.end(), [&](const auto& entry) {
            return entry.first == segment.day;
        });
        values[static_cast<std::size_t>(projects.indexOf(segment.project))]
              [static_cast<std::size_t>(day - dayTotals_.begin())] += segment.hours;
    }
    QAbstractBarSeries* series = isPercentageGraph_
                                     ? static_cast<QAbstractBarSeries*>(new QPercentBarSeries)
                                     : static_cast<QAbstractBarSeries*>(new QStackedBarSeries);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        for (const double value : values[i]) {
            sets[i]->append(value);
        }
        series->append(sets[i]);
    }
    series->setBarWidth(0.55);
    chart->addSeries(series);
    QStringList days;
    double largest = 0.0;
    for (const auto& [day, total] : dayTotals_) {
        const QString label = formatDurationLabel(total).trimmed();
        days.append(label.isEmpty() ? day
                                    : QStringLiteral("<center>%1<br>%2</center>").arg(day, label));
        largest = std::max(largest, static_cast<double>(total) / 3600.0);
    }
    auto* dayAxis = new QBarCategoryAxis;
    dayAxis->append(days);
    dayAxis->setGridLineVisible(false);
    chart->addAxis(dayAxis, Qt::AlignBottom);
    series->attachAxis(dayAxis);
    auto* valueAxis = new QValueAxis;
    if (isPercentageGraph_) {
        valueAxis->setRange(0.0, 100.0);
        valueAxis->setLabelFormat(QStringLiteral("%d%%"));
    } else {
        valueAxis->setRange(0.0, std::max(1.0, largest));
        valueAxis->setTickCount(5);
        valueAxis->applyNiceNumbers();
        valueAxis->setLabelFormat(QStringLiteral("%g h"));
    }
    chart->addAxis(valueAxis, Qt::AlignLeft);
    series->attachAxis(valueAxis);
    chart->legend()->setAlignment(Qt::AlignBottom);
    panel_->showChart(chart);
}

}  // namespace kivo
