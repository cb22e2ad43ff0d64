#pragma once

#include <QDate>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUuid>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/instant.h"
#include "model/live_activities.h"
#include "model/range_totals.h"
#include "tree/report_selection.h"
#include "tree/tree_items.h"

namespace kivo {

class ApplicationSettings;
class RecordStore;

// The sidebar tree of projects and their filters with the durations of the selected days, the
// selection that decides which filters the reports count, and the layout that survives a restart.
// After every operation `enableFilters`, `tagNames` and `projectNames` describe the current tree.
class ProjectTreeViewModel : public QObject {
    Q_OBJECT

public:
    ProjectTreeViewModel(RecordStore& store, ApplicationSettings& settings, const Clock& clock,
                         QObject* parent = nullptr);

    std::int64_t durationTotal() const { return durationTotal_; }
    const std::vector<RootTreeItem>& roots() const { return roots_; }
    const std::vector<ProjectTreeItem>& projects() const { return projects_; }
    // Every project of the tree, archived or not.
    const QHash<QUuid, QString>& projectNames() const { return projectNames_; }
    // The counted filters only.
    const QHash<QUuid, QString>& tagNames() const { return tagNames_; }
    // The counted filters, in tree order.
    const std::vector<QUuid>& enableFilters() const { return enableFilters_; }
    bool isShowArchivedProject() const { return isShowArchivedProject_; }
    // What the reports count, taken as it stands now.
    ReportSelection reportSelection() const;

    // The editors add and change nodes by id and hand the whole list back.
    void setProjects(std::vector<ProjectTreeItem> projects);
    // Also saves the tree and asks the views to recompute.
    void setIsShowArchivedProject(bool value);

    void refreshDerived();
    void saveTree();
    // Counts exactly the filters reached by `ids` (the root, projects, filters, in any mix).
    void applySelection(const std::vector<QUuid>& ids);
    void markToggled(const QUuid& id);

    // The saved layout as it stands, or a tree built from the records when none is usable.
    void loadSavedTree();
    // Every project (deleted ones without filters) with its live filters, all expanded and
    // counted, in the store's order; then the durations of the selected days.
    void buildTreeFromRecords();
    // Returns the range's tag usage of the tree's filters, the live activities added, which the
    // tag and project reports can take instead of reading the range again.
    std::vector<TagUsageGroup> recomputeTreeDurations(QDate minSelectedDate, QDate maxSelectedDate,
                                                      LiveActivities live = {});

    // Drag and drop: the nodes at `offsets` go before the node at `destination`; then the tree
    // is saved. Filters only move within their own project.
    void moveProjects(const std::vector<std::size_t>& offsets, std::size_t destination);
    void moveFilters(const QUuid& projectId, const std::vector<std::size_t>& offsets,
                     std::size_t destination);

Q_SIGNALS:
    void projectsChanged();
    // `projectNames`, `tagNames` or `enableFilters` changed.
    void derivedChanged();
    void durationTotalChanged();
    void isShowArchivedProjectChanged();
    // What the reports show has changed: every view recomputes.
    void forceUpdateRequested();

private:
    void setDurationTotal(std::int64_t value);
    QSet<QUuid> treeFilters() const;
    void showDurations(const std::vector<TagUsageGroup>& groups);

    RecordStore& store_;
    ApplicationSettings& settings_;
    std::int64_t durationTotal_ = 0;
    std::vector<RootTreeItem> roots_;
    std::vector<ProjectTreeItem> projects_;
    QHash<QUuid, QString> projectNames_;
    QHash<QUuid, QString> tagNames_;
    std::vector<QUuid> enableFilters_;
    bool isShowArchivedProject_ = false;
    // The days whose durations the tree shows, and the live activities added; a rebuilt tree is
    // filled for them.
    QDate minSelectedDate_;
    QDate maxSelectedDate_;
    LiveActivities live_;
};

}  // namespace kivo
