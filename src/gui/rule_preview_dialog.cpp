#include "gui/rule_preview_dialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "model/record_store.h"
#include "tree/duration_label.h"

namespace kivo {

namespace {

QUuid unassignedFilterId(RecordStore& store) {
    for (const Filter& filter : store.fetch<Filter>(live())) {
        if (filter.isNameChangeOnly) {
            return filter.id;
        }
    }
    return {};
}

QString durationText(std::int64_t seconds) {
    const QString label = formatDurationLabel(seconds).trimmed();
    return label.isEmpty() ? QStringLiteral("0m") : label;
}

QTableWidgetItem* cell(const QString& text, Qt::Alignment alignment) {
    auto* item = new QTableWidgetItem(text);
    item->setTextAlignment(alignment | Qt::AlignVCenter);
    return item;
}

}  // namespace

RulePreviewDialog::RulePreviewDialog(RecordStore& store, const Clock& clock, const Filter& rule,
                                     QDate today, int days, QWidget* parent)
    : QDialog(parent), store_(store), clock_(clock) {
    setObjectName(QStringLiteral("ApplyToPastTimeDialog"));
    setAccessibleName(QStringLiteral("ApplyToPastTimeDialog"));
    setWindowTitle(QStringLiteral("Apply to past time"));
    preview_ = previewRule(store, rule, unassignedFilterId(store), today.addDays(1 - days), today);

    auto* heading = new QLabel(
        QStringLiteral("<b>%1</b>: unassigned time of the last %2 days that this tag's rules "
                       "now accept. Nothing is changed until you apply.")
            .arg(rule.tagName.toHtmlEscaped())
            .arg(days));
    heading->setWordWrap(true);
    std::size_t activityCount = 0;
    for (const RulePreviewDay& day : preview_.days) {
        activityCount += static_cast<std::size_t>(day.activityCount);
    }
    summary_ =
        new QLabel(preview_.moves.empty() ? QStringLiteral("No unassigned activity matches.")
                                          : QStringLiteral("%1 activities over %2 days, %3 in all.")
                                                .arg(activityCount)
                                                .arg(preview_.days.size())
                                                .arg(durationText(preview_.durationTotal)));
    summary_->setAccessibleName(QStringLiteral("PreviewSummary"));

    dayTable_ = new QTableWidget(static_cast<int>(preview_.days.size()), 3);
    dayTable_->setAccessibleName(QStringLiteral("PreviewDays"));
    dayTable_->setHorizontalHeaderLabels(
        {QStringLiteral("Day"), QStringLiteral("Activities"), QStringLiteral("Duration")});
    dayTable_->verticalHeader()->hide();
    dayTable_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    dayTable_->setSelectionMode(QAbstractItemView::NoSelection);
    dayTable_->setFocusPolicy(Qt::NoFocus);
    dayTable_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    const QLocale locale;
    int row = 0;
    // Latest first, as the user thinks back from today.
    for (auto day = preview_.days.rbegin(); day != preview_.days.rend(); ++day, ++row) {
        dayTable_->setItem(
            row, 0,
            cell(locale.toString(day->date, QStringLiteral("ddd yyyy-MM-dd")), Qt::AlignLeft));
        dayTable_->setItem(row, 1, cell(QString::number(day->activityCount), Qt::AlignRight));
        dayTable_->setItem(row, 2, cell(durationText(day->duration), Qt::AlignRight));
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    applyButton_ = buttons->addButton(QStringLiteral("Apply"), QDialogButtonBox::AcceptRole);
    applyButton_->setAccessibleName(QStringLiteral("ApplyToPastTimeButton"));
    applyButton_->setEnabled(!preview_.moves.empty());
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(applyButton_, &QPushButton::clicked, this, [this] {
        if (applyPreview()) {
            accept();
        }
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(summary_);
    layout->addWidget(dayTable_, 1);
    layout->addWidget(buttons);
    resize(460, 420);
}

bool RulePreviewDialog::applyPreview() {
    try {
        const std::size_t moved = applyRulePreview(store_, preview_, clock_.now());
        Q_EMIT activitiesMoved(moved);
        return true;
    } catch (const StoreError& error) {
        QMessageBox::warning(this, QStringLiteral("Apply to past time"),
                             QStringLiteral("The activities could not be moved: %1")
                                 .arg(QString::fromUtf8(error.what())));
        return false;
    }
}

}  // namespace kivo
