#include "gui/date_picker_window.h"

#include <QCloseEvent>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/secondary_window.h"

namespace kivo {

namespace {

QDateEdit* dateEdit(QDate minDate, QDate maxDate, QDate value, const QString& name) {
    auto* edit = new QDateEdit;
    edit->setAccessibleName(name);
    edit->setCalendarPopup(true);
    edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    edit->setDateRange(minDate, maxDate);
    edit->setDate(value);
    return edit;
}

}  // namespace

DatePickerWindow::DatePickerWindow(QDate minDate, QDate maxDate, QDate from, QDate to,
                                   QWidget* owner)
    : QWidget(nullptr), maxDate_(maxDate) {
    setObjectName(QStringLiteral("DatePickerView"));
    setAccessibleName(QStringLiteral("DatePickerView"));
    makeSecondaryWindow(*this, owner, QStringLiteral("Date"), QSize(360, 220));
    setAttribute(Qt::WA_DeleteOnClose);

    fromEdit_ = dateEdit(minDate, maxDate, from, QStringLiteral("DateFromPicker"));
    toEdit_ = dateEdit(minDate, maxDate, to, QStringLiteral("DateToPicker"));
    // The range never runs backwards: moving one end past the other moves the other along.
    connect(fromEdit_, &QDateEdit::dateChanged, this, [this](QDate date) {
        if (toEdit_->date() < date) {
            toEdit_->setDate(date);
        }
    });
    connect(toEdit_, &QDateEdit::dateChanged, this, [this](QDate date) {
        if (fromEdit_->date() > date) {
            fromEdit_->setDate(date);
        }
    });

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("From"), fromEdit_);
    form->addRow(QStringLiteral("To"), toEdit_);

    auto* presets = new QHBoxLayout;
    const auto addPreset = [&](const QString& text, const QString& name, QDate first) {
        auto* button = new QPushButton(text);
        button->setAccessibleName(name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, first] { setRange(first, maxDate_); });
        presets->addWidget(button);
    };
    addPreset(QStringLiteral("Today"), QStringLiteral("DateTodayButton"), maxDate);
    addPreset(QStringLiteral("7 Days"), QStringLiteral("DateWeekButton"), maxDate.addDays(-6));
    addPreset(QStringLiteral("30 Days"), QStringLiteral("DateMonthButton"), maxDate.addDays(-29));
    addPreset(QStringLiteral("Year"), QStringLiteral("DateYearButton"), maxDate.addDays(-364));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Done"));
    buttons->button(QDialogButtonBox::Ok)->setAccessibleName(QStringLiteral("DateDoneButton"));
    buttons->button(QDialogButtonBox::Cancel)
        ->setAccessibleName(QStringLiteral("DateCancelButton"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QWidget::close);
    connect(buttons, &QDialogButtonBox::rejected, this, [this] {
        isCancelled_ = true;
        close();
    });

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(presets);
    layout->addStretch();
    layout->addWidget(buttons);
}

QDate DatePickerWindow::from() const {
    return fromEdit_->date();
}

QDate DatePickerWindow::to() const {
    return toEdit_->date();
}

void DatePickerWindow::setRange(QDate from, QDate to) {
    fromEdit_->setDate(from);
    toEdit_->setDate(to);
}

void DatePickerWindow::closeEvent(QCloseEvent* event) {
    if (!isCancelled_) {
        Q_EMIT rangeChosen(from(), to());
    }
    event->accept();
}

void DatePickerWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        isCancelled_ = true;
        close();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace kivo
