#include "reports/productivity.h"

namespace kivo {

void Productivity::setValue(std::int64_t value) {
    if (value != value_) {
        value_ = value;
        Q_EMIT valueChanged(value);
    }
}

void Productivity::setDurationToday(const QString& text) {
    if (text != durationToday_) {
        durationToday_ = text;
        Q_EMIT durationTodayChanged(text);
    }
}

}  // namespace kivo
