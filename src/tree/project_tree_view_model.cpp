#include "tree/project_tree_view_model.h"

#include <algorithm>

#include "model/application_settings.h"
#include "model/checked_arithmetic.h"
#include "model/fatal.h"
#include "model/local_day.h"
#include "model/range_totals.h"
#include "model/record_store.h"
#include "tree/list_move.h"
#include "tree/saved_tree_document.h"

namespace kivo {

ProjectTreeViewModel::ProjectTreeViewModel(RecordStore& store, ApplicationSettings& settings,
                                           const Clock& clock, QObject* parent)
    : QObject(parent),
      store_(store),
      settings_(settings),
      roots_{RootTreeItem{QUuid::createUuid(), QStringLiteral("Root"), 0}},
      minSelectedDate_(localDateOf(clock.now())),
      maxSelectedDate_(minSelectedDate_) {}

void ProjectTreeViewModel::setDurationTotal(std::int64_t value) {
    if (value != durationTotal_) {
        durationTotal_ = value;
        Q_EMIT durationTotalChanged();
    }
}

void ProjectTreeViewModel::setProjects(std::vector<ProjectTreeItem> projects) {
    projects_ = std::move(projects);
    refreshDerived();
    Q_EMIT projectsChanged();
}

void ProjectTreeViewModel::setIsShowArchivedProject(bool value) {
    if (value == isShowArchivedProject_) {
        return;
    }
    isShowArchivedProject_ = value;
    refreshDerived();
    Q_EMIT isShowArchivedProjectChanged();
    Q_EMIT forceUpdateRequested();
    saveTree();
}

void ProjectTreeViewModel::refreshDerived() {
    projectNames_.clear();
    tagNames_.clear();
    enableFilters_.clear();
    for (const auto& project : projects_) {
        const bool isProjectCounted = isShowArchivedProject_ || !project.isArchived;
        for (const auto& filter : project.filters) {
            if (isProjectCounted && filter.isToggled) {
                enableFilters_.push_back(filter.id);
                tagNames_.insert(filter.id, filter.name);
            }
        }
        projectNames_.insert(project.id, project.name);
    }
    Q_EMIT derivedChanged();
}

void ProjectTreeViewModel::saveTree() {
    settings_.setSavedProjectTree(encodeSavedTree(projects_));
}

void ProjectTreeViewModel::applySelection(const std::vector<QUuid>& ids) {
    for (auto& project : projects_) {
        for (auto& filter : project.filters) {
            filter.isToggled = false;
        }
    }
    for (const auto& id : ids) {
        markToggled(id);
    }
    refreshDerived();
    Q_EMIT projectsChanged();
}

void ProjectTreeViewModel::markToggled(const QUuid& id) {
    for (auto& project : projects_) {
        for (auto& filter : project.filters) {
            if (filter.id == id) {
                filter.isToggled = true;
            }
        }
    }
    const auto project = std::find_if(projects_.begin(), projects_.end(),
                                      [&id](const ProjectTreeItem& item) { return item.id == id; });
    if (project != projects_.end()) {
        for (auto& filter : project->filters) {
            filter.isToggled = true;
        }
    }
    if (id == roots_.front().id) {
        for (auto& each : projects_) {
            for (auto& filter : each.filters) {
                filter.isToggled = true;
            }
        }
    }
}

void ProjectTreeViewModel::loadSavedTree() {
    const auto document = settings_.savedProjectTree();
    if (document) {
        auto saved = decodeSavedTree(*document);
        if (saved && !saved->empty()) {
            setProjects(std::move(*saved));
            return;
        }
    }
    buildTreeFromRecords();
}

void ProjectTreeViewModel::buildTreeFromRecords() {
    // Deleted projects keep an empty node; deleted filters get none.
    const auto projectRecords = store_.fetch<Project>();
    const auto filterRecords = store_.fetch<Filter>(live());
    QHash<QUuid, std::vector<const Filter*>> filtersByProject;
    for (const auto& filter : filterRecords) {
        filtersByProject[filter.projectId].push_back(&filter);
    }
    std::vector<ProjectTreeItem> projects;
    projects.reserve(projectRecords.size());
    for (const auto& record : projectRecords) {
        ProjectTreeItem project{record.id, record.projectName, 0, true, record.isArchived, true,
                                {}};
        if (!record.isDeleted) {
            for (const Filter* filter : filtersByProject.value(record.id)) {
                project.filters.push_back({filter->id, filter->tagName, 0, true});
            }
        }
        projects.push_back(std::move(project));
    }
    setProjects(std::move(projects));
    setDurationTotal(0);
    Q_EMIT forceUpdateRequested();
    recomputeTreeDurations(minSelectedDate_, maxSelectedDate_, live_);
}

std::vector<TagUsageGroup> ProjectTreeViewModel::recomputeTreeDurations(QDate minSelectedDate,
                                                                        QDate maxSelectedDate,
                                                                        LiveActivities live) {
    minSelectedDate_ = minSelectedDate;
    maxSelectedDate_ = maxSelectedDate;
    live_ = std::move(live);
    if (projects_.empty()) {
        return {};
    }
    const DayRange range = localDays(minSelectedDate, maxSelectedDate);
    const QSet<QUuid> filters = treeFilters();
    auto groups = tagUsageGroups(store_, range, filters);
    addLiveActivities(groups, live_, range, filters);
    showDurations(groups);
    return groups;
}

// Only the filters of the tree are summed: a record of any other adds to no node.
QSet<QUuid> ProjectTreeViewModel::treeFilters() const {
    QSet<QUuid> filters;
    for (const auto& project : projects_) {
        for (const auto& filter : project.filters) {
            filters.insert(filter.id);
        }
    }
    return filters;
}

void ProjectTreeViewModel::showDurations(const std::vector<TagUsageGroup>& groups) {
    QHash<QUuid, std::int64_t> durationByFilter;
    for (const auto& group : groups) {
        auto& sum = durationByFilter[group.filterId];
        sum = checkedAdd(sum, group.duration);
    }
    std::int64_t total = 0;
    for (auto& project : projects_) {
        std::int64_t projectSum = 0;
        for (auto& filter : project.filters) {
            filter.duration = durationByFilter.value(filter.id);
            projectSum = checkedAdd(projectSum, filter.duration);
        }
        project.duration = projectSum;
        if (isShowArchivedProject_ || !project.isArchived) {
            total = checkedAdd(total, projectSum);
        }
    }
    Q_EMIT projectsChanged();
    setDurationTotal(total);
}

void ProjectTreeViewModel::moveProjects(const std::vector<std::size_t>& offsets,
                                        std::size_t destination) {
    auto projects = projects_;
    if (!moveElements(projects, offsets, destination)) {
        fatal("a project move names a place outside the tree");
    }
    setProjects(std::move(projects));
    saveTree();
}

void ProjectTreeViewModel::moveFilters(const QUuid& projectId,
                                       const std::vector<std::size_t>& offsets,
                                       std::size_t destination) {
    auto projects = projects_;
    const auto project =
        std::find_if(projects.begin(), projects.end(),
                     [&](const ProjectTreeItem& item) { return item.id == projectId; });
    if (project == projects.end() || !moveElements(project->filters, offsets, destination)) {
        fatal("a filter move names a place outside its project");
    }
    setProjects(std::move(projects));
    saveTree();
}

ReportSelection ProjectTreeViewModel::reportSelection() const {
    return {enableFilters_, tagNames_, projectNames_, projects_, isShowArchivedProject_};
}

}  // namespace kivo
