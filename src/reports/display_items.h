#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>

namespace kivo {

// Rows of the four usage reports. `id` is fresh per row and only tells rows apart in a table's
// selection.

struct AppDisplayItem {
    QUuid id;
    std::int64_t duration = 0;
    QString appName;
    QString appBundleId;
    QUuid filterId;
};

struct WebDisplayItem {
    QUuid id;
    QString domainName;
    std::int64_t duration = 0;
};

struct TagDisplayItem {
    QUuid id;
    std::int64_t duration = 0;
    QString projectName;
    QString tagName;
    QUuid filterId;
};

struct ProjectDisplayItem {
    QUuid id;
    std::int64_t duration = 0;
    QString projectName;
    QUuid projectId;
};

}  // namespace kivo
