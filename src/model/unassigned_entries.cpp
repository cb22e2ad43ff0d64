#include "model/unassigned_entries.h"

#include <algorithm>

namespace kivo {

void ensureUnassignedEntries(RecordStore& store, Instant now) {
    const auto projects = store.fetch<Project>();
    const auto unassignedProject = std::find_if(
        projects.begin(), projects.end(),
        [](const Project& project) { return project.isNameChangeOnly && !project.isDeleted; });

    QUuid projectId;
    if (unassignedProject != projects.end()) {
        projectId = unassignedProject->id;
    } else {
        auto project = newRecord<Project>(now);
        project.projectName = QStringLiteral("Others");
        project.isNameChangeOnly = true;
        store.insert(project);
        projectId = project.id;
    }

    const auto filters = store.fetch<Filter>();
    const bool hasUnassignedFilter =
        std::any_of(filters.begin(), filters.end(),
                    [](const Filter& filter) { return filter.isNameChangeOnly; });
    if (!hasUnassignedFilter) {
        auto filter = newRecord<Filter>(now);
        filter.projectId = projectId;
        filter.tagName = QStringLiteral("Unassigned");
        filter.appName = QStringLiteral("various apps");
        filter.isNameChangeOnly = true;
        store.insert(filter);
    }
    store.save();
}

}  // namespace kivo
