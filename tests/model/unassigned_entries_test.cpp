#include "model/unassigned_entries.h"

#include <gtest/gtest.h>

#include "support/temp_home.h"

namespace kivo {
namespace {

const Instant now = fromEpochSeconds(1'700'000'000.0);

TEST(UnassignedEntries, CreatedOnceWhateverTheNumberOfStarts) {
    test::TempHome home;
    auto store = home.openStore();
    ensureUnassignedEntries(*store, now);
    ensureUnassignedEntries(*store, now);

    const auto projects = store->fetch<Project>();
    const auto filters = store->fetch<Filter>();
    ASSERT_EQ(projects.size(), 1u);
    ASSERT_EQ(filters.size(), 1u);
    EXPECT_EQ(projects[0].projectName, QStringLiteral("Others"));
    EXPECT_TRUE(projects[0].isNameChangeOnly);
    EXPECT_EQ(filters[0].tagName, QStringLiteral("Unassigned"));
    EXPECT_EQ(filters[0].appName, QStringLiteral("various apps"));
    EXPECT_TRUE(filters[0].appBundleId.isEmpty());
    EXPECT_TRUE(filters[0].isNameChangeOnly);
    EXPECT_EQ(filters[0].projectId, projects[0].id);
    EXPECT_FALSE(store->hasChanges());
}

TEST(UnassignedEntries, DeletedUnassignedProjectGetsASuccessorButTheFilterStays) {
    test::TempHome home;
    auto store = home.openStore();
    ensureUnassignedEntries(*store, now);
    auto project = store->fetch<Project>().front();
    project.isDeleted = true;
    store->update(project);
    store->save();

    ensureUnassignedEntries(*store, now);
    EXPECT_EQ(store->fetch<Project>(live()).size(), 1u);
    EXPECT_EQ(store->fetch<Project>().size(), 2u);
    EXPECT_EQ(store->fetch<Filter>().size(), 1u);
}

}  // namespace
}  // namespace kivo
