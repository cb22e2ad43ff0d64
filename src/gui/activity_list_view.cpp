#include "gui/activity_list_view.h"

#include <QBarSeries>
#include <QBarSet>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QFont>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QSet>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>
#include <cmath>

#include "gui/activity_list_model.h"
#include "gui/activity_lister.h"
#include "gui/chart_style.h"
#include "gui/icons.h"
#include "gui/rule_preview_dialog.h"
#include "model/activity_moves.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

// How far back "Apply to past time" looks.
constexpr int pastTimeDays = 365;

QToolButton* toggleButton(const QString& text, const QString& name, const QString& tip) {
    auto* button = new QToolButton;
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(name);
    button->setObjectName(name);
    button->setCheckable(true);
    button->setAutoRaise(true);
    return button;
}

}  // namespace

ActivityListView::ActivityListView(RecordStore& store, const Clock& clock,
                                   const QHash<QString, QIcon>& icons, QWidget* parent)
    : QWidget(parent), store_(store), clock_(clock) {
    setObjectName(QStringLiteral("ActivityListView"));
    setAccessibleName(QStringLiteral("ActivityListView"));

    model_ = new ActivityListModel(this);
    model_->setIcons(&icons);
    list_ = new QTreeView;
    list_->setAccessibleName(QStringLiteral("ActivityList"));
    list_->setModel(model_);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setUniformRowHeights(true);
    list_->setAlternatingRowColors(true);
    list_->setRootIsDecorated(false);
    list_->setIconSize(QSize(18, 18));
    auto* header = list_->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(ActivityListModel::titleColumn, QHeaderView::Stretch);
    for (int column = ActivityListModel::domainColumn; column < ActivityListModel::columnTotal;
         ++column) {
        header->setSectionResizeMode(column, QHeaderView::Interactive);
    }
    header->setMinimumSectionSize(40);
    header->resizeSection(ActivityListModel::domainColumn, 130);
    header->resizeSection(ActivityListModel::tagColumn, 100);
    header->resizeSection(ActivityListModel::projectColumn, 90);
    header->resizeSection(ActivityListModel::durationColumn, 75);
    header->resizeSection(ActivityListModel::entriesColumn, 55);
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ActivityListView::updateButtons);

    assignButton_ = actionButton(QStringLiteral("Assign"), QStringLiteral("ActivityAssignButton"),
                                 QStringLiteral("tag"));
    assignButton_->setToolTip(QStringLiteral("Give the selected rows to a tag"));
    auto* assignMenu = new QMenu(assignButton_);
    connect(assignMenu, &QMenu::aboutToShow, this, [this, assignMenu] {
        fillTagMenu(*assignMenu,
                    [this](QUuid project, QUuid filter) { assignSelected(project, filter); });
    });
    assignButton_->setMenu(assignMenu);
    assignButton_->setPopupMode(QToolButton::InstantPopup);

    deleteButton_ = actionButton(QStringLiteral("Delete"), QStringLiteral("ActivityDeleteButton"),
                                 QStringLiteral("trash"));
    deleteButton_->setToolTip(QStringLiteral("Delete the selected activities"));
    connect(deleteButton_, &QToolButton::clicked, this, [this] {
        const auto ids = selectedActivityIds();
        if (QMessageBox::question(
                this, QStringLiteral("Delete activities"),
                QStringLiteral("Delete %1 recorded activities? Their time leaves every total.")
                    .arg(ids.size())) == QMessageBox::Yes) {
            deleteSelected();
        }
    });

    createFilterButton_ =
        actionButton(QStringLiteral("Create Tag"), QStringLiteral("ActivityCreateFilterButton"),
                     QStringLiteral("plus"));
    createFilterButton_->setToolTip(QStringLiteral("Make a new tag from the selected row"));
    connect(createFilterButton_, &QToolButton::clicked, this,
            &ActivityListView::createFilterFromSelected);

    pastTimeButton_ =
        actionButton(QStringLiteral("Apply to past time"),
                     QStringLiteral("ActivityApplyToPastTimeButton"), QStringLiteral("history"));
    pastTimeButton_->setToolTip(
        QStringLiteral("Show which unassigned time a tag's rules now accept, and move it"));
    auto* pastMenu = new QMenu(pastTimeButton_);
    connect(pastMenu, &QMenu::aboutToShow, this, [this, pastMenu] {
        fillTagMenu(*pastMenu, [this](QUuid, QUuid filter) { previewRule(filter); });
    });
    pastTimeButton_->setMenu(pastMenu);
    pastTimeButton_->setPopupMode(QToolButton::InstantPopup);

    timeEntriesToggle_ =
        toggleButton(QStringLiteral("Time Entries"), QStringLiteral("isShowTimeEntries"),
                     QStringLiteral("Show each group's time entries"));
    connect(timeEntriesToggle_, &QToolButton::toggled, this, [this](bool value) {
        setIsShowTimeEntries(value);
        Q_EMIT isShowTimeEntriesToggled(value);
    });
    unifiedToggle_ = toggleButton(QStringLiteral("Unified"), QStringLiteral("isDetailUnified"),
                                  QStringLiteral("Show only the activity list in the detail area"));
    connect(unifiedToggle_, &QToolButton::toggled, this, &ActivityListView::isDetailUnifiedToggled);

    totalLabel_ = new QLabel;
    totalLabel_->setAccessibleName(QStringLiteral("ActivityTotal"));
    listingHint_.setSingleShot(true);
    listingHint_.setInterval(std::chrono::milliseconds(300));
    connect(&listingHint_, &QTimer::timeout, totalLabel_,
            [this] { totalLabel_->setEnabled(false); });
    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(4, 0, 4, 0);
    bar->addWidget(new QLabel(QStringLiteral("<b>Activities</b>")));
    bar->addWidget(totalLabel_);
    bar->addStretch();
    for (QToolButton* button : {assignButton_, deleteButton_, createFilterButton_, pastTimeButton_,
                                timeEntriesToggle_, unifiedToggle_}) {
        bar->addWidget(button);
    }

    hours_ = new QBarSet(QStringLiteral("Minutes"));
    hours_->setColor(seriesColors().front());
    hours_->setBorderColor(seriesColors().front());
    auto* series = new QBarSeries;
    series->append(hours_);
    series->setBarWidth(0.8);
    auto* chart = new QChart;
    styleChart(*chart);
    chart->setTitle(QStringLiteral("Minutes per hour of the day"));
    chart->addSeries(series);
    // Bar i stands at value i; the hours are named at their bars.
    hourAxis_ = new QCategoryAxis;
    hourAxis_->setRange(-0.5, 23.5);
    hourAxis_->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    hourAxis_->setGridLineVisible(false);
    QFont hourFont = hourAxis_->labelsFont();
    hourFont.setPointSizeF(hourFont.pointSizeF() * 0.8);
    hourAxis_->setLabelsFont(hourFont);
    labelHours();
    chart->addAxis(hourAxis_, Qt::AlignBottom);
    series->attachAxis(hourAxis_);
    minutesAxis_ = new QValueAxis;
    minutesAxis_->setLabelFormat(QStringLiteral("%d"));
    chart->addAxis(minutesAxis_, Qt::AlignLeft);
    series->attachAxis(minutesAxis_);
    chart->legend()->hide();
    chart->setMargins(QMargins(4, 4, 4, 4));
    histogram_ = new QChartView(chart);
    prepareChartView(*histogram_);
    histogram_->setAccessibleName(QStringLiteral("ActivityHistogram"));
    histogram_->setMinimumHeight(130);
    histogram_->setMaximumHeight(200);

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(list_);
    splitter->addWidget(histogram_);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->addLayout(bar);
    layout->addWidget(splitter, 1);
    updateHistogram();
    updateButtons();

    lister_ = std::make_unique<ActivityLister>(
        store.path(), [this](ActivityList list) { show(std::move(list)); },
        [this](const QString& reason) { showFailure(reason); });
}

