#include <gtest/gtest.h>

#include <QSignalSpy>

#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::ScopedTimeZone;
using test::TreeHarness;

// Work (Code, Mail), Hobby archived (Guitar), Admin (Taxes); built from the records as on a
// first start.
class ProjectTreeSelection : public testing::Test {
protected:
    ProjectTreeSelection() {
        work = h.records.project(QStringLiteral("Work"));
        hobby = h.records.project(QStringLiteral("Hobby"), true);
        admin = h.records.project(QStringLiteral("Admin"));
        code = h.records.filter(work, QStringLiteral("Code"));
        guitar = h.records.filter(hobby, QStringLiteral("Guitar"));
        mail = h.records.filter(work, QStringLiteral("Mail"));
        taxes = h.records.filter(admin, QStringLiteral("Taxes"));
        h.records.save();
        h.tree.buildTreeFromRecords();
    }

    std::vector<QUuid> ids(std::initializer_list<Filter> filters) {
        std::vector<QUuid> result;
        for (const auto& filter : filters) {
            result.push_back(filter.id);
        }
        return result;
    }

    ScopedTimeZone zone{"Europe/Berlin"};
    TreeHarness h{QDate(2026, 3, 10)};
    Project work, hobby, admin;
    Filter code, guitar, mail, taxes;
};

TEST_F(ProjectTreeSelection, FirstStartCountsEveryFilterOfTheShownProjects) {
    const auto& projects = h.tree.projects();
    ASSERT_EQ(projects.size(), 3u);
    for (const auto& project : projects) {
        EXPECT_TRUE(project.isExpanded);
        EXPECT_TRUE(project.isToggled);
    }
    EXPECT_TRUE(projects[1].isArchived);
    EXPECT_EQ(h.tree.enableFilters(), ids({code, mail, taxes}));
    EXPECT_EQ(h.tree.tagNames().size(), 3);
    EXPECT_EQ(h.tree.tagNames().value(mail.id), QStringLiteral("Mail"));
    EXPECT_FALSE(h.tree.tagNames().contains(guitar.id));
    EXPECT_EQ(h.tree.projectNames().value(hobby.id), QStringLiteral("Hobby"));
    EXPECT_EQ(h.tree.projectNames().size(), 3);
}

TEST_F(ProjectTreeSelection, RootCountsEverythingButHiddenArchivedProjects) {
    h.tree.applySelection({h.tree.roots().front().id});
    EXPECT_EQ(h.tree.enableFilters(), ids({code, mail, taxes}));

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(h.tree.enableFilters(), ids({code, mail, guitar, taxes}));
    EXPECT_EQ(h.tree.tagNames().value(guitar.id), QStringLiteral("Guitar"));

    h.tree.setIsShowArchivedProject(false);
    EXPECT_EQ(h.tree.enableFilters(), ids({code, mail, taxes}));
    EXPECT_EQ(h.tree.projectNames().value(hobby.id), QStringLiteral("Hobby"));
}

TEST_F(ProjectTreeSelection, ProjectAndFilterOfAnotherProjectAddUp) {
    auto projects = h.tree.projects();
    projects[0].isToggled = false;
    h.tree.setProjects(projects);

    h.tree.applySelection({taxes.id, work.id});
    EXPECT_EQ(h.tree.enableFilters(), ids({code, mail, taxes}));
    EXPECT_FALSE(h.tree.projects()[0].isToggled);

    h.tree.applySelection({mail.id});
    EXPECT_EQ(h.tree.enableFilters(), ids({mail}));
    EXPECT_EQ(h.tree.tagNames().keys(), QList<QUuid>{mail.id});
    EXPECT_TRUE(h.tree.projects()[2].isToggled);
}

TEST_F(ProjectTreeSelection, ArchivedFilterIsToggledButCountedOnlyWhileShown) {
    h.tree.applySelection({guitar.id, hobby.id});
    EXPECT_TRUE(h.tree.projects()[1].filters[0].isToggled);
    EXPECT_TRUE(h.tree.enableFilters().empty());

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(h.tree.enableFilters(), ids({guitar}));
}

TEST_F(ProjectTreeSelection, NothingOrUnknownSelectedCountsNothing) {
    h.tree.applySelection({});
    EXPECT_TRUE(h.tree.enableFilters().empty());
    EXPECT_TRUE(h.tree.tagNames().isEmpty());
    EXPECT_EQ(h.tree.projectNames().size(), 3);

    h.tree.applySelection({QUuid::createUuid()});
    EXPECT_TRUE(h.tree.enableFilters().empty());
    for (const auto& project : h.tree.projects()) {
        for (const auto& filter : project.filters) {
            EXPECT_FALSE(filter.isToggled);
        }
    }
}

TEST_F(ProjectTreeSelection, ShowingArchivedProjectsSavesAndAsksForARefresh) {
    QSignalSpy refresh(&h.tree, &ProjectTreeViewModel::forceUpdateRequested);
    EXPECT_FALSE(h.settings->savedProjectTree().has_value());

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(refresh.count(), 1);
    const auto saved = h.settings->savedProjectTree();
    ASSERT_TRUE(saved.has_value());
    EXPECT_EQ(decodeSavedTree(*saved), h.tree.projects());

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(refresh.count(), 1);
}

TEST_F(ProjectTreeSelection, SelectionAloneIsNotSaved) {
    h.tree.applySelection({code.id});
    EXPECT_FALSE(h.settings->savedProjectTree().has_value());
}

}  // namespace
}  // namespace kivo
