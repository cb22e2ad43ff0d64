#pragma once

#include <QHash>
#include <QString>
#include <QUuid>
#include <vector>

#include "tree/tree_items.h"

namespace kivo {

// What the sidebar's selection lets the reports count, as a plain value that the tree produces.
struct ReportSelection {
    std::vector<QUuid> enableFilters;    // the counted filters, in tree order
    QHash<QUuid, QString> tagNames;      // the counted filters only
    QHash<QUuid, QString> projectNames;  // every project of the tree, archived or not
    std::vector<ProjectTreeItem> projects;
    bool isShowArchivedProject = false;
};

}  // namespace kivo
