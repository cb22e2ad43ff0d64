#pragma once

#include <QWidget>

QT_BEGIN_NAMESPACE
class QChart;
class QChartView;
class QLabel;
class QStackedLayout;
QT_END_NAMESPACE

namespace kivo {

// Where a chart is drawn: the chart, or the text "No chart data available." when there is none.
class ChartPanel : public QWidget {
    Q_OBJECT

public:
    explicit ChartPanel(QWidget* parent = nullptr);

    // Takes ownership of `chart` and shows it.
    void showChart(QChart* chart);
    void showEmptyText();

    bool isShowingEmptyText() const;
    QString emptyText() const;
    QChartView& chartView() const { return *chartView_; }

private:
    QStackedLayout* layout_ = nullptr;
    QChartView* chartView_ = nullptr;
    QLabel* emptyLabel_ = nullptr;
};

}  // namespace kivo
