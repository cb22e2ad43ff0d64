#pragma once

#include <QUuid>
#include <QWidget>
#include <vector>

#include "gui/menu_items.h"

QT_BEGIN_NAMESPACE
class QListWidget;
class QMenu;
class QToolButton;
class QTreeView;
QT_END_NAMESPACE

namespace kivo {

class ProjectTreeItemModel;
class ProjectTreeViewModel;

// The sidebar: the five sections, then the project tree with its durations. The tree's
// selection decides what the reports count; projects and tags are reordered by dragging.
class SidebarView : public QWidget {
    Q_OBJECT

public:
    SidebarView(ProjectTreeViewModel& tree, QWidget* parent = nullptr);

    MenuType section() const;
    void selectSection(MenuType type);

    QTreeView& treeView() const { return *treeView_; }
    ProjectTreeItemModel& treeModel() const { return *model_; }
    QToolButton& archivedToggle() const { return *archivedToggle_; }

Q_SIGNALS:
    void sectionChanged(MenuType type);
    // The ids of the selected rows (root, projects, tags), in the order they are listed.
    void treeSelectionChanged(const std::vector<QUuid>& ids);
    // The context menu of the row `id` is about to open: listeners add their commands to `menu`.
    void treeMenuRequested(QMenu* menu, const QUuid& id, bool isProject, bool isFilter);

private:
    void restoreExpansion();
    void rememberExpansion(const QModelIndex& index, bool isExpanded);
    void emitTreeSelection();
    void showTreeMenu(const QPoint& position);
    void updateArchivedToggle();

    ProjectTreeViewModel& tree_;
    QListWidget* sections_ = nullptr;
    QTreeView* treeView_ = nullptr;
    ProjectTreeItemModel* model_ = nullptr;
    QToolButton* archivedToggle_ = nullptr;
    bool isRestoringExpansion_ = false;
};

// "Show Archived Project" while archived projects are hidden, "Hide Archived Project" while shown.
QString archivedToggleText(bool isShowArchivedProject);

}  // namespace kivo
