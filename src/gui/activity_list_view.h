#pragma once

#include <QDate>
#include <QHash>
#include <QIcon>
#include <QTimer>
#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "reports/activity_list.h"
#include "tree/report_selection.h"

QT_BEGIN_NAMESPACE
class QBarSet;
class QCategoryAxis;
class QChartView;
class QLabel;
class QMenu;
class QToolButton;
class QTreeView;
class QValueAxis;
QT_END_NAMESPACE

namespace kivo {

class ActivityListModel;
class ActivityLister;
class Clock;
class RecordStore;

// What was recorded in the selected range, row by row: the grouped activity list with its
// hourly histogram, and the actions that fix miscategorised time (assign to a tag, delete,
// make a tag from a row, apply a tag's rules to past unassigned time).
class ActivityListView : public QWidget {
    Q_OBJECT

public:
    ActivityListView(RecordStore& store, const Clock& clock, const QHash<QString, QIcon>& icons,
                     QWidget* parent = nullptr);
    ~ActivityListView() override;

    // Lists the activities of `query` in the background, naming tags and projects as the tree
    // does; the rows shown until then stay, and so do the actions on them. When the list comes
    // (listed()), the selected groups and the scroll position stay where the rows still exist.
    void refresh(const ActivityListQuery& query, const ReportSelection& selection);
    // Whether the newest refresh's list has yet to come.
    bool isListing() const;

    void setIsShowTimeEntries(bool value);
    bool isShowTimeEntries() const;
    void setIsDetailUnified(bool value);

    ActivityListModel& model() const { return *model_; }
    QTreeView& list() const { return *list_; }
    QChartView& histogram() const { return *histogram_; }
    std::int64_t durationTotal() const { return durationTotal_; }

    // The activities of the selected rows (a group row stands for all its entries).
    std::vector<QUuid> selectedActivityIds() const;
    // The actions of the buttons, without the confirmation the delete button asks for.
    void assignSelected(QUuid projectId, QUuid filterId);
    void deleteSelected();
    void createFilterFromSelected();
    // Opens "Apply to past time" for the tag `filterId`.
    void previewRule(QUuid filterId);
    // The same after a tag was made or its rules saved, but only when the rules now accept some
    // unassigned time: a save that changes nothing in the past asks nothing.
    void offerPastTime(QUuid filterId);

protected:
    void resizeEvent(QResizeEvent* event) override;

Q_SIGNALS:
    // Activities were moved or deleted: the tree, reports and score must follow.
    void activitiesChanged();
    // A new tag made from a row, not yet stored, for the filter editor to open.
    void createFilterRequested(const kivo::Filter& prefilled);
    void isShowTimeEntriesToggled(bool value);
    void isDetailUnifiedToggled(bool value);
    // The newest refresh's list is shown (or could not be read, which the total then says).
    void listed();

private:
    void show(ActivityList list);
    void showFailure(const QString& reason);
    void showPreview(QUuid filterId, bool onlyWhenSomethingMoves);
    QToolButton* actionButton(const QString& text, const QString& name, const QString& icon);
    void fillTagMenu(QMenu& menu, const std::function<void(QUuid, QUuid)>& onChosen) const;
    void updateHistogram();
    void labelHours();
    void updateButtons();
    void runStoreChange(const std::function<void()>& change);

    RecordStore& store_;
    const Clock& clock_;
    ActivityListModel* model_ = nullptr;
    QTreeView* list_ = nullptr;
    QChartView* histogram_ = nullptr;
    QBarSet* hours_ = nullptr;
    QCategoryAxis* hourAxis_ = nullptr;
    QValueAxis* minutesAxis_ = nullptr;
    QLabel* totalLabel_ = nullptr;
    // Greys the total when a list takes long enough to be noticed; the window's refresh every few
    // seconds would otherwise make it blink.
    QTimer listingHint_;
    QToolButton* assignButton_ = nullptr;
    QToolButton* deleteButton_ = nullptr;
    QToolButton* createFilterButton_ = nullptr;
    QToolButton* pastTimeButton_ = nullptr;
    QToolButton* timeEntriesToggle_ = nullptr;
    QToolButton* unifiedToggle_ = nullptr;
    ActivityListQuery query_;
    ReportSelection selection_;
    std::array<double, 24> minutesPerHour_{};
    std::int64_t durationTotal_ = 0;
    std::unique_ptr<ActivityLister> lister_;  // last, so that it stops before the rest goes
};

}  // namespace kivo
