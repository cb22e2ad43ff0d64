#include "gui/main_window.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QShowEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "capture/application_catalog.h"
#include "capture/capture_activities.h"
#include "capture/capture_timer.h"
#include "capture/recorder.h"
#include "desktop/xdg/application_icon.h"
#include "gui/activity_list_view.h"
#include "gui/date_picker_window.h"
#include "gui/editor_windows.h"
#include "gui/empty_state_view.h"
#include "gui/icons.h"
#include "gui/report_view.h"
#include "gui/secondary_window.h"
#include "gui/sidebar_view.h"
#include "gui/stats_charts.h"
#include "model/application_settings.h"
#include "model/local_day.h"
#include "model/unassigned_entries.h"
#include "reports/productivity.h"
#include "reports/productivity_score.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

constexpr auto productivityInterval = std::chrono::seconds(300);
// Often enough that the time of the open captures seems to run, seldom enough to cost nothing.
constexpr auto liveRefreshInterval = std::chrono::seconds(5);
// The earliest day the date picker offers.
const QDate firstSelectableDate(2000, 1, 1);

constexpr ReportKind reportKinds[] = {ReportKind::applications, ReportKind::websites,
                                      ReportKind::tags, ReportKind::projects};

ReportKind reportOf(MenuType type) {
    switch (type) {
        case MenuType::tags:
            return ReportKind::tags;
        case MenuType::applications:
            return ReportKind::applications;
        case MenuType::websites:
            return ReportKind::websites;
        default:
            return ReportKind::projects;
    }
}

QToolButton* toolButton(const QIcon& icon, const QString& text, const QString& name) {
    auto* button = new QToolButton;
    button->setIcon(icon);
    button->setText(text);
    button->setToolTip(text);
    button->setAccessibleName(name);
    button->setAutoRaise(true);
    return button;
}

QString rangeText(QDate minDate, QDate maxDate, QDate today) {
    const QLocale locale;
    const auto dayText = [&](QDate date) -> QString {
        return locale.toString(date, QStringLiteral("ddd ")) +
               date.toString(QStringLiteral("yyyy-MM-dd"));
    };
    if (minDate == maxDate) {
        return minDate == today ? QString(QStringLiteral("Today, ") + dayText(minDate))
                                : dayText(minDate);
    }
    return dayText(minDate) + QStringLiteral(" – ") + dayText(maxDate);
}

}  // namespace

MainWindow::MainWindow(const WindowServices& services, QWidget* parent)
    : QMainWindow(parent),
      store_(services.store),
      settings_(services.settings),
      productivity_(services.productivity),
      recorder_(services.recorder),
      catalog_(services.catalog),
      clock_(services.clock),
      tree_(services.store, services.settings, services.clock) {
    setObjectName(QStringLiteral("MainWindow"));
    setAccessibleName(QStringLiteral("MainWindow"));
    setWindowTitle(QStringLiteral("Kivo"));
    setWindowIcon(kivoIcon());
    resize(1100, 720);
    setMinimumSize(720, 480);
    minSelectedDate_ = maxSelectedDate_ = today();
    for (const ReportKind kind : reportKinds) {
        isReportStale_[kind] = true;
    }

    captureTimer_ = new CaptureTimer(recorder_, settings_, this);
    productivityTimer_.setInterval(productivityInterval);
    // Hidden, the window still keeps the tray's score current.
    connect(&productivityTimer_, &QTimer::timeout, this, [this] {
        live_ = currentLiveActivities();
        refreshProductivity();
    });
    liveRefreshTimer_.setInterval(liveRefreshInterval);
    connect(&liveRefreshTimer_, &QTimer::timeout, this, &MainWindow::refreshWhileLive);

    sidebar_ = new SidebarView(tree_);
    sidebar_->setMinimumWidth(200);
    connect(sidebar_, &SidebarView::sectionChanged, this, &MainWindow::selectSection);
    connect(sidebar_, &SidebarView::treeSelectionChanged, this, &MainWindow::applySidebarSelection);
    connect(&tree_, &ProjectTreeViewModel::forceUpdateRequested, this, &MainWindow::forceUpdate);
    editors_ =
        std::make_unique<EditorWindows>(EditorServices{store_, tree_, catalog_, clock_}, this);
    connect(sidebar_, &SidebarView::treeMenuRequested, editors_.get(),
            &EditorWindows::fillTreeMenu);
    connect(&productivity_, &Productivity::valueChanged, this, &MainWindow::updateStatus);
    connect(&productivity_, &Productivity::durationTodayChanged, this, &MainWindow::updateStatus);

    buildToolBar();
    buildDetailArea();
    // A tag made from an activity opens the editor prefilled; after any tag is saved, the past
    // unassigned time its rules now accept is offered.
    connect(this, &MainWindow::createFilterRequested, editors_.get(),
            [this](const Filter& prefilled) {
                editors_->openFilterEditor(prefilled.projectId, std::nullopt, prefilled);
            });
    connect(editors_.get(), &EditorWindows::filterSaved, activityList_,
            &ActivityListView::offerPastTime);

    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(sidebar_);
    splitter->addWidget(detailSplitter_);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({250, 850});
    setCentralWidget(splitter);

    statusLabel_ = new QLabel;
    statusLabel_->setAccessibleName(QStringLiteral("StatusText"));
    statusBar()->addWidget(statusLabel_);
    updateToolBar();
    updateStatus();
}

