#pragma once

#include <QDate>
#include <QHash>
#include <QIcon>
#include <QStringList>
#include <QWidget>

#include "gui/report_rows.h"

QT_BEGIN_NAMESPACE
class QLabel;
class QSplitter;
class QTableView;
QT_END_NAMESPACE

namespace kivo {

class RecordStore;
class ReportChartView;
struct LiveActivities;
class ReportTableModel;
struct ReportSelection;

// One usage report of the detail area: its table beside its chart.
class ReportView : public QWidget {
    Q_OBJECT

public:
    ReportView(ReportKind kind, const QHash<QString, QIcon>& icons, QWidget* parent = nullptr);

    void refresh(RecordStore& store, const ReportSelection& selection, QDate minDate, QDate maxDate,
                 const LiveActivities& live);
    void setIsShowPieChart(bool value);
    void setIsCompactColumns(bool value);

    ReportTableModel& tableModel() const { return *model_; }
    QTableView& table() const { return *table_; }
    ReportChartView& chart() const { return *chart_; }

Q_SIGNALS:
    // The keys of the selected rows (bundle ids, domains, filter or project ids), for the
    // activity list to narrow to.
    void selectionKeysChanged(const QStringList& keys);

protected:
    // Table beside chart where there is room, the chart below the table where there is not.
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyColumnLayout();
    void emitSelectionKeys();

    ReportKind kind_;
    ReportTableModel* model_ = nullptr;
    QTableView* table_ = nullptr;
    ReportChartView* chart_ = nullptr;
    QSplitter* splitter_ = nullptr;
    bool isSplitPlaced_ = false;
    QLabel* totalLabel_ = nullptr;
    ReportRows rows_;
    bool isChartDrawn_ = false;
    bool isShowPieChart_ = true;
};

}  // namespace kivo