ActivityListView::~ActivityListView() = default;

QToolButton* ActivityListView::actionButton(const QString& text, const QString& name,
                                            const QString& icon) {
    auto* button = new QToolButton;
    button->setText(text);
    button->setAccessibleName(name);
    button->setObjectName(name);
    button->setIcon(glyphIcon(QStringLiteral("kivo-") + icon, icon));
    // Icons only until the view is known to be wide enough for the texts (resizeEvent).
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setAutoRaise(true);
    return button;
}

void ActivityListView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // Where the row of buttons would not fit, they keep their icons and tooltips only.
    const auto style = width() < 900 ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon;
    for (QToolButton* button :
         {assignButton_, deleteButton_, createFilterButton_, pastTimeButton_}) {
        button->setToolButtonStyle(style);
    }
    labelHours();
}

void ActivityListView::labelHours() {
    // Where two digits do not fit under every bar, every third hour is named, rather than all
    // of them cut to dots.
    constexpr int valueAxisWidth = 60;
    const int perHour = (width() - valueAxisWidth) / 24;
    const int widest =
        QFontMetrics(hourAxis_->labelsFont()).horizontalAdvance(QStringLiteral("23"));
    const int step = perHour >= 2 * widest ? 1 : 3;
    if (hourAxis_->count() == 24 / step) {
        return;
    }
    for (const QString& label : hourAxis_->categoriesLabels()) {
        hourAxis_->remove(label);
    }
    for (int hour = 0; hour < 24; hour += step) {
        hourAxis_->append(QString::number(hour), hour);
    }
}