MainWindow::~MainWindow() = default;

void MainWindow::buildToolBar() {
    auto* bar = addToolBar(QStringLiteral("Toolbar"));
    bar->setObjectName(QStringLiteral("Toolbar"));
    bar->setAccessibleName(QStringLiteral("Toolbar"));
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setIconSize(QSize(20, 20));
    bar->toggleViewAction()->setEnabled(false);
    setContextMenuPolicy(Qt::NoContextMenu);

    auto* left = new QWidget;
    left->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(left);

    dayBackButton_ =
        toolButton(glyphIcon(QStringLiteral("go-previous"), QStringLiteral("go-previous")),
                   QStringLiteral("Previous Day"), QStringLiteral("DayBackButton"));
    connect(dayBackButton_, &QToolButton::clicked, this, [this] { moveSelectedDays(-1); });
    bar->addWidget(dayBackButton_);

    dateButton_ =
        toolButton(glyphIcon(QStringLiteral("x-office-calendar"), QStringLiteral("calendar")),
                   QStringLiteral("Date Selection"), QStringLiteral("Date Selection"));
    dateButton_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    dateButton_->setToolTip(QStringLiteral("Choose the days to show"));
    connect(dateButton_, &QToolButton::clicked, this, &MainWindow::openDatePicker);
    bar->addWidget(dateButton_);

    dayForwardButton_ = toolButton(glyphIcon(QStringLiteral("go-next"), QStringLiteral("go-next")),
                                   QStringLiteral("Next Day"), QStringLiteral("DayForwardButton"));
    connect(dayForwardButton_, &QToolButton::clicked, this, [this] { moveSelectedDays(1); });
    bar->addWidget(dayForwardButton_);

    auto* right = new QWidget;
    right->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(right);

    searchField_ = new QLineEdit;
    searchField_->setAccessibleName(QStringLiteral("SearchField"));
    searchField_->setPlaceholderText(QStringLiteral("Search titles and addresses"));
    searchField_->setClearButtonEnabled(true);
    searchField_->setMaximumWidth(220);
    connect(searchField_, &QLineEdit::textChanged, this, &MainWindow::setSearchText);
    bar->addWidget(searchField_);

    pieChartAction_ =
        bar->addAction(glyphIcon(QStringLiteral("office-chart-pie"), QStringLiteral("chart-pie")),
                       QStringLiteral("Pie Charts"));
    pieChartAction_->setCheckable(true);
    pieChartAction_->setChecked(isShowPieChart_);
    pieChartAction_->setToolTip(QStringLiteral("Show pie charts instead of bar charts"));
    connect(pieChartAction_, &QAction::toggled, this, &MainWindow::setIsShowPieChart);
    bar->widgetForAction(pieChartAction_)->setAccessibleName(QStringLiteral("PieChartToggle"));

    compactColumnsAction_ = bar->addAction(
        glyphIcon(QStringLiteral("view-list-details"), QStringLiteral("view-compact")),
        QStringLiteral("Compact Columns"));
    compactColumnsAction_->setCheckable(true);
    compactColumnsAction_->setToolTip(QStringLiteral("Narrow table columns"));
    connect(compactColumnsAction_, &QAction::toggled, this, &MainWindow::setIsCompactColumns);
    bar->widgetForAction(compactColumnsAction_)
        ->setAccessibleName(QStringLiteral("CompactColumnsToggle"));

    auto* refresh =
        bar->addAction(glyphIcon(QStringLiteral("view-refresh"), QStringLiteral("refresh")),
                       QStringLiteral("Refresh"));
    refresh->setShortcut(QKeySequence::Refresh);
    refresh->setToolTip(QStringLiteral("Refresh (F5)"));
    connect(refresh, &QAction::triggered, this, &MainWindow::forceUpdate);
    bar->widgetForAction(refresh)->setAccessibleName(QStringLiteral("RefreshButton"));

    bar->addSeparator();
    recordingSwitch_ = toolButton(QIcon(), QString(), QStringLiteral("RecordingSwitch"));
    recordingSwitch_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(recordingSwitch_, &QToolButton::clicked, this, [this] {
        if (isRecording()) {
            stopRecording();
        } else {
            startRecording();
        }
    });
    bar->addWidget(recordingSwitch_);
}

