#include "gui/menu_items.h"

namespace kivo {

const std::vector<MenuItem>& menuItems() {
    static const std::vector<MenuItem> items{
        {QUuid::createUuid(), MenuType::projects, QStringLiteral("Projects"),
         QStringLiteral("ProjectsMenu"), QStringLiteral("folder")},
        {QUuid::createUuid(), MenuType::tags, QStringLiteral("Tags"), QStringLiteral("TagsMenu"),
         QStringLiteral("tag")},
        {QUuid::createUuid(), MenuType::applications, QStringLiteral("Applications"),
         QStringLiteral("ApplicationsMenu"), QStringLiteral("app.dashed")},
        {QUuid::createUuid(), MenuType::websites, QStringLiteral("Websites"),
         QStringLiteral("WebsitesMenu"), QStringLiteral("globe")},
        {QUuid::createUuid(), MenuType::stats, QStringLiteral("Stats"), QStringLiteral("StatsMenu"),
         QStringLiteral("chart.bar")},
    };
    return items;
}

}  // namespace kivo
