#include "gui/activity_list_model.h"

#include <QDateTime>
#include <QLocale>

#include "gui/icons.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

// Top-level rows carry no internal id; an entry row carries its group's index plus one.
constexpr quintptr topLevel = 0;

QDateTime localTime(Instant instant) {
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(toEpochSeconds(instant) * 1000.0));
}

QVariant idsOf(const std::vector<ActivityEntry>& entries) {
    QList<QUuid> ids;
    ids.reserve(static_cast<qsizetype>(entries.size()));
    for (const ActivityEntry& entry : entries) {
        ids.append(entry.id);
    }
    return QVariant::fromValue(ids);
}

}  // namespace

ActivityListModel::ActivityListModel(QObject* parent) : QAbstractItemModel(parent) {
    unknownIcon_ = glyphIcon(QStringLiteral("application-x-executable"),
                             QStringLiteral("application-unknown"));
}

QString ActivityListModel::groupKey(const ActivityGroup& group) {
    return group.appBundleId + QChar(0x1f) + group.title + QChar(0x1f) + group.url + QChar(0x1f) +
           group.filterId.toString();
}

void ActivityListModel::setNames(QHash<QUuid, QString> tagNames,
                                 QHash<QUuid, QString> projectNames) {
    tagNames_ = std::move(tagNames);
    projectNames_ = std::move(projectNames);
}

void ActivityListModel::setGroups(std::vector<ActivityGroup> groups) {
    beginResetModel();
    groups_ = std::move(groups);
    endResetModel();
}

void ActivityListModel::setIsShowTimeEntries(bool value) {
    if (value == isShowTimeEntries_) {
        return;
    }
    beginResetModel();
    isShowTimeEntries_ = value;
    endResetModel();
}

const ActivityGroup* ActivityListModel::groupAt(const QModelIndex& index) const {
    if (!index.isValid() || index.model() != this) {
        return nullptr;
    }
    const std::size_t group = index.internalId() == topLevel
                                  ? static_cast<std::size_t>(index.row())
                                  : static_cast<std::size_t>(index.internalId() - 1);
    return group < groups_.size() ? &groups_[group] : nullptr;
}

QModelIndex ActivityListModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) {
        return {};
    }
    if (!parent.isValid()) {
        return createIndex(row, column, topLevel);
    }
    return createIndex(row, column, static_cast<quintptr>(parent.row()) + 1);
}

QModelIndex ActivityListModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == topLevel) {
        return {};
    }
    return createIndex(static_cast<int>(child.internalId() - 1), 0, topLevel);
}

int ActivityListModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return static_cast<int>(groups_.size());
    }
    if (parent.column() != 0 || parent.internalId() != topLevel || !isShowTimeEntries_) {
        return 0;
    }
    return static_cast<int>(groups_[static_cast<std::size_t>(parent.row())].entries.size());
}

int ActivityListModel::columnCount(const QModelIndex&) const {
    return columnTotal;
}

QVariant ActivityListModel::data(const QModelIndex& index, int role) const {
    const ActivityGroup* group = groupAt(index);
    if (group == nullptr) {
        return {};
    }
    if (index.internalId() == topLevel) {
        return groupData(*group, index.column(), role);
    }
    const auto entry = static_cast<std::size_t>(index.row());
    return entry < group->entries.size() ? entryData(group->entries[entry], index.column(), role)
                                         : QVariant();
}

QVariant ActivityListModel::groupData(const ActivityGroup& group, int column, int role) const {
    if (role == activityIdsRole) {
        return idsOf(group.entries);
    }
    if (role == groupKeyRole) {
        return groupKey(group);
    }
    if (role == Qt::DecorationRole && column == titleColumn) {
        const QIcon icon = icons_ != nullptr ? icons_->value(group.appBundleId) : QIcon();
        return icon.isNull() ? unknownIcon_ : icon;
    }
    if (role == Qt::TextAlignmentRole && (column == durationColumn || column == entriesColumn)) {
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (role == Qt::ToolTipRole && column == titleColumn) {
        return group.url.isEmpty() ? group.appName : group.url;
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (column) {
        case titleColumn:
            return group.title.isEmpty() ? group.appName : group.title;
        case domainColumn:
            return group.domainName;
        case tagColumn:
            return tagNames_.value(group.filterId);
        case projectColumn:
            return projectNames_.value(group.projectId);
        case durationColumn:
            return formatDurationLabel(group.duration).trimmed();
        case entriesColumn:
            return static_cast<qulonglong>(group.entries.size());
        default:
            return {};
    }
}

QVariant ActivityListModel::entryData(const ActivityEntry& entry, int column, int role) const {
    if (role == activityIdsRole) {
        return QVariant::fromValue(QList<QUuid>{entry.id});
    }
    if (role == Qt::TextAlignmentRole && column == durationColumn) {
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    const QLocale locale;
    switch (column) {
        case titleColumn:
            return QStringLiteral("%1 – %2").arg(
                locale.toString(localTime(entry.startAt), QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                locale.toString(localTime(entry.endAt).time(), QStringLiteral("HH:mm:ss")));
        case durationColumn:
            return QStringLiteral("%1:%2:%3")
                .arg(entry.duration / 3600)
                .arg(entry.duration / 60 % 60, 2, 10, QChar(u'0'))
                .arg(entry.duration % 60, 2, 10, QChar(u'0'));
        default:
            return {};
    }
}

QVariant ActivityListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case titleColumn:
            return QStringLiteral("Title");
        case domainColumn:
            return QStringLiteral("Domain");
        case tagColumn:
            return QStringLiteral("Tag");
        case projectColumn:
            return QStringLiteral("Project");
        case durationColumn:
            return QStringLiteral("Duration");
        case entriesColumn:
            return QStringLiteral("Entries");
        default:
            return {};
    }
}

}  // namespace kivo
