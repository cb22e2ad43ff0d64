// The window's smaller parts: the date picker, persisted toggles, the tree's expansion, the Stats
// charts, the help pages and the missing-backend warning.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>

#include "gui/date_picker_window.h"
#include "gui/help_pages.h"
#include "gui/missing_backend_dialog.h"
#include "gui/report_table_model.h"
#include "gui/report_view.h"
#include "gui/stats_charts.h"
#include "gui/window_harness.h"

namespace kivo {
namespace {

using test::WindowHarness;

TEST(WindowPartsTest, DatePickerHandsItsRangeBackUnlessCancelled) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    const QDate today = WindowHarness::today;

    window.openDatePicker();
    DatePickerWindow* picker = window.datePicker();
    ASSERT_NE(picker, nullptr);
    EXPECT_EQ(picker->windowTitle(), QStringLiteral("Date"));
    EXPECT_EQ(picker->size(), QSize(360, 220));
    // One end moved past the other takes the other along; nothing lies after today.
    picker->setRange(today.addDays(-3), today.addDays(-5));
    EXPECT_EQ(picker->from(), today.addDays(-5));
    picker->setRange(today.addDays(-10), today.addDays(3));
    EXPECT_EQ(picker->to(), today);
    picker->close();
    EXPECT_EQ(window.minSelectedDate(), today.addDays(-10));
    EXPECT_EQ(window.maxSelectedDate(), today);

    window.openDatePicker();
    window.datePicker()->setRange(today.addDays(-1), today.addDays(-1));
    for (auto* button : window.datePicker()->findChildren<QAbstractButton*>()) {
        if (button->accessibleName() == u"DateCancelButton") {
            button->click();
        }
    }
    EXPECT_EQ(window.minSelectedDate(), today.addDays(-10));
}

TEST(WindowPartsTest, CompactColumnsArePersistedAndReadByTheNextWindow) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    EXPECT_FALSE(window.isCompactColumns());
    window.setIsCompactColumns(true);
    EXPECT_TRUE(h.settings->isCompactColumns());
    EXPECT_TRUE(window.reportView(ReportKind::tags).tableModel().isCompactColumns());

    h.window.reset();
    EXPECT_TRUE(h.showWindow().isCompactColumns());
    EXPECT_TRUE(h.window->reportView(ReportKind::projects).tableModel().isCompactColumns());
}

TEST(WindowPartsTest, CollapsingAProjectIsRememberedInTheTree) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    auto& model = window.sidebar().treeModel();
    QTreeView& view = window.sidebar().treeView();
    const QModelIndex work = model.projectIndex(0);
    ASSERT_EQ(model.idOf(work), h.s.work.id);
    EXPECT_TRUE(view.isExpanded(work));

    view.collapse(work);
    EXPECT_FALSE(window.treeModel().projects().front().isExpanded);
    // A change of the tree's shape rebuilds the rows and keeps the project collapsed.
    window.treeModel().setIsShowArchivedProject(true);
    EXPECT_FALSE(view.isExpanded(model.projectIndex(0)));
    EXPECT_TRUE(view.isExpanded(model.projectIndex(1)));
}

TEST(WindowPartsTest, StatsChartsShowTheWeekOrTheEmptyText) {
    WindowHarness h;
    h.records.tagUsage(h.s.code, 7200, h.clock.now());
    MainWindow& window = h.showWindow();
    window.selectSection(MenuType::stats);
    EXPECT_FALSE(window.productivityChart().isShowingEmptyText());

    ProjectBarChartView projects;
    projects.refresh(*h.store, window.treeModel().reportSelection(), WindowHarness::today, {});
    EXPECT_FALSE(projects.findChild<ChartPanel*>()->isShowingEmptyText());
    QStringList pickers;
    for (const auto* button : projects.findChildren<QAbstractButton*>()) {
        pickers.append(button->text());
    }
    EXPECT_EQ(pickers, (QStringList{u"Projects"_qs, u"Percentage"_qs}));

    // With no project counted there is nothing to stack.
    ReportSelection nothing = window.treeModel().reportSelection();
    nothing.projects.clear();
    projects.refresh(*h.store, nothing, WindowHarness::today, {});
    EXPECT_TRUE(projects.findChild<ChartPanel*>()->isShowingEmptyText());
}

TEST(WindowPartsTest, EveryHelpPageIsShippedAndThePrivacyPageSaysWhereDataLives) {
    for (const auto page : {HelpPage::website, HelpPage::gettingStarted, HelpPage::releaseNotes,
                            HelpPage::contact, HelpPage::privacyPolicy}) {
        const QUrl url = helpPageUrl(page);
        ASSERT_TRUE(url.isLocalFile());
        EXPECT_TRUE(QFile::exists(url.toLocalFile())) << url.toString().toStdString();
    }
    QFile privacy(helpPageUrl(HelpPage::privacyPolicy).toLocalFile());
    ASSERT_TRUE(privacy.open(QIODevice::ReadOnly));
    const QByteArray text = privacy.readAll();
    EXPECT_TRUE(text.contains("~/.local/share/Kivo/kivo.sqlite"));
    EXPECT_TRUE(text.contains("~/.config/Kivo/Kivo.conf"));
    QFile gettingStarted(helpPageUrl(HelpPage::gettingStarted).toLocalFile());
    ASSERT_TRUE(gettingStarted.open(QIODevice::ReadOnly));
    EXPECT_TRUE(gettingStarted.readAll().contains("gnome-shell-extension-appindicator"));
}

TEST(WindowPartsTest, MissingBackendWarningSaysWhyAndOffersGettingStarted) {
    QMessageBox* box = showMissingBackendWarning(nullptr, u"no EWMH window manager"_qs);
    EXPECT_TRUE(box->informativeText().startsWith(u"No EWMH window manager."_qs));
    QStringList buttons;
    for (const auto* button : box->buttons()) {
        buttons.append(button->text().remove(u'&'));
    }
    EXPECT_TRUE(buttons.contains(u"Open Getting Started"_qs));
    EXPECT_TRUE(buttons.contains(u"Cancel"_qs));
    EXPECT_EQ(box->defaultButton()->text(), QStringLiteral("Open Getting Started"));
    box->close();
}

}  // namespace
}  // namespace kivo
