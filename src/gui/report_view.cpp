#include "gui/report_view.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QResizeEvent>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include "gui/report_chart_view.h"
#include "gui/report_table_model.h"
#include "model/record_store.h"
#include "tree/duration_label.h"
#include "tree/report_selection.h"

namespace kivo {

namespace {

QString viewName(ReportKind kind) {
    switch (kind) {
        case ReportKind::applications:
            return QStringLiteral("ApplicationView");
        case ReportKind::websites:
            return QStringLiteral("WebsiteView");
        case ReportKind::tags:
            return QStringLiteral("FilterView");
        case ReportKind::projects:
            return QStringLiteral("ProjectView");
    }
    return {};
}

QString title(ReportKind kind) {
    switch (kind) {
        case ReportKind::applications:
            return QStringLiteral("Applications");
        case ReportKind::websites:
            return QStringLiteral("Websites");
        case ReportKind::tags:
            return QStringLiteral("Tags");
        case ReportKind::projects:
            return QStringLiteral("Projects");
    }
    return {};
}

bool isSameChart(const ReportRows& a, const ReportRows& b) {
    return a.durationTotal == b.durationTotal &&
           std::equal(a.chart.begin(), a.chart.end(), b.chart.begin(), b.chart.end(),
                      [](const ReportRow& x, const ReportRow& y) {
                          return x.key == y.key && x.name == y.name && x.project == y.project &&
                                 x.duration == y.duration;
                      });
}

// Wide enough for the table and the chart side by side.
constexpr int sideBySideWidth = 760;

QString tableName(ReportKind kind) {
    switch (kind) {
        case ReportKind::applications:
            return QStringLiteral("ApplicationTable");
        case ReportKind::websites:
            return QStringLiteral("WebsiteTable");
        case ReportKind::tags:
            return QStringLiteral("FilterTable");
        case ReportKind::projects:
            return QStringLiteral("ProjectTable");
    }
    return {};
}

}  // namespace

ReportView::ReportView(ReportKind kind, const QHash<QString, QIcon>& icons, QWidget* parent)
    : QWidget(parent), kind_(kind) {
    setObjectName(viewName(kind));
    setAccessibleName(viewName(kind));
    model_ = new ReportTableModel(kind, this);
    model_->setIcons(&icons);

    table_ = new QTableView;
    table_->setObjectName(tableName(kind));
    table_->setAccessibleName(tableName(kind));
    table_->setModel(model_);
    table_->setSortingEnabled(true);
    table_->horizontalHeader()->setSortIndicatorShown(true);
    table_->horizontalHeader()->setSortIndicator(-1, Qt::DescendingOrder);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setAlternatingRowColors(true);
    table_->setShowGrid(false);
    table_->setWordWrap(false);
    table_->setTextElideMode(Qt::ElideRight);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setHighlightSections(false);
    table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table_->setMinimumWidth(260);
    table_->setMinimumHeight(120);
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ReportView::emitSelectionKeys);
    connect(model_, &QAbstractItemModel::modelReset, this, &ReportView::applyColumnLayout);

    chart_ = new ReportChartView(kind);

    auto* heading = new QLabel(title(kind));
    QFont font = heading->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.15);
    heading->setFont(font);
    totalLabel_ = new QLabel;
    totalLabel_->setAccessibleName(QStringLiteral("ReportTotal"));
    totalLabel_->setForegroundRole(QPalette::PlaceholderText);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(4, 2, 4, 2);
    header->addWidget(heading);
    header->addStretch();
    header->addWidget(totalLabel_);

    splitter_ = new QSplitter(Qt::Horizontal);
    splitter_->setChildrenCollapsible(false);
    splitter_->addWidget(table_);
    splitter_->addWidget(chart_);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addLayout(header);
    layout->addWidget(splitter_, 1);
    applyColumnLayout();
}

void ReportView::refresh(RecordStore& store, const ReportSelection& selection, QDate minDate,
                         QDate maxDate, const LiveActivities& live) {
    ReportRows rows = computeReportRows(kind_, store, selection, minDate, maxDate, live);
    model_->setRows(rows.table, rows.durationTotal);
    // The chart is drawn anew only when it changed: a refresh every few seconds would otherwise
    // rebuild it for nothing.
    if (!isChartDrawn_ || !isSameChart(rows, rows_)) {
        chart_->setRows(rows.chart, rows.durationTotal, isShowPieChart_);
        isChartDrawn_ = true;
    }
    rows_ = std::move(rows);
    std::int64_t shown = 0;
    for (const ReportRow& row : rows_.table) {
        shown += row.duration;
    }
    const QString total = formatDurationLabel(shown).trimmed();
    totalLabel_->setText(total.isEmpty() ? QString() : QStringLiteral("Total ") + total);
}

void ReportView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const auto orientation =
        event->size().width() >= sideBySideWidth ? Qt::Horizontal : Qt::Vertical;
    // Placed on the first resize too: the splitter starts side by side, and left to itself it
    // gives the table the larger part, which squeezes the chart's legend.
    if (orientation != splitter_->orientation() || !isSplitPlaced_) {
        isSplitPlaced_ = true;
        splitter_->setOrientation(orientation);
        table_->setMinimumWidth(orientation == Qt::Horizontal ? 260 : 0);
        // The chart and its legend need the larger part.
        const int length =
            orientation == Qt::Horizontal ? event->size().width() : event->size().height();
        splitter_->setSizes({length * 4 / 10, length * 6 / 10});
    }
}

void ReportView::setIsShowPieChart(bool value) {
    if (value != isShowPieChart_) {
        isShowPieChart_ = value;
        chart_->setRows(rows_.chart, rows_.durationTotal, isShowPieChart_);
    }
}

void ReportView::setIsCompactColumns(bool value) {
    model_->setIsCompactColumns(value);
}

void ReportView::applyColumnLayout() {
    const bool compact = model_->isCompactColumns();
    QHeaderView* header = table_->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    header->setMinimumSectionSize(compact ? 36 : 60);
    table_->verticalHeader()->setDefaultSectionSize(compact ? 22 : 30);
    table_->setIconSize(compact ? QSize(16, 16) : QSize(20, 20));
    table_->horizontalHeader()->setVisible(true);
}

void ReportView::emitSelectionKeys() {
    QStringList keys;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
        keys.append(index.data(ReportTableModel::keyRole).toString());
    }
    Q_EMIT selectionKeysChanged(keys);
}

}  // namespace kivo
