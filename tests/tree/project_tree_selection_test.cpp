#include <gtest/gtest.h>

#include <QSignalSpy>

#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

// Work (Code, Mail), Hobby archived (Guitar), Admin (Taxes), inserted interleaved; built from
// the records as on a first start.
class ProjectTreeSelection : public testing::Test {
protected:
    ProjectTreeSelection() {
        work = h.records.project(u"Work"_qs);
        hobby = h.records.project(u"Hobby"_qs, true);
        admin = h.records.project(u"Admin"_qs);
        code = h.records.filter(work, u"Code"_qs);
        guitar = h.records.filter(hobby, u"Guitar"_qs);
        mail = h.records.filter(work, u"Mail"_qs);
        taxes = h.records.filter(admin, u"Taxes"_qs);
        h.buildTree();
    }

    test::ScopedTimeZone zone{"Europe/Berlin"};
    test::TreeHarness h{QDate(2026, 3, 10)};
    Project work, hobby, admin;
    Filter code, guitar, mail, taxes;
};

using Ids = std::vector<QUuid>;

TEST_F(ProjectTreeSelection, FirstStartCountsEveryFilterOfTheShownProjects) {
    for (const auto& project : h.tree.projects()) {
        EXPECT_TRUE(project.isExpanded && project.isToggled);
    }
    EXPECT_EQ(h.tree.enableFilters(), (Ids{code.id, mail.id, taxes.id}));
    EXPECT_EQ(h.tree.tagNames().value(mail.id), u"Mail");
    EXPECT_FALSE(h.tree.tagNames().contains(guitar.id));
    EXPECT_EQ(h.tree.projectNames().value(hobby.id), u"Hobby");
}

TEST_F(ProjectTreeSelection, ArchivedFiltersCountOnlyWhileArchivedProjectsAreShown) {
    h.tree.applySelection({guitar.id});
    EXPECT_TRUE(h.tree.enableFilters().empty());
    h.tree.applySelection({h.tree.roots().front().id});
    EXPECT_EQ(h.tree.enableFilters(), (Ids{code.id, mail.id, taxes.id}));

    QSignalSpy refresh(&h.tree, &ProjectTreeViewModel::forceUpdateRequested);
    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(h.tree.enableFilters(), (Ids{code.id, mail.id, guitar.id, taxes.id}));
    EXPECT_EQ(h.tree.tagNames().value(guitar.id), u"Guitar");
    EXPECT_EQ(refresh.count(), 1);
    EXPECT_EQ(decodeSavedTree(h.settings->savedProjectTree().value()), h.tree.projects());
}

TEST_F(ProjectTreeSelection, ProjectAndFilterOfAnotherProjectAddUp) {
    auto projects = h.tree.projects();
    projects[0].isToggled = false;
    h.tree.setProjects(projects);
    h.tree.applySelection({taxes.id, work.id});
    EXPECT_EQ(h.tree.enableFilters(), (Ids{code.id, mail.id, taxes.id}));
    EXPECT_FALSE(h.tree.projects()[0].isToggled);
    EXPECT_FALSE(h.settings->savedProjectTree());  // a selection alone is not saved
}

TEST_F(ProjectTreeSelection, NothingOrUnknownSelectedCountsNothing) {
    for (const Ids& selection : {Ids{}, Ids{QUuid::createUuid()}}) {
        h.tree.applySelection(selection);
        EXPECT_TRUE(h.tree.enableFilters().empty());
        EXPECT_TRUE(h.tree.tagNames().isEmpty());
        EXPECT_EQ(h.tree.projectNames().size(), 3);
    }
}

}  // namespace
}  // namespace kivo
