#include "gui/activity_list_view.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

#include "capture/daily_totals.h"
#include "gui/activity_list_model.h"
#include "gui/activity_lister.h"
#include "gui/rule_preview_dialog.h"
#include "gui/window_harness.h"
#include "model/application_settings.h"

namespace kivo {
namespace {

ActivityGroup group(const QString& title, std::int64_t duration, int entries) {
    ActivityGroup made{u"Editor"_qs, u"editor"_qs, title, {}, {}, {}, {}, duration, {}};
    for (int entry = 0; entry < entries; ++entry) {
        made.entries.push_back({QUuid::createUuid(), fromEpochSeconds(entry * 100.0),
                                fromEpochSeconds(entry * 100.0 + 50), 50});
    }
    return made;
}

TEST(ActivityListModel, PassesTheModelTesterWithAndWithoutEntries) {
    ActivityListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setGroups({group(u"a"_qs, 150, 3), group(u"b"_qs, 50, 1)});
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
    model.setIsShowTimeEntries(true);
    const QModelIndex first = model.index(0, 0);
    ASSERT_EQ(model.rowCount(first), 3);
    const QModelIndex entry = model.index(2, ActivityListModel::durationColumn, first);
    EXPECT_EQ(entry.parent(), first);
    EXPECT_EQ(entry.data().toString(), u"0:00:50"_qs);
    EXPECT_EQ(model.groupAt(entry), &model.groups()[0]);
    EXPECT_EQ(model.index(0, ActivityListModel::entriesColumn).data().toInt(), 3);
    EXPECT_EQ(entry.data(ActivityListModel::activityIdsRole).value<QList<QUuid>>(),
              QList<QUuid>{model.groups()[0].entries[2].id});
    model.setGroups({group(u"c"_qs, 10, 2)});
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 2);
}

struct ActivityWindow : test::WindowHarness {
    void record(const Filter& filter, const QString& title, std::int64_t duration, int hour) {
        auto activity = newRecord<Activity>(clock.now());
        activity.projectId = filter.projectId;
        activity.filterId = filter.id;
        activity.appName = u"Text Editor"_qs;
        activity.appBundleId = test::editorId;
        activity.title = title;
        activity.duration = duration;
        activity.startAt = test::localMoment(today, hour);
        activity.endAt = activity.startAt + Seconds(duration);
        store->insert(activity);
        addToDailyTotals(*store, activity, clock.now());
    }

    QStringList rows() {
        waitForActivityList();
        QStringList shown;
        auto& model = window->activityList().model();
        for (int row = 0; row < model.rowCount(); ++row) {
            shown << model.index(row, ActivityListModel::titleColumn).data().toString() + u" "_qs +
                         model.index(row, ActivityListModel::tagColumn).data().toString();
        }
        return shown;
    }

    void selectRow(int row) {
        QTreeView& list = window->activityList().list();
        list.selectionModel()->select(
            list.model()->index(row, 0),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
};

std::int64_t mailDuration(MainWindow& window) {
    for (const auto& project : window.treeModel().projects()) {
        for (const auto& filter : project.filters) {
            if (filter.name == u"Mail"_qs) {
                return filter.duration;
            }
        }
    }
    return -1;
}

TEST(ActivityListView, AssignsDeletesAndSearchesWhileTheTreeFollows) {
    ActivityWindow h;
    h.record(h.s.code, u"main.cpp"_qs, 1200, 9);
    h.record(h.s.code, u"notes.txt"_qs, 600, 10);
    h.record(h.s.mail, u"inbox"_qs, 300, 11);
    MainWindow& window = h.showWindow();
    h.selectInTree({h.s.code.id, h.s.mail.id});
    EXPECT_EQ(h.rows(), (QStringList{u"main.cpp Code"_qs, u"notes.txt Code"_qs, u"inbox Mail"_qs}));
    EXPECT_FALSE(window.findChild<QToolButton*>(u"ActivityAssignButton"_qs)->isEnabled());

    h.selectRow(1);
    EXPECT_TRUE(window.findChild<QToolButton*>(u"ActivityDeleteButton"_qs)->isEnabled());
    window.activityList().assignSelected(h.s.mail.projectId, h.s.mail.id);
    EXPECT_EQ(h.rows(), (QStringList{u"main.cpp Code"_qs, u"notes.txt Mail"_qs, u"inbox Mail"_qs}));
    EXPECT_EQ(mailDuration(window), 900);
    window.activityList().list().selectionModel()->clearSelection();

    h.selectRow(0);
    window.activityList().deleteSelected();
    EXPECT_EQ(h.rows(), (QStringList{u"notes.txt Mail"_qs, u"inbox Mail"_qs}));
    EXPECT_EQ(window.treeModel().durationTotal(), 900);

    window.searchField().setText(u"NOTES"_qs);
    EXPECT_EQ(h.rows(), (QStringList{u"notes.txt Mail"_qs}));

    QSignalSpy requested(&window, &MainWindow::createFilterRequested);
    h.selectRow(0);
    window.activityList().createFilterFromSelected();
    ASSERT_EQ(requested.size(), 1);
    const auto prefilled = requested.front().front().value<Filter>();
    EXPECT_EQ(prefilled.appBundleId, test::editorId);
    EXPECT_EQ(prefilled.matchExpressionOfTitle, u"notes.txt"_qs);
}

TEST(ActivityListView, UnifiedDetailShowsTheListAloneAndIsRemembered) {
    ActivityWindow h;
    h.record(h.s.code, u"main.cpp"_qs, 1200, 9);
    MainWindow& window = h.showWindow();
    auto* stack = window.findChild<QStackedWidget*>(u"DetailArea"_qs);
    ASSERT_NE(stack, nullptr);
    EXPECT_TRUE(stack->isVisible());
    window.findChild<QToolButton*>(u"isDetailUnified"_qs)->click();
    EXPECT_TRUE(window.isDetailUnified());
    EXPECT_FALSE(stack->isVisible());
    EXPECT_TRUE(window.activityList().isVisible());
    EXPECT_TRUE(h.settings->isDetailUnified());

    window.findChild<QToolButton*>(u"isShowTimeEntries"_qs)->click();
    h.selectInTree({h.s.code.id});
    h.waitForActivityList();
    auto& model = window.activityList().model();
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 1);
}

TEST(ActivityListView, SavedRulesOfferPastTimeOnlyWhenTheyAcceptSome) {
    ActivityWindow h;
    MainWindow& window = h.showWindow();  // its first appearance makes the unassigned pair
    const auto filters = h.store->fetch<Filter>(live());
    const auto unassigned = std::find_if(filters.begin(), filters.end(), [](const Filter& f) {
        return f.tagName == u"Unassigned"_qs;
    });
    ASSERT_NE(unassigned, filters.end());
    h.record(*unassigned, u"report.odt"_qs, 600, 9);
    auto docs = newRecord<Filter>(h.clock.now());
    docs.projectId = h.s.code.projectId;
    docs.tagName = u"Docs"_qs;
    docs.appBundleId = test::editorId;
    docs.matchExpressionOfTitle = u"report"_qs;
    h.store->insert(docs);
    h.store->save();

    const auto dialogs = [&] { return window.findChildren<RulePreviewDialog*>().size(); };
    window.activityList().offerPastTime(h.s.mail.id);
    EXPECT_EQ(dialogs(), 0) << "a rule that accepts nothing asks nothing";
    window.activityList().offerPastTime(docs.id);
    ASSERT_EQ(dialogs(), 1);
    EXPECT_EQ(window.findChild<RulePreviewDialog*>()->preview().durationTotal, 600);
}

QStringList groupTitles(const ActivityListView& view) {
    QStringList titles;
    for (const ActivityGroup& group : view.model().groups()) {
        titles << group.title;
    }
    return titles;
}

// A list view of its own, without a window that might refresh it too.
struct LoneView : ActivityWindow {
    LoneView() {
        record(s.code, u"main.cpp"_qs, 1200, 9);
        record(s.mail, u"inbox"_qs, 300, 11);
        store->save();
        view = std::make_unique<ActivityListView>(*store, clock, icons);
    }

