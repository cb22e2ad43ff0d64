#include "tree/duration_label.h"

namespace kivo {

QString formatDurationLabel(std::int64_t seconds) {
    if (seconds == 0) {
        return {};
    }
    if (seconds < 60) {
        return QStringLiteral(" <1m ");
    }
    if (seconds < 3600) {
        return u' ' + QString::number(seconds / 60) + u"m ";
    }
    return u' ' + QString::number(seconds / 3600) + u"h " + QString::number(seconds % 3600 / 60) +
           u"m ";
}

}  // namespace kivo
