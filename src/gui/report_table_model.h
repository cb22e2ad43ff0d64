#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>

#include "gui/report_rows.h"

namespace kivo {

// A report's table as an item model: name (with the application's icon in the applications
// report), duration label and share of the total; the tags report adds the project, which the
// compact layout folds into the name. Sortable by every column.
class ReportTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Role { keyRole = Qt::UserRole + 1, durationRole };

    explicit ReportTableModel(ReportKind kind, QObject* parent = nullptr);

    // Icons of the applications by bundle id; a missing one shows the unknown-application glyph.
    void setIcons(const QHash<QString, QIcon>* icons) { icons_ = icons; }
    // Rows are matched to the shown ones by key and changed in place (removed, added, moved,
    // updated), so that a view keeps its selection and scroll position across a refresh.
    void setRows(std::vector<ReportRow> rows, std::int64_t durationTotal);
    void setIsCompactColumns(bool value);
    bool isCompactColumns() const { return isCompactColumns_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // The column that shows the duration label.
    int durationColumn() const;

private:
    bool hasProjectColumn() const;
    void sortRows(std::vector<ReportRow>& rows) const;
    void removeRowsNotIn(const std::vector<ReportRow>& rows);
    void appendRowsNotShown(const std::vector<ReportRow>& rows);
    // `rows` holds the same keys as the shown rows.
    void moveToOrderOf(std::vector<ReportRow> rows);

    ReportKind kind_;
    const QHash<QString, QIcon>* icons_ = nullptr;
    QIcon unknownIcon_;
    std::vector<ReportRow> rows_;
    std::int64_t durationTotal_ = 1;
    bool isCompactColumns_ = false;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::DescendingOrder;
};

}  // namespace kivo
