#pragma once

#include <QDate>
#include <QWidget>
#include <optional>
#include <utility>
#include <vector>

#include "gui/chart_panel.h"

QT_BEGIN_NAMESPACE
class QAbstractButton;
QT_END_NAMESPACE

namespace kivo {

class RecordStore;
struct LiveActivities;
struct ReportSelection;

// How many days the Stats charts show, today included.
inline constexpr int statsDaysAgo = 7;

// The score of each of the last days as bars, each captioned with its percentage.
class ProductivityBarChartView : public ChartPanel {
    Q_OBJECT

public:
    explicit ProductivityBarChartView(QWidget* parent = nullptr);
    // Draws anew only when a bar changed.
    void refresh(RecordStore& store, const ReportSelection& selection, QDate today,
                 const LiveActivities& live);

private:
    // Each bar's day and score as last drawn; none before the first refresh.
    std::optional<std::vector<std::pair<QString, double>>> shownBars_;
};

// The counted projects' hours of each of the last days as stacked bars with the day's total
// under each day, or each day's shares ("Percentage").
class ProjectBarChartView : public QWidget {
    Q_OBJECT

public:
    explicit ProjectBarChartView(QWidget* parent = nullptr);
    // Draws anew only when a segment or a day's total changed.
    void refresh(RecordStore& store, const ReportSelection& selection, QDate today,
                 const LiveActivities& live);

    void setIsPercentageGraph(bool value);

private:
    void redraw();

    ChartPanel* panel_ = nullptr;
    QAbstractButton* projectsButton_ = nullptr;
    QAbstractButton* percentageButton_ = nullptr;
    bool isPercentageGraph_ = false;
    // What the last refresh computed, so that the picker redraws without going to the store.
    struct Segment {
        QString day;
        QString project;
        double hours = 0.0;

        friend bool operator==(const Segment&, const Segment&) = default;
    };
    std::vector<Segment> segments_;
    std::vector<std::pair<QString, std::int64_t>> dayTotals_;
    bool isDrawn_ = false;
};

}  // namespace kivo
