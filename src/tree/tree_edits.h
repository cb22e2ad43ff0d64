#pragma once

#include <QString>
#include <QUuid>
#include <optional>

#include "model/instant.h"
#include "model/records.h"

namespace kivo {

class ProjectTreeViewModel;
class RecordStore;

// The writes of the editors and of the tree's context menu: each changes the records in one
// batch and then the tree's nodes, matched by id, and saves the tree. A store failure is printed,
// rolled back and answered with nothing (or false); the tree is then left as it was.

// Finds a record by id among all records, deleted or not.
std::optional<Project> findProject(RecordStore& store, const QUuid& id);
std::optional<Filter> findFilter(RecordStore& store, const QUuid& id);

// A new project (no `target`) is inserted and appended to the tree; an existing one takes the
// name and archive flag, as does its node.
std::optional<QUuid> saveProject(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                 const std::optional<Project>& target, const QString& projectName,
                                 bool isArchived);

// `form` carries the thirteen edited values. A new filter (no `target`) gets a fresh id under
// `projectId` and a counted node at the end of its project; an existing one keeps its id and
// project and takes the values, and its node the name.
std::optional<QUuid> saveFilter(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                const std::optional<Filter>& target, const QUuid& projectId,
                                const Filter& form);

// Soft deletion: the record (for a project also its filters) is marked deleted and its node
// leaves the tree, so no report counts it; the recorded time stays in the store under its ids.
// The unassigned project and filter are never deleted.
bool deleteEntry(RecordStore& store, ProjectTreeViewModel& tree, Instant now, const QUuid& id);

// A copy named with " copy" and every rule, placed after the original; a project's copy gets
// copies of its live filters. Answers the copy's id.
std::optional<QUuid> duplicateEntry(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                    const QUuid& id);

// Whether `id` is the unassigned project or filter, which can only be renamed.
bool isNameChangeOnlyEntry(RecordStore& store, const QUuid& id);

}  // namespace kivo
