#include "gui/chart_panel.h"

#include <QChart>
#include <QChartView>
#include <QLabel>
#include <QStackedLayout>

#include "gui/chart_style.h"

namespace kivo {

ChartPanel::ChartPanel(QWidget* parent) : QWidget(parent) {
    layout_ = new QStackedLayout(this);
    chartView_ = new QChartView(this);
    prepareChartView(*chartView_);
    emptyLabel_ = new QLabel(QStringLiteral("No chart data available."), this);
    emptyLabel_->setAlignment(Qt::AlignCenter);
    emptyLabel_->setForegroundRole(QPalette::PlaceholderText);
    emptyLabel_->setAccessibleName(QStringLiteral("ChartEmptyText"));
    layout_->addWidget(chartView_);
    layout_->addWidget(emptyLabel_);
    layout_->setCurrentWidget(emptyLabel_);
}

void ChartPanel::showChart(QChart* chart) {
    chartView_->setChart(chart);  // the view owns the chart and deletes the one before
    layout_->setCurrentWidget(chartView_);
}

void ChartPanel::showEmptyText() {
    layout_->setCurrentWidget(emptyLabel_);
}

bool ChartPanel::isShowingEmptyText() const {
    return layout_->currentWidget() == emptyLabel_;
}

QString ChartPanel::emptyText() const {
    return emptyLabel_->text();
}

}  // namespace kivo
