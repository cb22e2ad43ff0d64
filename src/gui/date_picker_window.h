#pragma once

#include <QDate>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QDateEdit;
QT_END_NAMESPACE

namespace kivo {

// The "Date" window: the first and last day of the range, within the allowed bounds, with
// shortcuts for common ranges. Closing it, other than by Cancel, hands the range back.
class DatePickerWindow : public QWidget {
    Q_OBJECT

public:
    DatePickerWindow(QDate minDate, QDate maxDate, QDate from, QDate to, QWidget* owner);

    QDate from() const;
    QDate to() const;
    void setRange(QDate from, QDate to);

Q_SIGNALS:
    void rangeChosen(QDate from, QDate to);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QDate maxDate_;
    QDateEdit* fromEdit_ = nullptr;
    QDateEdit* toEdit_ = nullptr;
    bool isCancelled_ = false;
};

}  // namespace kivo