void MainWindow::buildDetailArea() {
    detailStack_ = new QStackedWidget;
    detailStack_->setObjectName(QStringLiteral("DetailArea"));
    detailStack_->setAccessibleName(QStringLiteral("DetailArea"));
    for (const ReportKind kind : reportKinds) {
        auto* view = new ReportView(kind, appIcons_);
        connect(view, &ReportView::selectionKeysChanged, this,
                [this, kind](const QStringList& keys) {
                    switch (kind) {
                        case ReportKind::applications:
                            detailSelections_.applicationSelections = keys;
                            break;
                        case ReportKind::websites:
                            detailSelections_.websiteSelections = keys;
                            break;
                        case ReportKind::tags:
                            detailSelections_.filterSelections = keys;
                            break;
                        case ReportKind::projects:
                            detailSelections_.projectSelections = keys;
                            break;
                    }
                    refreshActivityList();
                });
        reportViews_[kind] = view;
        detailStack_->addWidget(view);
    }

    statsPage_ = new QWidget;
    statsPage_->setObjectName(QStringLiteral("StatsView"));
    statsPage_->setAccessibleName(QStringLiteral("StatsView"));
    productivityChart_ = new ProductivityBarChartView;
    projectChart_ = new ProjectBarChartView;
    auto* statsLayout = new QVBoxLayout(statsPage_);
    statsLayout->setContentsMargins(0, 0, 0, 0);
    statsLayout->addWidget(productivityChart_, 2);
    statsLayout->addWidget(projectChart_, 3);
    detailStack_->addWidget(statsPage_);

    emptyState_ = new EmptyStateView;
    detailStack_->addWidget(emptyState_);

    detailSplitter_ = new QSplitter(Qt::Vertical);
    detailSplitter_->setChildrenCollapsible(false);
    detailSplitter_->addWidget(detailStack_);

    activityList_ = new ActivityListView(store_, clock_, appIcons_);
    connect(activityList_, &ActivityListView::activitiesChanged, this, &MainWindow::forceUpdate);
    connect(activityList_, &ActivityListView::createFilterRequested, this,
            &MainWindow::createFilterRequested);
    connect(activityList_, &ActivityListView::isDetailUnifiedToggled, this,
            &MainWindow::setIsDetailUnified);
    detailSplitter_->addWidget(activityList_);
    detailSplitter_->setStretchFactor(0, 1);
    detailSplitter_->setStretchFactor(1, 1);
    detailSplitter_->setSizes({360, 440});
}

void MainWindow::refreshActivityList() {
    if (!hasAppeared_) {
        return;
    }
    const ReportSelection selection = tree_.reportSelection();
    ActivityListQuery query;
    query.minDate = minSelectedDate_;
    query.maxDate = maxSelectedDate_;
    query.countedFilters =
        QSet<QUuid>(selection.enableFilters.begin(), selection.enableFilters.end());
    query.applicationSelections = detailSelections_.applicationSelections;
    query.websiteSelections = detailSelections_.websiteSelections;
    query.filterSelections = detailSelections_.filterSelections;
    query.projectSelections = detailSelections_.projectSelections;
    query.searchText = searchText_;
    query.minimumDuration = settings_.minimumDurationToDisplay();
    query.live = live_;
    activityList_->refresh(query, selection);
}

