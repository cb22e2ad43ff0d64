// The main window over a private store: first appearance, day navigation, recording, and the
// reports following the sidebar.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QTableView>
#include <QToolButton>

#include "capture/capture_timer.h"
#include "gui/report_chart_view.h"
#include "gui/report_table_model.h"
#include "gui/report_view.h"
#include "gui/stats_charts.h"
#include "gui/window_harness.h"

namespace kivo {
namespace {

using test::WindowHarness;

std::size_t count(const std::vector<Project>& projects, bool (*accept)(const Project&)) {
    return static_cast<std::size_t>(std::count_if(projects.begin(), projects.end(), accept));
}

QStringList tableNames(const ReportView& view) {
    QStringList names;
    const auto& model = view.tableModel();
    for (int row = 0; row < model.rowCount(); ++row) {
        names.append(model.index(row, 0).data().toString());
    }
    return names;
}

TEST(MainWindowTest, FirstAppearancePreparesStoreTreeAndRecordingOnce) {
    WindowHarness h;
    MainWindow& window = h.makeWindow();
    EXPECT_FALSE(window.isRecording());
    EXPECT_TRUE(window.treeModel().projects().empty());

    window.show();
    EXPECT_EQ(window.minSelectedDate(), WindowHarness::today);
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today);
    const auto projects = h.store->fetch<Project>(live());
    EXPECT_EQ(count(projects, [](const Project& p) { return p.isNameChangeOnly; }), 1u);
    EXPECT_EQ(window.treeModel().projects().size(), 4u);  // the samples and "Others"
    EXPECT_EQ(h.catalog.rescans, 1);
    EXPECT_TRUE(window.isRecording());
    EXPECT_TRUE(window.productivityTimer().isActive());
    EXPECT_EQ(window.productivityTimer().interval(), 300'000);
    EXPECT_EQ(window.menuSelection(), MenuType::projects);

    // The catalog was read before recording began: the editor in front is recorded.
    h.desktop.showEditor();
    h.recorder.captureTick();
    ASSERT_EQ(h.recorder.pendingCaptures().size(), 1u);

    // Hidden and shown again, the window prepares nothing anew; a new window on the same store
    // (the next start) creates no second unassigned project or filter.
    window.hide();
    window.show();
    EXPECT_EQ(h.catalog.rescans, 1);
    h.window.reset();
    h.showWindow();
    EXPECT_EQ(h.catalog.rescans, 2);
    const auto again = h.store->fetch<Project>(live());
    EXPECT_EQ(count(again, [](const Project& p) { return p.isNameChangeOnly; }), 1u);
    const auto filters = h.store->fetch<Filter>(live());
    EXPECT_EQ(std::count_if(filters.begin(), filters.end(),
                            [](const Filter& f) { return f.isNameChangeOnly; }),
              1);
}

TEST(MainWindowTest, DaysMoveBackAndForwardButNotPastToday) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    QToolButton& back = window.dayBackButton();
    QToolButton& forward = window.dayForwardButton();
    EXPECT_EQ(back.accessibleName(), QStringLiteral("DayBackButton"));
    EXPECT_EQ(forward.accessibleName(), QStringLiteral("DayForwardButton"));
    EXPECT_FALSE(forward.isEnabled());

    back.click();
    back.click();
    EXPECT_EQ(window.minSelectedDate(), WindowHarness::today.addDays(-2));
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today.addDays(-2));
    EXPECT_TRUE(forward.isEnabled());
    forward.click();
    forward.click();
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today);
    EXPECT_FALSE(forward.isEnabled());
    window.moveSelectedDays(1);
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today);

    // A range moves as a whole; one that would end after today is cut at today.
    window.setSelectedRange(WindowHarness::today.addDays(-9), WindowHarness::today.addDays(-3));
    back.click();
    EXPECT_EQ(window.minSelectedDate(), WindowHarness::today.addDays(-10));
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today.addDays(-4));
    window.setSelectedRange(WindowHarness::today.addDays(-1), WindowHarness::today.addDays(5));
    EXPECT_EQ(window.maxSelectedDate(), WindowHarness::today);
    EXPECT_FALSE(forward.isEnabled());
}

