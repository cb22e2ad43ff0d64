#include "tree/tree_edits.h"

#include <algorithm>

#include "model/diagnostics.h"
#include "model/record_store.h"
#include "tree/project_tree_view_model.h"

namespace kivo {

namespace {

template <class Record>
std::optional<Record> findRecord(RecordStore& store, const QUuid& id) {
    auto records = store.fetch<Record>(Query{"id = ?", {id}, {}});
    if (records.empty()) {
        return std::nullopt;
    }
    return std::move(records.front());
}

// Runs `write` as one batch; a failure is printed and rolled back.
template <class Write>
bool inOneBatch(RecordStore& store, Write&& write) {
    try {
        write();
        store.save();
        return true;
    } catch (const StoreError& error) {
        store.rollback();
        printDiagnostic(QStringLiteral("Could not save: ") + QString::fromUtf8(error.what()));
        return false;
    }
}

FilterTreeItem nodeOf(const Filter& filter) {
    return FilterTreeItem{filter.id, filter.tagName, 0, true};
}

void copyRules(Filter& to, const Filter& from) {
    to.tagName = from.tagName;
    to.appName = from.appName;
    to.appBundleId = from.appBundleId;
    to.matchExpressionOfTitle = from.matchExpressionOfTitle;
    to.isTitleRegexOn = from.isTitleRegexOn;
    to.matchExpressionOfUrl = from.matchExpressionOfUrl;
    to.isUrlRegexOn = from.isUrlRegexOn;
    to.logicalOperator = from.logicalOperator;
    to.rating = from.rating;
    to.isPreprocessTitleOn = from.isPreprocessTitleOn;
    to.regexOfPreprocessTitle = from.regexOfPreprocessTitle;
    to.isPreprocessUrlOn = from.isPreprocessUrlOn;
    to.regexOfPreprocessUrl = from.regexOfPreprocessUrl;
}

QString copyName(const QString& name) {
    return name + QStringLiteral(" copy");
}

}  // namespace

std::optional<Project> findProject(RecordStore& store, const QUuid& id) {
    return findRecord<Project>(store, id);
}

std::optional<Filter> findFilter(RecordStore& store, const QUuid& id) {
    return findRecord<Filter>(store, id);
}

bool isNameChangeOnlyEntry(RecordStore& store, const QUuid& id) {
    if (const auto project = findProject(store, id)) {
        return project->isNameChangeOnly;
    }
    const auto filter = findFilter(store, id);
    return filter && filter->isNameChangeOnly;
}

std::optional<QUuid> saveProject(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                 const std::optional<Project>& target, const QString& projectName,
                                 bool isArchived) {
    Project project = target ? *target : newRecord<Project>(now);
    project.projectName = projectName;
    project.isArchived = isArchived;
    project.updatedAt = now;
    const bool saved = inOneBatch(store, [&] {
        if (target) {
            store.update(project);
        } else {
            store.insert(project);
        }
    });
    if (!saved) {
        return std::nullopt;
    }
    auto projects = tree.projects();
    if (target) {
        for (auto& node : projects) {
            if (node.id == project.id) {
                node.name = projectName;
                node.isArchived = isArchived;
            }
        }
    } else {
        projects.push_back(ProjectTreeItem{project.id, projectName, 0, true, isArchived, true, {}});
    }
    tree.setProjects(std::move(projects));
    tree.saveTree();
    return project.id;
}

std::optional<QUuid> saveFilter(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                const std::optional<Filter>& target, const QUuid& projectId,
                                const Filter& form) {
    Filter filter = target ? *target : newRecord<Filter>(now);
    if (!target) {
        filter.projectId = projectId;
    }
    copyRules(filter, form);
    filter.updatedAt = now;
    const bool saved = inOneBatch(store, [&] {
        if (target) {
            store.update(filter);
        } else {
            store.insert(filter);
        }
    });
    if (!saved) {
        return std::nullopt;
    }
    auto projects = tree.projects();
    for (auto& node : projects) {
        if (node.id != filter.projectId) {
            continue;
        }
        if (!target) {
            node.filters.push_back(nodeOf(filter));
        }
        for (auto& filterNode : node.filters) {
            if (filterNode.id == filter.id) {
                filterNode.name = filter.tagName;
            }
        }
    }
    tree.setProjects(std::move(projects));
    tree.saveTree();
    return filter.id;
}

bool deleteEntry(RecordStore& store, ProjectTreeViewModel& tree, Instant now, const QUuid& id) {
    auto project = findProject(store, id);
    auto filter = project ? std::nullopt : findFilter(store, id);
    if ((!project && !filter) || (project && project->isNameChangeOnly) ||
        (filter && filter->isNameChangeOnly)) {
        return false;
    }
    const bool saved = inOneBatch(store, [&] {
        if (project) {
            project->isDeleted = true;
            project->updatedAt = now;
            store.update(*project);
            for (Filter child : store.fetch<Filter>(Query{"projectId = ?", {id}, {}})) {
                child.isDeleted = true;
                child.updatedAt = now;
                store.update(child);
            }
        } else {
            filter->isDeleted = true;
            filter->updatedAt = now;
            store.update(*filter);
        }
    });
    if (!saved) {
        return false;
    }
    auto projects = tree.projects();
    std::erase_if(projects, [&](const ProjectTreeItem& node) { return node.id == id; });
    for (auto& node : projects) {
        std::erase_if(node.filters, [&](const FilterTreeItem& item) { return item.id == id; });
    }
    tree.setProjects(std::move(projects));
    tree.saveTree();
    return true;
}

std::optional<QUuid> duplicateEntry(RecordStore& store, ProjectTreeViewModel& tree, Instant now,
                                    const QUuid& id) {
    const auto project = findProject(store, id);
    const auto filter = project ? std::nullopt : findFilter(store, id);
    if (!project && !filter) {
        return std::nullopt;
    }
    auto projects = tree.projects();
    std::optional<QUuid> copyId;
    const bool saved = inOneBatch(store, [&] {
        if (project) {
            Project copy = newRecord<Project>(now);
            copy.projectName = copyName(project->projectName);
            copy.isArchived = project->isArchived;
            store.insert(copy);
            ProjectTreeItem node{copy.id, copy.projectName, 0, true, copy.isArchived, true, {}};
            for (const Filter& child :
                 store.fetch<Filter>(Query{"projectId = ? AND isDeleted = 0", {id}, "createdAt"})) {
                Filter childCopy = newRecord<Filter>(now);
                childCopy.projectId = copy.id;
                copyRules(childCopy, child);
                store.insert(childCopy);
                node.filters.push_back(nodeOf(childCopy));
            }
            const auto original = std::find_if(projects.begin(), projects.end(),
                                               [&](const auto& item) { return item.id == id; });
            projects.insert(original == projects.end() ? original : std::next(original),
                            std::move(node));
            copyId = copy.id;
        } else {
            Filter copy = newRecord<Filter>(now);
            copy.projectId = filter->projectId;
            copyRules(copy, *filter);
            copy.tagName = copyName(filter->tagName);
            store.insert(copy);
            for (auto& node : projects) {
                const auto original = std::find_if(node.filters.begin(), node.filters.end(),
                                                   [&](const auto& item) { return item.id == id; });
                if (original != node.filters.end()) {
                    node.filters.insert(std::next(original), nodeOf(copy));
                    break;
                }
            }
            copyId = copy.id;
        }
    });
    if (!saved) {
        return std::nullopt;
    }
    tree.setProjects(std::move(projects));
    tree.saveTree();
    return copyId;
}

}  // namespace kivo
