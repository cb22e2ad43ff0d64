#pragma once

#include <QDialog>

#include "reports/rule_preview.h"

QT_BEGIN_NAMESPACE
class QLabel;
class QPushButton;
class QTableWidget;
QT_END_NAMESPACE

namespace kivo {

class Clock;

// "Apply to past time": shows, before anything changes, which days of unassigned time a tag's
// rules now accept (activities and duration per day), and moves exactly those on "Apply".
class RulePreviewDialog : public QDialog {
    Q_OBJECT

public:
    // The unassigned time of the `days` days up to `today`.
    RulePreviewDialog(RecordStore& store, const Clock& clock, const Filter& rule, QDate today,
                      int days, QWidget* parent = nullptr);

    const RulePreview& preview() const { return preview_; }
    QTableWidget& dayTable() const { return *dayTable_; }
    QPushButton& applyButton() const { return *applyButton_; }

    // Moves the previewed activities; false (with a message shown) when the store refused.
    bool applyPreview();

Q_SIGNALS:
    void activitiesMoved(std::size_t count);

private:
    RecordStore& store_;
    const Clock& clock_;
    RulePreview preview_;
    QLabel* summary_ = nullptr;
    QTableWidget* dayTable_ = nullptr;
    QPushButton* applyButton_ = nullptr;
};

}  // namespace kivo