TEST(MainWindowTest, RecordingSwitchLeavesExactlyOneTimerWithTheSetInterval) {
    WindowHarness h;
    h.settings->setTimerInterval(5.0);
    MainWindow& window = h.showWindow();
    QToolButton& recordingSwitch = window.recordingSwitch();
    const auto timers = window.findChildren<CaptureTimer*>();
    ASSERT_EQ(timers.size(), 1);
    EXPECT_EQ(timers.front()->interval(), std::chrono::milliseconds(5'000));

    recordingSwitch.click();
    EXPECT_FALSE(window.isRecording());
    EXPECT_EQ(recordingSwitch.text(), QStringLiteral("Record"));
    recordingSwitch.click();
    EXPECT_TRUE(window.isRecording());
    EXPECT_EQ(recordingSwitch.text(), QStringLiteral("Pause"));
    window.startRecording();
    EXPECT_EQ(window.findChildren<CaptureTimer*>().size(), 1);
    EXPECT_TRUE(timers.front()->isRunning());
    // Pausing recording leaves the score's timer alone.
    recordingSwitch.click();
    EXPECT_TRUE(window.productivityTimer().isActive());
}

TEST(MainWindowTest, TreeSelectionDecidesWhatTheReportsCount) {
    WindowHarness h;
    const Instant noon = h.clock.now();
    h.records.tagUsage(h.s.code, 3600, noon);
    h.records.tagUsage(h.s.cook, 1800, noon);
    h.records.appUsage(h.s.code, test::editorId, 3600, noon, QStringLiteral("Text Editor"));
    h.records.appUsage(h.s.cook, QStringLiteral("org.example.Recipes"), 1800, noon);
    h.records.webUsage(h.s.code, QString(), 3600, noon);
    MainWindow& window = h.showWindow();
    const ReportView& projects = window.reportView(ReportKind::projects);
    EXPECT_EQ(tableNames(projects), (QStringList{u"Work"_qs, u"Home"_qs}));

    struct Case {
        const char* name;
        std::vector<QUuid> selected;
        QStringList projects;
        QStringList tags;
    };
    const Case cases[] = {
        {"one tag", {h.s.cook.id}, {u"Home"_qs}, {u"Cook"_qs}},
        {"a project", {h.s.work.id}, {u"Work"_qs}, {u"Code"_qs}},
        {"the root",
         {window.treeModel().roots().front().id},
         {u"Work"_qs, u"Home"_qs},
         {u"Code"_qs, u"Cook"_qs}},
        {"nothing", {}, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        h.selectInTree(c.selected);
        EXPECT_EQ(tableNames(projects), c.projects);
        window.selectSection(MenuType::tags);
        EXPECT_EQ(tableNames(window.reportView(ReportKind::tags)), c.tags);
        window.selectSection(MenuType::projects);
        EXPECT_EQ(projects.chart().isShowingEmptyText(), c.projects.isEmpty());
    }
    EXPECT_EQ(projects.chart().emptyText(), QStringLiteral("No chart data available."));

    // The applications report shows icons and names; the empty domain reads "(no website)".
    h.selectInTree({window.treeModel().roots().front().id});
    window.selectSection(MenuType::websites);
    EXPECT_EQ(tableNames(window.reportView(ReportKind::websites)),
              (QStringList{u"(no website)"_qs}));
    window.selectSection(MenuType::applications);
    const ReportView& applications = window.reportView(ReportKind::applications);
    EXPECT_EQ(tableNames(applications),
              (QStringList{u"Text Editor"_qs, u"org.example.Recipes"_qs}));

    // Selecting table rows hands their keys to the activity list.
    applications.table().selectRow(1);
    EXPECT_EQ(window.detailSelections().applicationSelections,
              (QStringList{u"org.example.Recipes"_qs}));
}

TEST(MainWindowTest, ArchivedToggleShowsArchivedProjectsAndCountsThem) {
    WindowHarness h;
    h.records.tagUsage(h.s.guitar, 600, h.clock.now());
    h.records.tagUsage(h.s.code, 60, h.clock.now());
    MainWindow& window = h.showWindow();
    auto& model = window.sidebar().treeModel();
    QToolButton& toggle = window.sidebar().archivedToggle();
    const auto shownProjects = [&] {
        QStringList names;
        for (int row = 0; row < model.rowCount(model.rootIndex()); ++row) {
            names.append(model.projectIndex(row).data().toString());
        }
        return names;
    };
    EXPECT_EQ(toggle.text(), QStringLiteral("Show Archived Project"));
    EXPECT_FALSE(shownProjects().contains(QStringLiteral("Hobby")));
    EXPECT_EQ(model.rootIndex().siblingAtColumn(1).data().toString(), QStringLiteral("1m"));

    toggle.click();
    EXPECT_EQ(toggle.text(), QStringLiteral("Hide Archived Project"));
    EXPECT_TRUE(shownProjects().contains(QStringLiteral("Hobby")));
    EXPECT_EQ(model.rootIndex().siblingAtColumn(1).data().toString(), QStringLiteral("11m"));
    EXPECT_TRUE(tableNames(window.reportView(ReportKind::projects)).contains(u"Hobby"_qs));

    toggle.click();
    EXPECT_FALSE(shownProjects().contains(QStringLiteral("Hobby")));
    EXPECT_FALSE(tableNames(window.reportView(ReportKind::projects)).contains(u"Hobby"_qs));
}

TEST(MainWindowTest, EmptyStateWhileNothingWasTrackedExceptInStats) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    EXPECT_TRUE(window.isShowingEmptyState());
    window.selectSection(MenuType::stats);
    EXPECT_FALSE(window.isShowingEmptyState());
    EXPECT_FALSE(window.productivityChart().isShowingEmptyText());

    h.records.tagUsage(h.s.code, 120, h.clock.now());
    h.records.save();
    window.selectSection(MenuType::projects);
    EXPECT_TRUE(window.isShowingEmptyState());  // not yet refreshed
    window.forceUpdate();
    EXPECT_FALSE(window.isShowingEmptyState());
}

// Shown as if they ended now, written only when they close, and never counted twice.
TEST(MainWindowTest, OpenCapturesShowByThemselvesAndAreWrittenOnlyWhenTheyClose) {
    WindowHarness h;
    const QString recipes = u"org.example.Recipes"_qs;
    h.records.appUsage(h.s.cook, recipes, 600, h.clock.now(), u"Recipes"_qs);
    h.records.tagUsage(h.s.cook, 600, h.clock.now());
    MainWindow& window = h.showWindow();
    window.stopRecording();  // the test drives the ticks on its own clock
    window.selectSection(MenuType::applications);
    ReportView& applications = window.reportView(ReportKind::applications);
    QAbstractItemModelTester tableTester(&applications.tableModel(),
                                         QAbstractItemModelTester::FailureReportingMode::Fatal);
    QAbstractItemModelTester treeTester(&window.sidebar().treeModel(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
    applications.table().sortByColumn(0, Qt::DescendingOrder);
    applications.table().selectRow(0);
    const auto editorSeconds = [&] {
        const auto& model = applications.tableModel();
        for (int row = 0; row < model.rowCount(); ++row) {
            if (model.index(row, 0).data(ReportTableModel::keyRole) == test::editorId) {
                return model.index(row, 0).data(ReportTableModel::durationRole).toLongLong();
            }
        }
        return qint64{0};
    };

    h.desktop.showEditor();
    h.recorder.captureTick();
    for (int second = 0; second < 30; ++second) {
        h.clock.advance(1);
        h.recorder.captureTick();
    }
    EXPECT_EQ(editorSeconds(), 0);  // until the window refreshes
    ASSERT_TRUE(window.liveRefreshTimer().isActive());
    EXPECT_LE(window.liveRefreshTimer().interval(), 5'000);
    QSignalSpy refreshed(&window.liveRefreshTimer(), &QTimer::timeout);
    ASSERT_TRUE(refreshed.wait(10'000));
    EXPECT_EQ(editorSeconds(), 30);
    EXPECT_EQ(window.treeModel().durationTotal(), 630);
    EXPECT_EQ(tableNames(applications), (QStringList{u"Text Editor"_qs, u"Recipes"_qs}));
    const auto selected = applications.table().selectionModel()->selectedRows();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected.front().data(ReportTableModel::keyRole).toString(), recipes);
    EXPECT_EQ(applications.table().horizontalHeader()->sortIndicatorSection(), 0);
    EXPECT_TRUE(h.store->fetch<Activity>(live()).empty());

    // Another window of the editor: past the gap the first capture closes and is written, while
    // the second is still open. Every second since the first tick is the editor's, once.
    h.desktop.showEditor(u"other.txt"_qs);
    for (int second = 0; second < 65; ++second) {
        h.clock.advance(1);
        h.recorder.captureTick();
    }
    EXPECT_EQ(h.store->fetch<Activity>(live()).size(), 1u);
    window.forceUpdate();
    EXPECT_EQ(editorSeconds(), 95);
    EXPECT_EQ(window.treeModel().durationTotal(), 695);
}

}  // namespace
}  // namespace kivo
