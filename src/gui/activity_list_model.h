#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QList>
#include <QUuid>

#include "reports/activity_list.h"

namespace kivo {

// The activity list as an item model: one row per group (icon and title, domain, tag, project,
// duration, number of entries), and under each the group's time entries (start, end, duration)
// when entries are shown.
class ActivityListModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column {
        titleColumn,
        domainColumn,
        tagColumn,
        projectColumn,
        durationColumn,
        entriesColumn,
        columnTotal
    };
    enum Role { activityIdsRole = Qt::UserRole + 1, groupKeyRole };

    explicit ActivityListModel(QObject* parent = nullptr);

    void setIcons(const QHash<QString, QIcon>* icons) { icons_ = icons; }
    void setNames(QHash<QUuid, QString> tagNames, QHash<QUuid, QString> projectNames);
    void setGroups(std::vector<ActivityGroup> groups);
    void setIsShowTimeEntries(bool value);
    bool isShowTimeEntries() const { return isShowTimeEntries_; }

    const std::vector<ActivityGroup>& groups() const { return groups_; }
    // The group a row stands for, itself or as its entry's group.
    const ActivityGroup* groupAt(const QModelIndex& index) const;
    // A text that names a group across refreshes, to find its row again.
    static QString groupKey(const ActivityGroup& group);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    QVariant groupData(const ActivityGroup& group, int column, int role) const;
    QVariant entryData(const ActivityEntry& entry, int column, int role) const;

    const QHash<QString, QIcon>* icons_ = nullptr;
    QIcon unknownIcon_;
    QHash<QUuid, QString> tagNames_;
    QHash<QUuid, QString> projectNames_;
    std::vector<ActivityGroup> groups_;
    bool isShowTimeEntries_ = false;
};

}  // namespace kivo
