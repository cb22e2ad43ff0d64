#pragma once

#include <QObject>
#include <QString>
#include <cstdint>

namespace kivo {

// Today's productivity score and tracked time, shared by the main window and the menu-bar item.
// It shows 100 and no time until the first computation.
class Productivity : public QObject {
    Q_OBJECT
    Q_PROPERTY(qint64 value READ value WRITE setValue NOTIFY valueChanged)
    Q_PROPERTY(
        QString durationToday READ durationToday WRITE setDurationToday NOTIFY durationTodayChanged)

public:
    using QObject::QObject;

    std::int64_t value() const { return value_; }
    void setValue(std::int64_t value);
    const QString& durationToday() const { return durationToday_; }
    void setDurationToday(const QString& text);

Q_SIGNALS:
    void valueChanged(qint64 value);
    void durationTodayChanged(const QString& durationToday);

private:
    std::int64_t value_ = 100;
    QString durationToday_;
};

}  // namespace kivo
