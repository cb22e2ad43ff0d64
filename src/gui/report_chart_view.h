#pragma once

#include "gui/chart_panel.h"
#include "gui/report_rows.h"

namespace kivo {

// A report's chart: one pie slice or one bar per chart row, or the text "No chart data
// available." when there is none.
class ReportChartView : public ChartPanel {
    Q_OBJECT

public:
    explicit ReportChartView(ReportKind kind, QWidget* parent = nullptr);

    void setRows(const std::vector<ReportRow>& rows, std::int64_t durationTotal, bool isPieChart);

protected:
    // The legend beside a pie where there is room, under it where there is not.
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeLegend();
    void showPie(const std::vector<ReportRow>& rows, std::int64_t durationTotal);
    void showBars(const std::vector<ReportRow>& rows);

    ReportKind kind_;
};

}  // namespace kivo
