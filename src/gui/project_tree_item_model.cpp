#include "gui/project_tree_item_model.h"

#include <QFont>
#include <QIODevice>
#include <QMimeData>

#include "tree/duration_label.h"
#include "tree/project_tree_view_model.h"

namespace kivo {

namespace {

const QString mimeType = QStringLiteral("application/x-kivo-tree-rows");

// Where an index sits: the root row, a project row, or a filter row of the project at
// `internalId - filterBase`.
constexpr quintptr rootId = 0;
constexpr quintptr projectId = 1;
constexpr quintptr filterBase = 2;

}  // namespace

ProjectTreeItemModel::ProjectTreeItemModel(ProjectTreeViewModel& tree, QObject* parent)
    : QAbstractItemModel(parent), tree_(tree) {
    shownProjects_ = visibleProjects();
    shownShape_ = shape();
    connect(&tree_, &ProjectTreeViewModel::projectsChanged, this,
            &ProjectTreeItemModel::followTree);
    connect(&tree_, &ProjectTreeViewModel::durationTotalChanged, this,
            &ProjectTreeItemModel::followTree);
    connect(&tree_, &ProjectTreeViewModel::isShowArchivedProjectChanged, this,
            &ProjectTreeItemModel::followTree);
}

std::vector<std::size_t> ProjectTreeItemModel::visibleProjects() const {
    std::vector<std::size_t> visible;
    const auto& projects = tree_.projects();
    for (std::size_t i = 0; i < projects.size(); ++i) {
        if (tree_.isShowArchivedProject() || !projects[i].isArchived) {
            visible.push_back(i);
        }
    }
    return visible;
}

std::vector<std::vector<QUuid>> ProjectTreeItemModel::shape() const {
    std::vector<std::vector<QUuid>> result;
    for (const std::size_t position : visibleProjects()) {
        const auto& project = tree_.projects()[position];
        std::vector<QUuid> ids{project.id};
        for (const auto& filter : project.filters) {
            ids.push_back(filter.id);
        }
        result.push_back(std::move(ids));
    }
    return result;
}

void ProjectTreeItemModel::followTree() {
    auto newShape = shape();
    if (newShape != shownShape_) {
        beginResetModel();
        shownShape_ = std::move(newShape);
        shownProjects_ = visibleProjects();
        endResetModel();
        return;
    }
    const int last = columnCount_ - 1;
    Q_EMIT dataChanged(index(0, 0), index(0, last));
    const int projects = rowCount(rootIndex());
    if (projects > 0) {
        Q_EMIT dataChanged(index(0, 0, rootIndex()), index(projects - 1, last, rootIndex()));
    }
    for (int row = 0; row < projects; ++row) {
        const QModelIndex project = projectIndex(row);
        if (const int filters = rowCount(project); filters > 0) {
            Q_EMIT dataChanged(index(0, 0, project), index(filters - 1, last, project));
        }
    }
}

const ProjectTreeItem& ProjectTreeItemModel::projectAt(int row) const {
    return tree_.projects()[shownProjects_[static_cast<std::size_t>(row)]];
}

QModelIndex ProjectTreeItemModel::projectIndex(int projectRow) const {
    return index(projectRow, nameColumn, rootIndex());
}

QModelIndex ProjectTreeItemModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) {
        return {};
    }
    if (!parent.isValid()) {
        return createIndex(row, column, rootId);
    }
    if (parent.internalId() == rootId) {
        return createIndex(row, column, projectId);
    }
    return createIndex(row, column, filterBase + static_cast<quintptr>(parent.row()));
}

QModelIndex ProjectTreeItemModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == rootId) {
        return {};
    }
    if (child.internalId() == projectId) {
        return createIndex(0, 0, rootId);
    }
    return createIndex(static_cast<int>(child.internalId() - filterBase), 0, projectId);
}

int ProjectTreeItemModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return 1;
    }
    if (parent.column() != 0) {
        return 0;
    }
    if (parent.internalId() == rootId) {
        return static_cast<int>(shownProjects_.size());
    }
    if (parent.internalId() == projectId) {
        return static_cast<int>(projectAt(parent.row()).filters.size());
    }
    return 0;
}

int ProjectTreeItemModel::columnCount(const QModelIndex&) const {
    return columnCount_;
}

ProjectTreeItemModel::Kind ProjectTreeItemModel::kindOf(const QModelIndex& index) const {
    if (index.internalId() == rootId) {
        return Kind::root;
    }
    return index.internalId() == projectId ? Kind::project : Kind::filter;
}

QUuid ProjectTreeItemModel::idOf(const QModelIndex& index) const {
    switch (kindOf(index)) {
        case Kind::root:
            return tree_.roots().front().id;
        case Kind::project:
            return projectAt(index.row()).id;
        case Kind::filter:
            return projectAt(index.parent().row())
                .filters[static_cast<std::size_t>(index.row())]
                .id;
    }
    return {};
}

QVariant ProjectTreeItemModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Kind kind = kindOf(index);
    QString name;
    std::int64_t duration = 0;
    bool isArchived = false;
    if (kind == Kind::root) {
        name = QStringLiteral("All Projects");
        duration = tree_.durationTotal();
    } else if (kind == Kind::project) {
        const auto& project = projectAt(index.row());
        name = project.name;
        duration = project.duration;
        isArchived = project.isArchived;
    } else {
        const auto& project = projectAt(index.parent().row());
        const auto& filter = project.filters[static_cast<std::size_t>(index.row())];
        name = filter.name;
        duration = filter.duration;
        isArchived = project.isArchived;
    }
    switch (role) {
        case Qt::DisplayRole:
            return index.column() == nameColumn ? name : formatDurationLabel(duration).trimmed();
        case Qt::AccessibleTextRole:
            return index.column() == nameColumn ? name : formatDurationLabel(duration).trimmed();
        case Qt::ToolTipRole:
            return isArchived ? QStringLiteral("%1 (archived)").arg(name) : name;
        case Qt::TextAlignmentRole:
            return index.column() == durationColumn
                       ? QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter)
                       : QVariant();
        case Qt::FontRole:
            if (kind == Kind::root || isArchived) {
                QFont font;
                font.setBold(kind == Kind::root);
                font.setItalic(isArchived);
                return font;
            }
            return {};
        case idRole:
            return idOf(index);
        case kindRole:
            return static_cast<int>(kind);
        case isArchivedRole:
            return isArchived;
        default:
            return {};
    }
}

