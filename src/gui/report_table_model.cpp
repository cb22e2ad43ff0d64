#include "gui/report_table_model.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <iterator>

#include "gui/icons.h"
#include "reports/percentage.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

QString nameHeader(ReportKind kind) {
    switch (kind) {
        case ReportKind::applications:
            return QStringLiteral("Application");
        case ReportKind::websites:
            return QStringLiteral("Website");
        case ReportKind::tags:
            return QStringLiteral("Tag");
        case ReportKind::projects:
            return QStringLiteral("Project");
    }
    return {};
}

}  // namespace

ReportTableModel::ReportTableModel(ReportKind kind, QObject* parent)
    : QAbstractTableModel(parent), kind_(kind) {
    if (kind_ == ReportKind::applications) {
        unknownIcon_ = glyphIcon(QStringLiteral("application-x-executable"),
                                 QStringLiteral("application-unknown"));
    }
}

bool ReportTableModel::hasProjectColumn() const {
    return kind_ == ReportKind::tags && !isCompactColumns_;
}

int ReportTableModel::durationColumn() const {
    return hasProjectColumn() ? 2 : 1;
}

void ReportTableModel::setRows(std::vector<ReportRow> rows, std::int64_t durationTotal) {
    sortRows(rows);
    removeRowsNotIn(rows);
    appendRowsNotShown(rows);
    const bool isTotalChanged = durationTotal != durationTotal_;
    durationTotal_ = durationTotal;
    const bool isShownChanged = !std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                                            [](const ReportRow& a, const ReportRow& b) {
                                                return a.key == b.key && a.name == b.name &&
                                                       a.project == b.project &&
                                                       a.duration == b.duration;
                                            });
    moveToOrderOf(std::move(rows));
    if ((isShownChanged || isTotalChanged) && !rows_.empty()) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

void ReportTableModel::removeRowsNotIn(const std::vector<ReportRow>& rows) {
    QSet<QString> kept;
    for (const ReportRow& row : rows) {
        kept.insert(row.key);
    }
    for (auto row = static_cast<int>(rows_.size()) - 1; row >= 0; --row) {
        if (!kept.contains(rows_[static_cast<std::size_t>(row)].key)) {
            beginRemoveRows({}, row, row);
            rows_.erase(rows_.begin() + row);
            endRemoveRows();
        }
    }
}

void ReportTableModel::appendRowsNotShown(const std::vector<ReportRow>& rows) {
    QSet<QString> shown;
    for (const ReportRow& row : rows_) {
        shown.insert(row.key);
    }
    std::vector<ReportRow> added;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(added),
                 [&shown](const ReportRow& row) { return !shown.contains(row.key); });
    if (added.empty()) {
        return;
    }
    const auto first = static_cast<int>(rows_.size());
    beginInsertRows({}, first, first + static_cast<int>(added.size()) - 1);
    rows_.insert(rows_.end(), added.begin(), added.end());
    endInsertRows();
}

void ReportTableModel::moveToOrderOf(std::vector<ReportRow> rows) {
    const bool isSameOrder =
        std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                   [](const ReportRow& a, const ReportRow& b) { return a.key == b.key; });
    if (isSameOrder) {
        rows_ = std::move(rows);
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    QHash<QString, int> newRowOfKey;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        newRowOfKey.insert(rows[row].key, static_cast<int>(row));
    }
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex& index : before) {
        const QString& key = rows_[static_cast<std::size_t>(index.row())].key;
        after.append(this->index(newRowOfKey.value(key), index.column()));
    }
    rows_ = std::move(rows);
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void ReportTableModel::setIsCompactColumns(bool value) {
    if (value == isCompactColumns_) {
        return;
    }
    beginResetModel();
    isCompactColumns_ = value;
    if (sortColumn_ > 0 && kind_ == ReportKind::tags) {
        sortColumn_ = durationColumn();  // the time column moved
    }
    endResetModel();
}

int ReportTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ReportTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : durationColumn() + 2;
}

QVariant ReportTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const ReportRow& row = rows_[static_cast<std::size_t>(index.row())];
    const int column = index.column();
    const int time = durationColumn();
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            if (column == 0) {
                const QString name = shownName(kind_, row);
                return kind_ == ReportKind::tags && isCompactColumns_
                           ? QStringLiteral("%1 · %2").arg(name, row.project)
                           : name;
            }
            if (column == time) {
                return formatDurationLabel(row.duration).trimmed();
            }
            if (column == time + 1) {
                return percentageText(row.duration, durationTotal_);
            }
            return row.project;
        case Qt::DecorationRole:
            if (column == 0 && kind_ == ReportKind::applications) {
                const auto found =
                    icons_ ? icons_->constFind(row.key) : QHash<QString, QIcon>::const_iterator{};
                return icons_ && found != icons_->cend() ? *found : unknownIcon_;
            }
            return {};
        case Qt::TextAlignmentRole:
            return column >= time ? QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter)
                                  : QVariant();
        case Qt::ToolTipRole:
            return column == 0 && !row.project.isEmpty()
                       ? QStringLiteral("%1 (%2)").arg(shownName(kind_, row), row.project)
                       : shownName(kind_, row);
        case keyRole:
            return row.key;
        case durationRole:
            return QVariant::fromValue<qint64>(row.duration);
        default:
            return {};
    }
}

QVariant ReportTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const int time = durationColumn();
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole) {
        return QVariant::fromValue(section >= time ? Qt::AlignRight | Qt::AlignVCenter
                                                   : Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    if (section == 0) {
        return nameHeader(kind_);
    }
    if (section == time) {
        return QStringLiteral("Time");
    }
    if (section == time + 1) {
        return QStringLiteral("Share");
    }
    return QStringLiteral("Project");
}

void ReportTableModel::sort(int column, Qt::SortOrder order) {
    sortColumn_ = column;
    sortOrder_ = order;
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<QUuid> ids;
    for (const QModelIndex& index : before) {
        ids.push_back(rows_[static_cast<std::size_t>(index.row())].id);
    }
    sortRows(rows_);
    QModelIndexList after;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const auto found = std::find_if(rows_.begin(), rows_.end(),
                                        [&](const ReportRow& row) { return row.id == ids[i]; });
        after.append(
            index(static_cast<int>(found - rows_.begin()), before[static_cast<int>(i)].column()));
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void ReportTableModel::sortRows(std::vector<ReportRow>& rows) const {
    if (sortColumn_ < 0) {
        return;  // the report's own order: largest first
    }
    const bool byName = sortColumn_ == 0;
    const bool byProject = hasProjectColumn() && sortColumn_ == 1;
    const auto less = [&](const ReportRow& a, const ReportRow& b) {
        if (byName) {
            return QString::localeAwareCompare(shownName(kind_, a), shownName(kind_, b)) < 0;
        }
        if (byProject) {
            return QString::localeAwareCompare(a.project, b.project) < 0;
        }
        return a.duration < b.duration;
    };
    if (sortOrder_ == Qt::AscendingOrder) {
        std::stable_sort(rows.begin(), rows.end(), less);
    } else {
        std::stable_sort(rows.begin(), rows.end(),
                         [&](const ReportRow& a, const ReportRow& b) { return less(b, a); });
    }
}

}  // namespace kivo