void ActivityListView::refresh(const ActivityListQuery& query, const ReportSelection& selection) {
    query_ = query;
    selection_ = selection;
    // A quiet hint that the rows are about to change.
    listingHint_.start();
    lister_->request(query_);
}

bool ActivityListView::isListing() const {
    return lister_->isListing();
}

void ActivityListView::show(ActivityList list) {
    // The selection as it is now: the user may have changed it while the list was computed.
    QSet<QString> selectedKeys;
    for (const QModelIndex& row : list_->selectionModel()->selectedRows()) {
        if (!row.parent().isValid()) {
            selectedKeys.insert(row.data(ActivityListModel::groupKeyRole).toString());
        }
    }
    // And the groups whose time entries the user folded away, which the refresh keeps folded.
    QSet<QString> collapsedKeys;
    for (int row = 0; model_->isShowTimeEntries() && row < model_->rowCount(); ++row) {
        const QModelIndex index = model_->index(row, 0);
        if (!list_->isExpanded(index)) {
            collapsedKeys.insert(index.data(ActivityListModel::groupKeyRole).toString());
        }
    }
    const int scroll = list_->verticalScrollBar()->value();

    minutesPerHour_ = list.minutesPerHour;
    durationTotal_ = list.durationTotal;
    model_->setNames(selection_.tagNames, selection_.projectNames);
    model_->setGroups(std::move(list.groups));
    if (model_->isShowTimeEntries()) {
        list_->expandAll();
    }
    QItemSelection kept;
    for (int row = 0; row < model_->rowCount(); ++row) {
        const QModelIndex index = model_->index(row, 0);
        const QString key = index.data(ActivityListModel::groupKeyRole).toString();
        if (selectedKeys.contains(key)) {
            kept.select(index, model_->index(row, ActivityListModel::columnTotal - 1));
        }
        if (collapsedKeys.contains(key)) {
            list_->collapse(index);
        }
    }
    list_->selectionModel()->select(kept, QItemSelectionModel::ClearAndSelect);
    list_->verticalScrollBar()->setValue(scroll);
    listingHint_.stop();
    totalLabel_->setEnabled(true);
    totalLabel_->setText(QStringLiteral("%1 rows, %2")
                             .arg(model_->groups().size())
                             .arg(formatDurationLabel(durationTotal_).trimmed()));
    updateHistogram();
    updateButtons();
    Q_EMIT listed();
}

void ActivityListView::showFailure(const QString& reason) {
    // The rows shown before stay: they are what the actions act on.
    listingHint_.stop();
    totalLabel_->setEnabled(true);
    totalLabel_->setText(QStringLiteral("The activities could not be read: %1").arg(reason));
    Q_EMIT listed();
}

void ActivityListView::setIsShowTimeEntries(bool value) {
    timeEntriesToggle_->setChecked(value);
    model_->setIsShowTimeEntries(value);
    list_->setRootIsDecorated(value);
    if (value) {
        list_->expandAll();
    }
}

bool ActivityListView::isShowTimeEntries() const {
    return model_->isShowTimeEntries();
}

void ActivityListView::setIsDetailUnified(bool value) {
    const QSignalBlocker quiet(unifiedToggle_);
    unifiedToggle_->setChecked(value);
}

