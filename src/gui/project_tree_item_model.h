#pragma once

#include <QAbstractItemModel>
#include <QUuid>
#include <optional>
#include <vector>

namespace kivo {

class ProjectTreeViewModel;
struct ProjectTreeItem;

// The sidebar tree as an item model over the project tree: one root row with the total, the
// projects under it, each project's filters under the project. Two columns: name and duration
// label. Projects and filters can be dragged to a new place (filters only within their project);
// a drop moves them in the tree, which then saves itself.
class ProjectTreeItemModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { nameColumn = 0, durationColumn = 1, columnCount_ = 2 };
    enum Role { idRole = Qt::UserRole + 1, kindRole, isArchivedRole };
    enum class Kind { root, project, filter };

    explicit ProjectTreeItemModel(ProjectTreeViewModel& tree, QObject* parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    QModelIndex rootIndex() const { return index(0, nameColumn); }
    QModelIndex projectIndex(int projectRow) const;
    Kind kindOf(const QModelIndex& index) const;
    QUuid idOf(const QModelIndex& index) const;

private:
    // What a drag carries: the rows and, for filters, the project they belong to.
    struct DragPayload {
        Kind kind = Kind::project;
        int projectRow = -1;
        std::vector<std::size_t> rows;
    };

    void followTree();
    // Positions in the tree's project list of the projects shown (archived ones only while the
    // tree shows them).
    std::vector<std::size_t> visibleProjects() const;
    std::vector<std::vector<QUuid>> shape() const;
    const ProjectTreeItem& projectAt(int row) const;
    std::optional<DragPayload> payloadOf(const QMimeData* data) const;
    // The place a drop at (`row`, `parent`) puts the payload: the destination offset, or none
    // where the payload cannot go.
    std::optional<std::size_t> dropDestination(const DragPayload& payload, int row,
                                               const QModelIndex& parent) const;

    ProjectTreeViewModel& tree_;
    // Ids of the projects and their filters as the views last saw them: a change of durations,
    // names or flags keeps the rows, any other change resets the model.
    std::vector<std::vector<QUuid>> shownShape_;
    std::vector<std::size_t> shownProjects_;
};

}  // namespace kivo