Qt::ItemFlags ProjectTreeItemModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
    if (kindOf(index) != Kind::root) {
        flags |= Qt::ItemIsDragEnabled;
    }
    if (kindOf(index) == Kind::filter) {
        flags |= Qt::ItemNeverHasChildren;
    }
    return flags;
}

Qt::DropActions ProjectTreeItemModel::supportedDragActions() const {
    return Qt::MoveAction;
}

Qt::DropActions ProjectTreeItemModel::supportedDropActions() const {
    return Qt::MoveAction;
}

QStringList ProjectTreeItemModel::mimeTypes() const {
    return {mimeType};
}

QMimeData* ProjectTreeItemModel::mimeData(const QModelIndexList& indexes) const {
    DragPayload payload;
    bool first = true;
    for (const QModelIndex& index : indexes) {
        if (index.column() != nameColumn) {
            continue;
        }
        const Kind kind = kindOf(index);
        const int projectRow = kind == Kind::filter ? index.parent().row() : -1;
        if (kind == Kind::root ||
            (!first && (kind != payload.kind || projectRow != payload.projectRow))) {
            return nullptr;  // only rows of one kind under one parent move together
        }
        payload.kind = kind;
        payload.projectRow = projectRow;
        payload.rows.push_back(static_cast<std::size_t>(index.row()));
        first = false;
    }
    if (payload.rows.empty()) {
        return nullptr;
    }
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << static_cast<qint32>(payload.kind) << static_cast<qint32>(payload.projectRow)
           << static_cast<qint32>(payload.rows.size());
    for (const std::size_t row : payload.rows) {
        stream << static_cast<qint32>(row);
    }
    auto* data = new QMimeData;
    data->setData(mimeType, bytes);
    return data;
}

std::optional<ProjectTreeItemModel::DragPayload> ProjectTreeItemModel::payloadOf(
    const QMimeData* data) const {
    if (data == nullptr || !data->hasFormat(mimeType)) {
        return std::nullopt;
    }
    QDataStream stream(data->data(mimeType));
    qint32 kind = 0;
    qint32 projectRow = 0;
    qint32 count = 0;
    stream >> kind >> projectRow >> count;
    DragPayload payload;
    payload.kind = static_cast<Kind>(kind);
    payload.projectRow = projectRow;
    const int projects = static_cast<int>(shownProjects_.size());
    if (payload.kind == Kind::filter && (projectRow < 0 || projectRow >= projects)) {
        return std::nullopt;
    }
    const int limit = payload.kind == Kind::filter
                          ? static_cast<int>(projectAt(projectRow).filters.size())
                          : projects;
    for (qint32 i = 0; i < count; ++i) {
        qint32 row = -1;
        stream >> row;
        if (stream.status() != QDataStream::Ok || row < 0 || row >= limit) {
            return std::nullopt;
        }
        payload.rows.push_back(static_cast<std::size_t>(row));
    }
    if (payload.kind == Kind::root || payload.rows.empty()) {
        return std::nullopt;
    }
    return payload;
}

std::optional<std::size_t> ProjectTreeItemModel::dropDestination(const DragPayload& payload,
                                                                 int row,
                                                                 const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return std::nullopt;
    }
    const Kind target = kindOf(parent);
    if (payload.kind == Kind::project) {
        if (target == Kind::root) {
            return static_cast<std::size_t>(row < 0 ? rowCount(parent) : row);
        }
        // Dropped onto a project or one of its filters: before that project.
        const int projectRow = target == Kind::project ? parent.row() : parent.parent().row();
        return static_cast<std::size_t>(projectRow);
    }
    if (target == Kind::project && parent.row() == payload.projectRow) {
        return static_cast<std::size_t>(row < 0 ? rowCount(parent) : row);
    }
    if (target == Kind::filter && parent.parent().row() == payload.projectRow) {
        return static_cast<std::size_t>(parent.row());
    }
    return std::nullopt;
}

bool ProjectTreeItemModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                           int, const QModelIndex& parent) const {
    if (action != Qt::MoveAction) {
        return false;
    }
    const auto payload = payloadOf(data);
    return payload && dropDestination(*payload, row, parent);
}

bool ProjectTreeItemModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int,
                                        const QModelIndex& parent) {
    if (action != Qt::MoveAction) {
        return false;
    }
    const auto payload = payloadOf(data);
    const auto destination = payload ? dropDestination(*payload, row, parent) : std::nullopt;
    if (!destination) {
        return false;
    }
    if (payload->kind == Kind::filter) {
        tree_.moveFilters(projectAt(payload->projectRow).id, payload->rows, *destination);
        return true;
    }
    // Rows count the shown projects; the tree counts all of them, hidden archived ones too.
    std::vector<std::size_t> offsets;
    for (const std::size_t shownRow : payload->rows) {
        offsets.push_back(shownProjects_[shownRow]);
    }
    const std::size_t target = *destination < shownProjects_.size() ? shownProjects_[*destination]
                                                                    : tree_.projects().size();
    tree_.moveProjects(offsets, target);
    return true;
}

}  // namespace kivo