void MainWindow::setIsDetailUnified(bool value) {
    if (hasAppeared_ && value != isDetailUnified_) {
        settings_.setIsDetailUnified(value);
    }
    isDetailUnified_ = value;
    activityList_->setIsDetailUnified(value);
    detailStack_->setVisible(!value);
}

void MainWindow::setSearchText(const QString& text) {
    if (text == searchText_) {
        return;
    }
    searchText_ = text;
    if (searchField_->text() != text) {
        searchField_->setText(text);
    }
    refreshActivityList();
}

ReportView& MainWindow::reportView(ReportKind kind) const {
    return *reportViews_.at(kind);
}

QDate MainWindow::today() const {
    return localDateOf(clock_.now());
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!hasAppeared_) {
        firstAppearance();
    } else {
        forceUpdate();  // the time of the application left to open the window shows at once
    }
    liveRefreshTimer_.start();
}

void MainWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    liveRefreshTimer_.stop();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && hasAppeared_) {
        forceUpdate();
    }
}

void MainWindow::refreshWhileLive() {
    // Only today's time runs; past days change only through edits, which refresh themselves.
    if (maxSelectedDate_ >= today()) {
        forceUpdate();
    }
}

void MainWindow::appearHidden() {
    if (!hasAppeared_) {
        firstAppearance();
    }
}

void MainWindow::firstAppearance() {
    minSelectedDate_ = maxSelectedDate_ = today();
    ensureUnassignedEntries(store_, clock_.now());
    tree_.loadSavedTree();
    catalog_.rescan();
    recorder_.setInstalledApplications(catalog_.installedBundleIds());
    fillApplicationIcons();
    setIsDetailUnified(settings_.isDetailUnified());
    isCompactColumns_ = settings_.isCompactColumns();
    compactColumnsAction_->setChecked(isCompactColumns_);
    for (auto& [kind, view] : reportViews_) {
        view->setIsCompactColumns(isCompactColumns_);
    }
    startRecording();
    productivityTimer_.start();
    hasAppeared_ = true;
    sidebar_->selectSection(MenuType::projects);
    forceUpdate();
    Q_EMIT firstAppearanceFinished();
}

void MainWindow::fillApplicationIcons() {
    appIcons_.clear();
    for (const QString& bundleId : catalog_.installedBundleIds()) {
        if (!appIcons_.contains(bundleId)) {
            const QIcon icon = applicationIcon(catalog_, bundleId);
            if (!icon.isNull()) {
                appIcons_.insert(bundleId, icon);
            }
        }
    }
}

void MainWindow::setSelectedRange(QDate minDate, QDate maxDate) {
    const QDate last = std::min(std::max(minDate, maxDate), today());
    const QDate first = std::min(minDate, last);
    if (first == minSelectedDate_ && last == maxSelectedDate_) {
        return;
    }
    minSelectedDate_ = first;
    maxSelectedDate_ = last;
    updateToolBar();
    forceUpdate();
}

void MainWindow::moveSelectedDays(int days) {
    if (days > 0 && maxSelectedDate_ >= today()) {
        return;
    }
    setSelectedRange(minSelectedDate_.addDays(days), maxSelectedDate_.addDays(days));
}

bool MainWindow::isRecording() const {
    return captureTimer_->isRunning();
}

void MainWindow::startRecording() {
    captureTimer_->start();
    updateToolBar();
}

void MainWindow::stopRecording() {
    captureTimer_->stop();
    updateToolBar();
}

void MainWindow::forceUpdate() {
    if (!hasAppeared_) {
        return;  // the first appearance fills everything once it has prepared the tree
    }
    live_ = currentLiveActivities();
    tree_.recomputeTreeDurations(minSelectedDate_, maxSelectedDate_, live_);
    refreshProductivity();
    for (auto& [kind, stale] : isReportStale_) {
        stale = true;
    }
    isStatsStale_ = true;
    refreshVisibleSection();
    refreshActivityList();
    updateToolBar();
}

void MainWindow::refreshProductivity() {
    kivo::refreshProductivity(productivity_, store_, tree_.reportSelection(), today(), live_);
}