std::vector<QUuid> ActivityListView::selectedActivityIds() const {
    std::vector<QUuid> ids;
    QSet<QUuid> seen;
    for (const QModelIndex& row : list_->selectionModel()->selectedRows()) {
        for (const QUuid& id : row.data(ActivityListModel::activityIdsRole).value<QList<QUuid>>()) {
            if (!seen.contains(id)) {
                seen.insert(id);
                ids.push_back(id);
            }
        }
    }
    return ids;
}

void ActivityListView::runStoreChange(const std::function<void()>& change) {
    try {
        change();
    } catch (const StoreError& error) {
        QMessageBox::warning(this, QStringLiteral("Activities"),
                             QStringLiteral("The change could not be saved: %1")
                                 .arg(QString::fromUtf8(error.what())));
        return;
    }
    Q_EMIT activitiesChanged();
    refresh(query_, selection_);
}

void ActivityListView::assignSelected(QUuid projectId, QUuid filterId) {
    const auto ids = selectedActivityIds();
    if (ids.empty()) {
        return;
    }
    runStoreChange([&] { assignActivities(store_, ids, projectId, filterId, clock_.now()); });
}

void ActivityListView::deleteSelected() {
    const auto ids = selectedActivityIds();
    if (ids.empty()) {
        return;
    }
    runStoreChange([&] { deleteActivities(store_, ids, clock_.now()); });
}

void ActivityListView::createFilterFromSelected() {
    const QModelIndexList rows = list_->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        return;
    }
    const ActivityGroup* group = model_->groupAt(rows.front());
    if (group == nullptr) {
        return;
    }
    Q_EMIT createFilterRequested(filterPrefilledFrom(*group, group->projectId, clock_.now()));
}

void ActivityListView::previewRule(QUuid filterId) {
    showPreview(filterId, false);
}

void ActivityListView::offerPastTime(QUuid filterId) {
    showPreview(filterId, true);
}

void ActivityListView::showPreview(QUuid filterId, bool onlyWhenSomethingMoves) {
    const auto filters = store_.fetch<Filter>(live());
    const auto rule = std::find_if(filters.begin(), filters.end(),
                                   [&](const Filter& filter) { return filter.id == filterId; });
    if (rule == filters.end()) {
        return;
    }
    auto* dialog =
        new RulePreviewDialog(store_, clock_, *rule, localDateOf(clock_.now()), pastTimeDays, this);
    if (onlyWhenSomethingMoves && dialog->preview().moves.empty()) {
        delete dialog;
        return;
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &RulePreviewDialog::activitiesMoved, this, [this] {
        Q_EMIT activitiesChanged();
        refresh(query_, selection_);
    });
    dialog->open();
}

void ActivityListView::fillTagMenu(QMenu& menu,
                                   const std::function<void(QUuid, QUuid)>& onChosen) const {
    menu.clear();
    for (const ProjectTreeItem& project : selection_.projects) {
        if (project.isArchived && !selection_.isShowArchivedProject) {
            continue;
        }
        QMenu* tags = menu.addMenu(project.name);
        for (const FilterTreeItem& filter : project.filters) {
            tags->addAction(filter.name, [onChosen, project = project.id, id = filter.id] {
                onChosen(project, id);
            });
        }
        tags->setEnabled(!project.filters.empty());
    }
}

void ActivityListView::updateHistogram() {
    QList<qreal> minutes;
    double highest = 0.0;
    for (const double value : minutesPerHour_) {
        minutes.append(value);
        highest = std::max(highest, value);
    }
    hours_->remove(0, hours_->count());
    hours_->append(minutes);
    // A round top a little above the highest bar.
    const double step = highest <= 10 ? 2 : highest <= 60 ? 10 : highest <= 300 ? 60 : 120;
    minutesAxis_->setRange(0.0, std::max(step, std::ceil(highest / step) * step));
    minutesAxis_->setTickCount(static_cast<int>(minutesAxis_->max() / step) + 1);
}

void ActivityListView::updateButtons() {
    const bool hasSelection = list_->selectionModel()->hasSelection();
    assignButton_->setEnabled(hasSelection);
    deleteButton_->setEnabled(hasSelection);
    createFilterButton_->setEnabled(hasSelection);
}

}  // namespace kivo
