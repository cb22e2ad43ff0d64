#include "gui/sidebar_view.h"

#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "gui/icons.h"
#include "gui/project_tree_item_model.h"
#include "tree/project_tree_view_model.h"

namespace kivo {

namespace {

QString themeNameOf(MenuType type) {
    switch (type) {
        case MenuType::projects:
            return QStringLiteral("folder");
        case MenuType::tags:
            return QStringLiteral("tag");
        case MenuType::applications:
            return QStringLiteral("application-x-executable");
        case MenuType::websites:
            return QStringLiteral("applications-internet");
        case MenuType::stats:
            return QStringLiteral("office-chart-bar");
    }
    return {};
}

QString glyphOf(MenuType type) {
    switch (type) {
        case MenuType::projects:
            return QStringLiteral("folder");
        case MenuType::tags:
            return QStringLiteral("tag");
        case MenuType::applications:
            return QStringLiteral("application");
        case MenuType::websites:
            return QStringLiteral("globe");
        case MenuType::stats:
            return QStringLiteral("chart-bar");
    }
    return {};
}

QLabel* heading(const QString& text) {
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setContentsMargins(8, 6, 0, 2);
    return label;
}

}  // namespace

QString archivedToggleText(bool isShowArchivedProject) {
    return isShowArchivedProject ? QStringLiteral("Hide Archived Project")
                                 : QStringLiteral("Show Archived Project");
}

SidebarView::SidebarView(ProjectTreeViewModel& tree, QWidget* parent)
    : QWidget(parent), tree_(tree) {
    setObjectName(QStringLiteral("Sidebar"));
    setAccessibleName(QStringLiteral("Sidebar"));

    sections_ = new QListWidget;
    sections_->setAccessibleName(QStringLiteral("SidebarSections"));
    sections_->setFrameShape(QFrame::NoFrame);
    sections_->setIconSize(QSize(18, 18));
    sections_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (const MenuItem& item : menuItems()) {
        auto* row = new QListWidgetItem(glyphIcon(themeNameOf(item.type), glyphOf(item.type)),
                                        item.name, sections_);
        row->setData(Qt::UserRole, static_cast<int>(item.type));
        row->setData(Qt::AccessibleTextRole, item.identifier);
        row->setSizeHint(QSize(0, 30));
    }
    sections_->setFixedHeight(30 * static_cast<int>(menuItems().size()) + 4);
    connect(sections_, &QListWidget::currentRowChanged, this,
            [this] { Q_EMIT sectionChanged(section()); });

    model_ = new ProjectTreeItemModel(tree_, this);
    treeView_ = new QTreeView;
    treeView_->setObjectName(QStringLiteral("ProjectTree"));
    treeView_->setAccessibleName(QStringLiteral("ProjectTree"));
    treeView_->setModel(model_);
    treeView_->setHeaderHidden(true);
    treeView_->setFrameShape(QFrame::NoFrame);
    treeView_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    treeView_->setDragDropMode(QAbstractItemView::InternalMove);
    treeView_->setDefaultDropAction(Qt::MoveAction);
    treeView_->setDropIndicatorShown(true);
    treeView_->setUniformRowHeights(true);
    // Rows a little taller than the font, so that a click lands where the user aims.
    treeView_->setStyleSheet(QStringLiteral("QTreeView::item { padding: 3px 0px; }"));
    treeView_->setIndentation(14);
    treeView_->setContextMenuPolicy(Qt::CustomContextMenu);
    treeView_->header()->setStretchLastSection(false);
    treeView_->header()->setSectionResizeMode(ProjectTreeItemModel::nameColumn,
                                              QHeaderView::Stretch);
    treeView_->header()->setSectionResizeMode(ProjectTreeItemModel::durationColumn,
                                              QHeaderView::ResizeToContents);
    connect(treeView_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SidebarView::emitTreeSelection);
    connect(model_, &QAbstractItemModel::modelReset, this, &SidebarView::restoreExpansion);
    connect(treeView_, &QTreeView::expanded, this,
            [this](const QModelIndex& index) { rememberExpansion(index, true); });
    connect(treeView_, &QTreeView::collapsed, this,
            [this](const QModelIndex& index) { rememberExpansion(index, false); });
    connect(treeView_, &QWidget::customContextMenuRequested, this, &SidebarView::showTreeMenu);

    archivedToggle_ = new QToolButton;
    archivedToggle_->setAccessibleName(QStringLiteral("ArchivedProjectToggle"));
    archivedToggle_->setAutoRaise(true);
    connect(archivedToggle_, &QToolButton::clicked, this,
            [this] { tree_.setIsShowArchivedProject(!tree_.isShowArchivedProject()); });
    connect(&tree_, &ProjectTreeViewModel::isShowArchivedProjectChanged, this,
            &SidebarView::updateArchivedToggle);
    updateArchivedToggle();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(2);
    layout->addWidget(heading(QStringLiteral("Reports")));
    layout->addWidget(sections_);
    layout->addWidget(heading(QStringLiteral("Projects and Tags")));
    layout->addWidget(treeView_, 1);
    layout->addWidget(archivedToggle_, 0, Qt::AlignLeft);
    restoreExpansion();
}

MenuType SidebarView::section() const {
    const QListWidgetItem* current = sections_->currentItem();
    return current ? static_cast<MenuType>(current->data(Qt::UserRole).toInt())
                   : MenuType::projects;
}

void SidebarView::selectSection(MenuType type) {
    sections_->setCurrentRow(static_cast<int>(type));
}

void SidebarView::restoreExpansion() {
    isRestoringExpansion_ = true;
    treeView_->expand(model_->rootIndex());
    for (int row = 0; row < model_->rowCount(model_->rootIndex()); ++row) {
        const QModelIndex project = model_->projectIndex(row);
        const QUuid id = model_->idOf(project);
        for (const auto& item : tree_.projects()) {
            if (item.id == id) {
                treeView_->setExpanded(project, item.isExpanded);
            }
        }
    }
    isRestoringExpansion_ = false;
}

void SidebarView::rememberExpansion(const QModelIndex& index, bool isExpanded) {
    if (isRestoringExpansion_ || model_->kindOf(index) != ProjectTreeItemModel::Kind::project) {
        return;
    }
    auto projects = tree_.projects();
    const QUuid id = model_->idOf(index);
    for (auto& project : projects) {
        if (project.id == id) {
            project.isExpanded = isExpanded;
        }
    }
    tree_.setProjects(std::move(projects));
}

void SidebarView::emitTreeSelection() {
    std::vector<QUuid> ids;
    for (const QModelIndex& index : treeView_->selectionModel()->selectedRows()) {
        ids.push_back(model_->idOf(index));
    }
    Q_EMIT treeSelectionChanged(ids);
}

void SidebarView::showTreeMenu(const QPoint& position) {
    const QModelIndex index = treeView_->indexAt(position);
    if (!index.isValid()) {
        return;
    }
    const auto kind = model_->kindOf(index);
    QMenu menu(this);
    Q_EMIT treeMenuRequested(&menu, model_->idOf(index),
                             kind == ProjectTreeItemModel::Kind::project,
                             kind == ProjectTreeItemModel::Kind::filter);
    if (kind == ProjectTreeItemModel::Kind::root) {
        menu.addAction(archivedToggleText(tree_.isShowArchivedProject()), this,
                       [this] { tree_.setIsShowArchivedProject(!tree_.isShowArchivedProject()); });
    }
    if (!menu.isEmpty()) {
        menu.exec(treeView_->viewport()->mapToGlobal(position));
    }
}

void SidebarView::updateArchivedToggle() {
    archivedToggle_->setText(archivedToggleText(tree_.isShowArchivedProject()));
}

}  // namespace kivo
