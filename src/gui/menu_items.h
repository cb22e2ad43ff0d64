#pragma once

#include <QString>
#include <QUuid>
#include <vector>

namespace kivo {

// The sidebar's sections, in the order they are listed.
enum class MenuType { projects = 0, tags = 1, applications = 2, websites = 3, stats = 4 };

// One sidebar entry: the text shown, a stable key (also its accessible name) and the icon name.
struct MenuItem {
    QUuid id;
    MenuType type = MenuType::projects;
    QString name;
    QString identifier;
    QString systemName;
};

// The five entries, built once.
const std::vector<MenuItem>& menuItems();

}  // namespace kivo
