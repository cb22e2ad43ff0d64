#pragma once

#include <QDate>
#include <QHash>
#include <QIcon>
#include <QMainWindow>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <map>
#include <memory>

#include "gui/menu_items.h"
#include "gui/report_rows.h"
#include "model/live_activities.h"
#include "model/records.h"
#include "tree/project_tree_view_model.h"

QT_BEGIN_NAMESPACE
class QAction;
class QLabel;
class QLineEdit;
class QSplitter;
class QStackedWidget;
class QToolButton;
QT_END_NAMESPACE

namespace kivo {

class ActivityListView;
class ApplicationCatalog;
class ApplicationSettings;
class CaptureTimer;
class Clock;
class DatePickerWindow;
class EditorWindows;
class EmptyStateView;
class Productivity;
class ProductivityBarChartView;
class ProjectBarChartView;
class RecordStore;
class Recorder;
class ReportView;
class SidebarView;

// What the main window works with; the application owns all of it.
struct WindowServices {
    RecordStore& store;
    ApplicationSettings& settings;
    Productivity& productivity;
    Recorder& recorder;
    ApplicationCatalog& catalog;
    const Clock& clock;
};

// The rows selected in the report tables, for the activity list to narrow to.
struct DetailSelections {
    QStringList applicationSelections;  // bundle ids
    QStringList websiteSelections;      // domains
    QStringList filterSelections;       // filter ids
    QStringList projectSelections;      // project ids
};

// The main window: the sidebar with the sections and the project tree, the toolbar that moves
// through days and pauses recording, and the detail area with the selected report. It owns the
// capture timer, so recording runs from its first appearance until paused or until Kivo ends,
// also while the window is closed.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(const WindowServices& services, QWidget* parent = nullptr);
    ~MainWindow() override;

    QDate minSelectedDate() const { return minSelectedDate_; }
    QDate maxSelectedDate() const { return maxSelectedDate_; }
    void setSelectedRange(QDate minDate, QDate maxDate);
    // Moves the range by whole days; the forward button stops at today.
    void moveSelectedDays(int days);
    QDate today() const;

    bool isRecording() const;
    void startRecording();
    void stopRecording();

    // Every view recomputes from the store, with the open captures counted as if they ended now.
    void forceUpdate();

    MenuType menuSelection() const { return menuSelection_; }
    void selectSection(MenuType type);
    bool isShowingEmptyState() const;

    bool isCompactColumns() const { return isCompactColumns_; }
    void setIsCompactColumns(bool value);
    bool isDetailUnified() const { return isDetailUnified_; }
    // The activity list alone in the detail area instead of below the report; persisted.
    void setIsDetailUnified(bool value);
    void setSearchText(const QString& text);
    void setIsShowPieChart(bool value);

    void openDatePicker();
    DatePickerWindow* datePicker() const;

    ProjectTreeViewModel& treeModel() { return tree_; }
    // The project and filter editors and the tree's edit commands.
    EditorWindows& editors() const { return *editors_; }
    // Prepares the store, the tree and recording as the first appearance does, without showing
    // the window (Kivo started hidden, in the tray only).
    void appearHidden();
    SidebarView& sidebar() const { return *sidebar_; }
    ReportView& reportView(ReportKind kind) const;
    ActivityListView& activityList() const { return *activityList_; }
    QLineEdit& searchField() const { return *searchField_; }
    ProductivityBarChartView& productivityChart() const { return *productivityChart_; }
    const DetailSelections& detailSelections() const { return detailSelections_; }
    const QTimer& productivityTimer() const { return productivityTimer_; }
    // While the window is visible, it refreshes by itself on each timeout.
    const QTimer& liveRefreshTimer() const { return liveRefreshTimer_; }
    QToolButton& dayBackButton() const { return *dayBackButton_; }
    QToolButton& dayForwardButton() const { return *dayForwardButton_; }
    QToolButton& recordingSwitch() const { return *recordingSwitch_; }

Q_SIGNALS:
    // The first appearance has prepared the store, the tree and recording.
    void firstAppearanceFinished();
    // "Create a tag" from an activity row: a new tag, not yet stored, for the filter editor.
    void createFilterRequested(const kivo::Filter& prefilled);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildToolBar();
    void buildDetailArea();
    void firstAppearance();
    void fillApplicationIcons();
    void refreshVisibleSection();
    void refreshProductivity();
    // What recording would write if the open captures ended now.
    LiveActivities currentLiveActivities() const;
    void refreshWhileLive();
    void updateToolBar();
    void updateStatus();
    void applySidebarSelection(const std::vector<QUuid>& ids);
    void refreshActivityList();

    RecordStore& store_;
    ApplicationSettings& settings_;
    Productivity& productivity_;
    Recorder& recorder_;
    ApplicationCatalog& catalog_;
    const Clock& clock_;

    ProjectTreeViewModel tree_;
    // Declared after the tree: its open editors go before the tree they write to.
    std::unique_ptr<EditorWindows> editors_;
    CaptureTimer* captureTimer_ = nullptr;
    QTimer productivityTimer_;
    QTimer liveRefreshTimer_;
    // The open captures as every view last counted them.
    LiveActivities live_;
    QHash<QString, QIcon> appIcons_;
    DetailSelections detailSelections_;

    QDate minSelectedDate_;
    QDate maxSelectedDate_;
    MenuType menuSelection_ = MenuType::projects;
    bool isDetailUnified_ = false;
    bool isCompactColumns_ = false;
    bool isShowPieChart_ = true;
    bool hasAppeared_ = false;
    // Sections whose data predates the last change; they recompute when shown.
    bool isStatsStale_ = true;
    std::map<ReportKind, bool> isReportStale_;

    SidebarView* sidebar_ = nullptr;
    QStackedWidget* detailStack_ = nullptr;
    // The detail area: the selected report above; the activity list joins below it.
    QSplitter* detailSplitter_ = nullptr;
    std::map<ReportKind, ReportView*> reportViews_;
    QWidget* statsPage_ = nullptr;
    ProductivityBarChartView* productivityChart_ = nullptr;
    ProjectBarChartView* projectChart_ = nullptr;
    EmptyStateView* emptyState_ = nullptr;
    ActivityListView* activityList_ = nullptr;
    QString searchText_;

    QToolButton* dayBackButton_ = nullptr;
    QToolButton* dayForwardButton_ = nullptr;
    QToolButton* dateButton_ = nullptr;
    QToolButton* recordingSwitch_ = nullptr;
    QLineEdit* searchField_ = nullptr;
    QAction* pieChartAction_ = nullptr;
    QAction* compactColumnsAction_ = nullptr;
    QLabel* statusLabel_ = nullptr;
    QPointer<DatePickerWindow> datePicker_;
};

}  // namespace kivo