LiveActivities MainWindow::currentLiveActivities() const {
    const Instant now = clock_.now();
    return {activitiesOfEndedCaptures(recorder_.capturesEndedAt(now), store_, settings_, now,
                                      MatchBudget())};
}

void MainWindow::selectSection(MenuType type) {
    menuSelection_ = type;
    if (sidebar_->section() != type) {
        sidebar_->selectSection(type);
    }
    refreshVisibleSection();
}

bool MainWindow::isShowingEmptyState() const {
    return detailStack_->currentWidget() == emptyState_;
}

void MainWindow::refreshVisibleSection() {
    if (!hasAppeared_) {
        return;
    }
    if (menuSelection_ == MenuType::stats) {
        if (isStatsStale_) {
            const auto selection = tree_.reportSelection();
            productivityChart_->refresh(store_, selection, today(), live_);
            projectChart_->refresh(store_, selection, today(), live_);
            isStatsStale_ = false;
        }
        detailStack_->setCurrentWidget(statsPage_);
        return;
    }
    if (tree_.durationTotal() == 0) {
        detailStack_->setCurrentWidget(emptyState_);
        return;
    }
    const ReportKind kind = reportOf(menuSelection_);
    ReportView* view = reportViews_.at(kind);
    if (isReportStale_[kind]) {
        view->refresh(store_, tree_.reportSelection(), minSelectedDate_, maxSelectedDate_, live_);
        isReportStale_[kind] = false;
    }
    detailStack_->setCurrentWidget(view);
}

void MainWindow::applySidebarSelection(const std::vector<QUuid>& ids) {
    tree_.applySelection(ids);
    forceUpdate();
}

void MainWindow::setIsCompactColumns(bool value) {
    if (value == isCompactColumns_) {
        return;
    }
    isCompactColumns_ = value;
    settings_.setIsCompactColumns(value);
    compactColumnsAction_->setChecked(value);
    for (auto& [kind, view] : reportViews_) {
        view->setIsCompactColumns(value);
    }
}

void MainWindow::setIsShowPieChart(bool value) {
    if (value == isShowPieChart_) {
        return;
    }
    isShowPieChart_ = value;
    pieChartAction_->setChecked(value);
    for (auto& [kind, view] : reportViews_) {
        view->setIsShowPieChart(value);
    }
}

void MainWindow::openDatePicker() {
    if (datePicker_) {
        datePicker_->raise();
        datePicker_->activateWindow();
        return;
    }
    datePicker_ = new DatePickerWindow(firstSelectableDate, today(), minSelectedDate_,
                                       maxSelectedDate_, this);
    connect(datePicker_, &DatePickerWindow::rangeChosen, this, &MainWindow::setSelectedRange);
    placeAtPointer(*datePicker_);
    datePicker_->show();
}

DatePickerWindow* MainWindow::datePicker() const {
    return datePicker_;
}

void MainWindow::updateToolBar() {
    dayForwardButton_->setEnabled(maxSelectedDate_ < today());
    dateButton_->setText(rangeText(minSelectedDate_, maxSelectedDate_, today()));
    const bool recording = captureTimer_->isRunning();
    recordingSwitch_->setIcon(
        recording
            ? glyphIcon(QStringLiteral("media-playback-pause"), QStringLiteral("pause-circle"))
            : tintedGlyph(QStringLiteral("record-circle"), QColor(0xe0, 0x3a, 0x3a)));
    recordingSwitch_->setText(recording ? QStringLiteral("Pause") : QStringLiteral("Record"));
    recordingSwitch_->setToolTip(recording ? QStringLiteral("Pause recording")
                                           : QStringLiteral("Resume recording"));
    updateStatus();
}

void MainWindow::updateStatus() {
    if (statusLabel_ == nullptr) {
        return;
    }
    const QString state = captureTimer_->isRunning() ? QStringLiteral("Recording")
                                                     : QStringLiteral("Recording paused");
    const QString duration = productivity_.durationToday().trimmed();
    statusLabel_->setText(
        QStringLiteral("%1  ·  Today's score %2%%3")
            .arg(state)
            .arg(productivity_.value())
            .arg(duration.isEmpty() ? QString() : QStringLiteral(" over ") + duration));
}

}  // namespace kivo
