#pragma once

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTreeView>
#include <memory>

#include "capture/recorder.h"
#include "gui/activity_list_view.h"
#include "gui/main_window.h"
#include "gui/project_tree_item_model.h"
#include "gui/sidebar_view.h"
#include "reports/productivity.h"
#include "support/fake_desktop.h"
#include "tree/tree_harness.h"

namespace kivo::test {

// A main window over a private store with the sample projects, a fake desktop and a clock at
// noon of a fixed day. The window is made by makeWindow(), so that tests can add records first.
struct WindowHarness {
    WindowHarness() { catalog.entries = {{editorId, QStringLiteral("Text Editor"), {}}}; }

    MainWindow& makeWindow() {
        records.save();
        window = std::make_unique<MainWindow>(
            WindowServices{*store, *settings, productivity, recorder, catalog, clock});
        return *window;
    }
    MainWindow& showWindow() {
        makeWindow().show();
        return *window;
    }

    // Until the activity list shows what its newest refresh asked for.
    void waitForActivityList() {
        ActivityListView& view = window->activityList();
        QSignalSpy listed(&view, &ActivityListView::listed);
        while (view.isListing()) {
            if (!listed.wait(30'000)) {
                ADD_FAILURE() << "the activity list never came";
                return;
            }
        }
    }

    // Selects the tree rows of these ids (root, projects, tags) as a user's clicks would.
    void selectInTree(const std::vector<QUuid>& ids) {
        QTreeView& view = window->sidebar().treeView();
        auto& model = window->sidebar().treeModel();
        QItemSelection selection;
        const auto visit = [&](const QModelIndex& index, auto& self) -> void {
            if (std::find(ids.begin(), ids.end(), model.idOf(index)) != ids.end()) {
                selection.select(index, index.siblingAtColumn(1));
            }
            for (int row = 0; row < model.rowCount(index); ++row) {
                self(model.index(row, 0, index), self);
            }
        };
        visit(model.rootIndex(), visit);
        view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    }

    static inline const QDate today{2026, 3, 11};
    ScopedTimeZone zone{"Europe/Berlin"};
    ManualClock clock{localMoment(today, 12)};
    TempHome home;
    std::unique_ptr<RecordStore> store = home.openStore();
    std::unique_ptr<ApplicationSettings> settings = home.openSettings();
    RecordFixture records{*store, clock.now()};
    SampleProjects s{records};
    FakeDesktop desktop;
    FakeApplicationCatalog catalog;
    Productivity productivity;
    Recorder recorder{desktop.focus, desktop.tabs, *store, *settings, clock};
    std::unique_ptr<MainWindow> window;
};

}  // namespace kivo::test
