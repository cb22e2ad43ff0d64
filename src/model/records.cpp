#include "model/records.h"

namespace kivo {

QString logicalOperatorText(std::int64_t logicalOperator) {
    return logicalOperator == 0 ? QStringLiteral("AND") : QStringLiteral("OR");
}

QString ratingText(std::int64_t rating) {
    return QString::number(rating) + u'%';
}

}  // namespace kivo
