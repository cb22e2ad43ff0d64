#pragma once

#include <memory>

#include "support/manual_clock.h"
#include "support/temp_home.h"
#include "tree/project_tree_view_model.h"
#include "tree/record_fixture.h"

namespace kivo::test {

// A private home with a store, a settings file, a clock standing at noon of `today` and a tree
// model over them.
struct TreeHarness {
    explicit TreeHarness(QDate today)
        : today(today),
          clock(localMoment(today, 12)),
          store(home.openStore()),
          settings(home.openSettings()),
          records(*store, clock.now()),
          tree(*store, *settings, clock) {}

    QDate today;
    TempHome home;
    ManualClock clock;
    std::unique_ptr<RecordStore> store;
    std::unique_ptr<ApplicationSettings> settings;
    RecordFixture records;
    ProjectTreeViewModel tree;
};

}  // namespace kivo::test