    ActivityListQuery only(const Filter& filter) const {
        ActivityListQuery query;
        query.minDate = today;
        query.maxDate = today;
        query.countedFilters = {filter.id};
        return query;
    }

    void waitForList() const {
        QSignalSpy listed(view.get(), &ActivityListView::listed);
        while (view->isListing()) {
            ASSERT_TRUE(listed.wait(30'000)) << "the activity list never came";
        }
    }

    QHash<QString, QIcon> icons;
    std::unique_ptr<ActivityListView> view;
};

TEST(ActivityListView, OnlyTheNewestRefreshIsShownAndOldRowsStayUntilItComes) {
    LoneView h;
    h.view->refresh(h.only(h.s.code), {});
    h.waitForList();
    ASSERT_EQ(groupTitles(*h.view), QStringList{u"main.cpp"_qs});

    QSignalSpy listed(h.view.get(), &ActivityListView::listed);
    for (int round = 0; round < 10; ++round) {
        h.view->refresh(h.only(h.s.code), {});
        h.view->refresh(h.only(h.s.mail), {});
        EXPECT_EQ(groupTitles(*h.view), QStringList{u"main.cpp"_qs}) << "round " << round;
    }
    EXPECT_TRUE(h.view->isListing());
    h.waitForList();
    EXPECT_EQ(listed.size(), 1) << "an overtaken refresh was shown";
    EXPECT_EQ(groupTitles(*h.view), QStringList{u"inbox"_qs});
    EXPECT_EQ(h.view->durationTotal(), 300);
}

// The window refreshes every few seconds: time entries the user folded away stay folded.
TEST(ActivityListView, ARefreshKeepsTheGroupsTheUserFolded) {
    LoneView h;
    h.view->setIsShowTimeEntries(true);
    h.view->refresh(h.only(h.s.code), {});
    h.waitForList();
    QTreeView& list = h.view->list();
    ASSERT_TRUE(list.isExpanded(list.model()->index(0, 0)));
    list.collapse(list.model()->index(0, 0));
    h.view->refresh(h.only(h.s.code), {});
    h.waitForList();
    EXPECT_FALSE(list.isExpanded(list.model()->index(0, 0)));
}

TEST(ActivityListView, ClosesSafelyWhileAListIsComputed) {
    LoneView h;
    for (int round = 0; round < 3; ++round) {
        h.view->refresh(h.only(h.s.code), {});
    }
    EXPECT_TRUE(h.view->isListing());
    h.view.reset();
    QCoreApplication::processEvents();  // an answer already on its way must find nobody
}

TEST(ActivityLister, AStoreThatCannotBeReadIsReportedInsteadOfListed) {
    QTemporaryDir folder;
    QString reason;
    int listings = 0;
    ActivityLister lister(
        folder.filePath(u"missing/kivo.sqlite"_qs), [&](ActivityList) { ++listings; },
        [&](const QString& why) { reason = why; });
    ActivityListQuery query;
    query.minDate = query.maxDate = QDate(2026, 3, 11);
    lister.request(query);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !lister.isListing(); }, 30'000));
    EXPECT_FALSE(reason.isEmpty());
    EXPECT_EQ(listings, 0);
}

}  // namespace
}  // namespace kivo
