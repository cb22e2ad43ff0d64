#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>
#include <vector>

namespace kivo {

// Nodes of the sidebar tree: plain values whose `id` is the id of the record they stand for.

struct RootTreeItem {
    QUuid id;
    QString name;
    std::int64_t duration = 0;

    friend bool operator==(const RootTreeItem&, const RootTreeItem&) = default;
};

struct FilterTreeItem {
    QUuid id;
    QString name;
    std::int64_t duration = 0;
    bool isToggled = false;  // counted by the reports

    friend bool operator==(const FilterTreeItem&, const FilterTreeItem&) = default;
};

struct ProjectTreeItem {
    QUuid id;
    QString name;
    std::int64_t duration = 0;
    bool isExpanded = false;
    bool isArchived = false;
    bool isToggled = false;  // kept and saved; the selection rules never read it
    std::vector<FilterTreeItem> filters;

    friend bool operator==(const ProjectTreeItem&, const ProjectTreeItem&) = default;
};

}  // namespace kivo
